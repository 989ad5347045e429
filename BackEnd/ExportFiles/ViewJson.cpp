#include "ExportFiles/ViewJson.h"

#include "Common/Matrix.h"
#include "DisplayReport/basics/JsonText.h"

#include <array>
#include <cmath>

namespace Veltrani::ExportFiles {

namespace {

using DisplayExport::ChannelWarp;
using DisplayExport::ContentInput;
using DisplayExport::CubeFace;
using DisplayExport::InputKind;
using DisplayExport::RenderConvention;
using DisplayExport::RenderFrustum;
using DisplayExport::ViewFrame;
using DisplayExport::WarpNode;
using DisplayReport::jsonList;
using DisplayReport::JsonObject;
using DisplayReport::jsonOf;

std::string jsonOfMatrix(const Matrix<double, 4>& matrix) {
    std::array<double, 16> numbers{};
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        numbers[i] = matrix(i / 4, i % 4);
    }
    return jsonList(numbers, [](double number) { return jsonOf(number); });
}

/// The members that say how a viewer stands.
JsonObject standOf(const ViewFrame& view) {
    const Point<double, 3> angles = view.angles();
    return JsonObject()
        .addJson("position", jsonOfPoint(view.eye))
        .addJson("orientation", JsonObject().add("z", angles[0]).add("x", angles[1]).add("y", angles[2]).text())
        .addJson("right", jsonOfPoint(view.right))
        .addJson("forward", jsonOfPoint(view.forward))
        .addJson("up", jsonOfPoint(view.up));
}

template <class Number>
std::string jsonOfSides(const RenderFrustum& frustum, Number number) {
    return JsonObject()
        .add("left", number(frustum.left))
        .add("right", number(frustum.right))
        .add("bottom", number(frustum.bottom))
        .add("top", number(frustum.top))
        .text();
}

std::string jsonOfFaces(const ContentInput& input, const RenderConvention& convention) {
    constexpr std::array<CubeFace, 6> FACES{CubeFace::RIGHT, CubeFace::LEFT, CubeFace::FRONT,
                                            CubeFace::BACK,  CubeFace::TOP,  CubeFace::BOTTOM};
    return jsonList(FACES, [&](CubeFace face) {
        return JsonObject()
            .add("name", nameOf(face))
            .addJson("frustum", ExportFiles::jsonOf(*input.frustumOf(face), convention))
            .text();
    });
}

bool isSeenFromAnEye(InputKind kind) {
    return kind != InputKind::LAYOUT && kind != InputKind::SCREEN;
}

}  // namespace

template <class T, std::size_t N>
std::string jsonOfPoint(const Point<T, N>& point) {
    std::array<T, N> parts{};
    for (std::size_t i = 0; i < N; ++i) {
        parts[i] = point[i];
    }
    return jsonList(parts, [](T part) { return jsonOf(part); });
}
template std::string jsonOfPoint(const Point<double, 3>& point);
template std::string jsonOfPoint(const Point<int, 2>& point);

std::string jsonOf(const RenderFrustum& frustum, const RenderConvention& convention) {
    return standOf(frustum.view)
        .addJson("angles", jsonOfSides(frustum, [](double tangent) { return std::atan(tangent); }))
        .addJson("tangents", jsonOfSides(frustum, [](double tangent) { return tangent; }))
        .addJson("viewMatrix", jsonOfMatrix(frustum.viewMatrix(convention)))
        .addJson("projectionMatrix", jsonOfMatrix(frustum.projectionMatrix(convention)))
        .text();
}

std::string jsonOf(const ContentInput& input, const RenderConvention& convention) {
    const auto frustum = input.frustum();
    const bool isFisheye = input.kind() == InputKind::FISHEYE;
    return JsonObject()
        .add("kind", nameOf(input.kind()))
        .addJson("pixels", jsonOfPoint(input.pixels()))
        .add("wrapsAround", input.wrapsAround())
        .addJson("view", isSeenFromAnEye(input.kind()) ? standOf(input.view()).text() : "null")
        .addJson("aperture", isFisheye ? jsonOf(input.choice().aperture) : "null")
        .addJson("frustum", frustum ? jsonOf(*frustum, convention) : "null")
        .addJson("faces", input.kind() == InputKind::CUBE ? jsonOfFaces(input, convention) : "null")
        .text();
}

std::string jsonOf(const ChannelWarp& warp, std::size_t broken) {
    const DisplayExport::WarpError& error = warp.error();
    const std::string json = JsonObject()
                                 .add("largest", error.largest)
                                 .add("largestOfGrid", error.largestOfGrid)
                                 .add("places", error.places)
                                 .add("beyond", error.beyond)
                                 .add("leftOut", error.leftOut)
                                 .text();
    return JsonObject()
        .addJson("size", jsonOfPoint(Point<int, 2>{static_cast<int>(warp.columns()), static_cast<int>(warp.rows())}))
        .add("mapped", warp.count(WarpNode::State::MAPPED))
        .add("continued", warp.count(WarpNode::State::CONTINUED))
        .add("unmapped", warp.count(WarpNode::State::UNMAPPED))
        .add("cellsAtSeams", warp.brokenAtSeams())
        .add("leftOutAtPoles", warp.leftOutAtPoles())
        .add("partLeftOutAtPoles", warp.areaLeftOutAtPoles())
        .add("leftOutOfGrids", broken)
        .addJson("error", error.places > 0 ? json : "null")
        .text();
}

std::string jsonOf(const RenderConvention& convention) {
    return JsonObject()
        .add("depth", RenderConvention::nameOf(convention.depth))
        .add("world", RenderConvention::nameOf(convention.world))
        .add("handed", RenderConvention::nameOf(convention.handed))
        .add("near", convention.nearPlane)
        .add("far", convention.farPlane)
        .add("matrices",
             "row-major, column vectors; view: from the engine's world to its camera; projection: to clip space")
        .text();
}

}  // namespace Veltrani::ExportFiles
