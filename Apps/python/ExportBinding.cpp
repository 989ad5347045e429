#include "Arrays.h"
#include "Bindings.h"
#include "Common/Matrix.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/IUnitsConfig.h"
#include "DisplayExport/ChannelSight.h"
#include "DisplayExport/ChannelWarp.h"
#include "DisplayExport/ContentInput.h"
#include "DisplayReport/basics/ReportHead.h"
#include "DisplayReport/channels/ChannelChoice.h"
#include "ExportFiles/ExportFolder.h"
#include "ExportFiles/ExportManifest.h"
#include "ExportFiles/ExportViews.h"
#include "Refusals.h"

#include <pybind11/stl.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace py = pybind11;

namespace {

using namespace Veltrani::DisplayExport;
using namespace Veltrani::ExportFiles;
using Veltrani::DisplayReport::ReportHead;
using P3 = Point<double, 3>;
using Names = std::vector<std::string>;

/// Of the numbers of a direction that is used as it is, as a power of two.
constexpr int LARGEST_EXPONENT = 64;

void progressed(std::size_t /*done*/, std::size_t /*total*/) {
    Entry::pulse();
}

/// The value of a name; throws `ArgumentFault`, with all names, for one that is none.
template <class Value>
Value valueNamed(const char* argument, const std::string& name, const std::optional<Value>& value, const Names& names) {
    if (!value) {
        std::string expected;
        for (const std::string& known : names) {
            expected += (expected.empty() ? "" : ", ") + known;
        }
        throw ArgumentFault{std::string(argument) + ": expected one of " + expected + ", found " + name};
    }
    return *value;
}

std::optional<P3> eyeOf(py::handle value) {
    if (value.is_none()) {
        return std::nullopt;
    }
    const std::vector<double> numbers = numbersOf(value, "eye", 3, Rows::FARTHEST);
    return P3{numbers[0], numbers[1], numbers[2]};
}

/// Of a size that can be squared, whatever it was.
std::optional<P3> directionOf(py::handle value) {
    if (value.is_none()) {
        return std::nullopt;
    }
    const std::vector<double> numbers = numbersOf(value, "direction", 3);
    const double size = std::max({std::abs(numbers[0]), std::abs(numbers[1]), std::abs(numbers[2])});
    if (size == 0) {
        throw ArgumentFault{"direction: expected a length above 0, found (0, 0, 0)"};
    }
    const int exponent = std::abs(std::ilogb(size)) > LARGEST_EXPONENT ? -std::ilogb(size) : 0;
    return P3{std::ldexp(numbers[0], exponent), std::ldexp(numbers[1], exponent), std::ldexp(numbers[2], exponent)};
}

/// kind, direction, roll, aperture, margin, (width, height); None for what is usual.
InputChoice inputOf(const py::tuple& parts) {
    InputChoice input;
    const auto kind = parts[0].cast<std::string>();
    input.kind = valueNamed("kind", kind, inputKindOf(kind), inputKindNames());
    input.direction = directionOf(parts[1]);
    input.roll = parts[2].cast<std::optional<double>>().value_or(input.roll);
    input.aperture = parts[3].cast<std::optional<double>>().value_or(input.aperture);
    input.margin = parts[4].cast<std::optional<double>>().value_or(input.margin);
    if (!parts[5].is_none()) {
        const auto [width, height] = parts[5].cast<std::pair<int, int>>();
        input.pixels = {width, height};
    }
    return input;
}

/// depth, world, handed, near, far.
RenderConvention conventionOf(const py::tuple& parts) {
    using C = RenderConvention;
    C convention;
    const auto depth = parts[0].cast<std::string>();
    const auto world = parts[1].cast<std::string>();
    const auto handed = parts[2].cast<std::string>();
    convention.depth = valueNamed("depth", depth, C::depthOf(depth), C::depthNames());
    convention.world = valueNamed("world", world, C::worldOf(world), C::worldNames());
    convention.handed = valueNamed("handed", handed, C::handedOf(handed), C::handedNames());
    convention.nearPlane = parts[3].cast<double>();
    convention.farPlane = parts[4].cast<double>();
    return convention;
}

template <std::size_t N>
py::array vectorOf(const Point<double, N>& point) {
    ResultRows<double> row({static_cast<py::ssize_t>(N)});
    row.set(0, point);
    return row.array();
}

py::array arrayOf(const Matrix<double, 4>& matrix) {
    ResultRows<double> rows({4, 4});
    std::copy(matrix.data(), matrix.data() + 16, rows.at(0));
    return rows.array();
}

/// position, orientation, right, forward, up.
py::tuple standOf(const ViewFrame& view) {
    const P3 angles = view.angles();
    return py::make_tuple(vectorOf(view.eye), py::make_tuple(angles[0], angles[1], angles[2]), vectorOf(view.right),
                          vectorOf(view.forward), vectorOf(view.up));
}

py::tuple frustumOf(const RenderFrustum& frustum, const RenderConvention& convention) {
    return py::make_tuple(standOf(frustum.view),
                          py::make_tuple(std::atan(frustum.left), std::atan(frustum.right), std::atan(frustum.bottom),
                                         std::atan(frustum.top)),
                          py::make_tuple(frustum.left, frustum.right, frustum.bottom, frustum.top),
                          arrayOf(frustum.viewMatrix(convention)), arrayOf(frustum.projectionMatrix(convention)));
}

py::tuple tupleOf(const ContentInput& input, bool isInMirror, const RenderConvention& convention) {
    constexpr std::array FACES{CubeFace::RIGHT, CubeFace::LEFT, CubeFace::FRONT,
                               CubeFace::BACK,  CubeFace::TOP,  CubeFace::BOTTOM};
    py::dict faces;
    for (const CubeFace face : FACES) {
        if (const auto frustum = input.frustumOf(face)) {
            faces[py::cast(nameOf(face))] = frustumOf(*frustum, convention);
        }
    }
    const bool hasView = input.kind() != InputKind::LAYOUT && input.kind() != InputKind::SCREEN;
    const auto frustum = input.frustum();
    return py::make_tuple(
        nameOf(input.kind()), py::make_tuple(input.pixels()[0], input.pixels()[1]), input.wrapsAround(), isInMirror,
        hasView ? py::object(standOf(input.view())) : py::object(py::none()),
        input.kind() == InputKind::FISHEYE ? py::object(py::float_(input.choice().aperture)) : py::object(py::none()),
        frustum ? py::object(frustumOf(*frustum, convention)) : py::object(py::none()), faces);
}

py::tuple playerInput(DisplayState& display, const std::wstring& id, py::handle eye, const py::tuple& input,
                      const py::tuple& convention) {
    const std::optional<P3> from = eyeOf(eye);
    const InputChoice choice = inputOf(input);
    const RenderConvention as = conventionOf(convention);
    bool isInMirror = false;
    const ContentInput made = inEntry(&display, [&] {
        display.requireScreen();
        const ChannelSight sight(display.config(), display.choice(id), from, Entry::pulse);
        isInMirror = sight.isInMirror();
        return ContentInput(display.config(), sight, choice);
    });
    return tupleOf(made, isInMirror, as);
}

/// What a script states of a warp: ((columns, rows), error, cut, points, triangles); (0, 0) for the fewest nodes,
/// (-1, -1) for pixels.
WarpRequest requestOf(const py::tuple& parts) {
    WarpRequest request;
    const auto [columns, rows] = parts[0].cast<std::pair<int, int>>();
    if (columns < 0) {
        request.places = WarpRequest::Places::PIXELS;
    } else if (columns > 0) {
        request.places = WarpRequest::Places::NODES;
        request.nodes = {columns, rows};
    }
    request.error = parts[1].cast<double>();
    request.seam = parts[2].cast<bool>() ? Seam::CUT : Seam::CONTINUE;
    request.withPoints = parts[3].cast<bool>();
    request.progress = progressed;
    return request;
}

/// The nodes of a warp as arrays: places in the picture and in the input, usable, lit, faces, points.
py::tuple nodesOf(const ChannelWarp& warp) {
    const Shape shape{static_cast<py::ssize_t>(warp.rows()), static_cast<py::ssize_t>(warp.columns())};
    ResultRows<double> picture(extended(shape, 2));
    ResultRows<double> places(extended(shape, 2));
    ResultRows<bool> usable(shape);
    ResultRows<bool> lit(shape);
    ResultRows<std::uint8_t> faces(shape);
    std::optional<ResultRows<double>> points;
    if (!warp.points().empty()) {
        points.emplace(extended(shape, 3));
    }
    for (std::size_t i = 0; i < warp.nodes().size(); ++i) {
        const WarpNode& node = warp.nodes()[i];
        const bool isLit = node.state == WarpNode::State::MAPPED;
        picture.set(i, warp.pictureOf(i % warp.columns(), i / warp.columns()));
        places.set(i, node.isUsable() ? node.content : missing<2>());
        *usable.at(i) = node.isUsable();
        *lit.at(i) = isLit;
        *faces.at(i) = node.face;
        if (points) {
            points->set(i, isLit ? warp.points()[i] : missing<3>());
        }
    }
    return py::make_tuple(picture.array(), places.array(), usable.array(), lit.array(), faces.array(),
                          points ? py::object(points->array()) : py::object(py::none()));
}

/// Corners in the picture, corners in the input, faces.
py::tuple trianglesOf(const ChannelWarp& warp) {
    std::vector<WarpPiece> pieces;
    warp.forEachPiece([&pieces](const WarpPiece& piece) { pieces.push_back(piece); });
    const Shape shape{static_cast<py::ssize_t>(pieces.size())};
    ResultRows<double> picture(extended(extended(shape, 3), 2));
    ResultRows<double> places(extended(extended(shape, 3), 2));
    ResultRows<std::uint8_t> faces(shape);
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            picture.set(3 * i + k, pieces[i].corners[k].picture);
            places.set(3 * i + k, pieces[i].corners[k].content);
        }
        *faces.at(i) = pieces[i].face;
    }
    return py::make_tuple(picture.array(), places.array(), faces.array());
}

py::object errorOf(const WarpError& error) {
    if (error.places == 0) {
        return py::none();
    }
    return py::make_tuple(error.largest, error.largestOfGrid, error.places, error.beyond, error.leftOut);
}

py::tuple playerWarp(DisplayState& display, const std::wstring& id, py::handle eye, const py::tuple& input,
                     const py::tuple& convention, const py::tuple& request) {
    const std::optional<P3> from = eyeOf(eye);
    const InputChoice choice = inputOf(input);
    const RenderConvention as = conventionOf(convention);
    const WarpRequest places = requestOf(request);
    bool isInMirror = false;
    std::optional<ContentInput> made;
    const ChannelWarp warp = inEntry(&display, [&] {
        display.requireScreen();
        const ChannelSight sight(display.config(), display.choice(id), from, Entry::pulse);
        isInMirror = sight.isInMirror();
        made.emplace(display.config(), sight, choice);
        return ChannelWarp::of(sight, *made, places);
    });
    const bool hasTriangles = request[4].cast<bool>();
    return py::make_tuple(tupleOf(*made, isInMirror, as), nodesOf(warp),
                          hasTriangles ? py::object(trianglesOf(warp)) : py::object(py::none()), warp.brokenAtSeams(),
                          warp.leftOutAtPoles(), errorOf(warp.error()));
}

/// What a script states of a whole export.
struct ExportPlan {
    std::string folder;
    bool isForced = false;
    Names channels;
    std::vector<P3> eyes;
    ExportRequest request;
    std::vector<BlackLevel> blackLevels;
    std::string content;  ///< a file; empty for none
    std::string path;     ///< of the configuration
    std::string digest;   ///< of its text
};

std::vector<WarpFormat> formatsOf(const Names& names) {
    std::vector<WarpFormat> formats;
    for (const std::string& name : names) {
        const WarpFormat format = valueNamed("formats", name, warpFormatOf(name), warpFormatNames());
        if (std::find(formats.begin(), formats.end(), format) == formats.end()) {
            formats.push_back(format);
        }
    }
    return formats;
}

std::vector<P3> eyesOf(py::handle value) {
    std::vector<P3> eyes;
    if (!value.is_none()) {
        const Rows rows(value, "eyes", 3);
        if (rows.shape().size() != 1) {
            throw ArgumentFault{"eyes: expected an array of the shape (n, 3), found " +
                                textOf(extended(rows.shape(), 3))};
        }
        if (rows.count() == 0) {
            throw ArgumentFault{"eyes: expected one at least, found none; None stands for the eye of each channel"};
        }
        for (std::size_t i = 0; i < rows.count(); ++i) {
            eyes.push_back(rows.at<3>(i, Rows::FARTHEST));
        }
    }
    return eyes;
}

/// The name of a curve, the bits, whether it is the opacity of black, and (name, part of white) of black levels, "" for
/// the rest; None without blends. Black levels are looked up later.
std::optional<BlendRequest> blendOf(py::handle value, std::vector<BlackLevel>& levels) {
    if (value.is_none()) {
        return std::nullopt;
    }
    const auto parts = value.cast<py::tuple>();
    BlendRequest blend;
    blend.curve = Veltrani::DisplayBlend::BlendCurve::named(parts[0].cast<std::string>());
    blend.bits = parts[1].cast<std::vector<int>>();
    blend.use =
        parts[2].cast<bool>() ? Veltrani::DisplayBlend::BlendUse::ALPHA : Veltrani::DisplayBlend::BlendUse::MULTIPLY;
    for (const auto& [channel, light] : parts[3].cast<std::vector<std::pair<std::string, double>>>()) {
        levels.push_back({channel, light});
    }
    return blend;
}

ExportPlan planOf(const py::dict& said) {
    ExportPlan plan;
    plan.folder = said["folder"].cast<std::string>();
    plan.isForced = said["force"].cast<bool>();
    plan.channels = said["channels"].cast<Names>();
    plan.eyes = eyesOf(said["eyes"]);
    plan.content = said["content"].cast<std::string>();
    plan.path = said["path"].cast<std::string>();
    plan.digest = said["digest"].cast<std::string>();
    ExportRequest& request = plan.request;
    request.input = inputOf(said["input"].cast<py::tuple>());
    request.convention = conventionOf(said["convention"].cast<py::tuple>());
    request.formats = formatsOf(said["formats"].cast<Names>());
    const auto [columns, rows] = said["nodes"].cast<std::pair<int, int>>();
    if (columns > 0) {
        request.nodes = Point<int, 2>{columns, rows};
    }
    request.error = said["error"].cast<double>();
    request.seam = said["cut"].cast<bool>() ? Seam::CUT : Seam::CONTINUE;
    request.pulse = Entry::pulse;
    request.hasTestPictures = said["test_pictures"].cast<bool>();
    request.blend = blendOf(said["blend"], plan.blackLevels);
    return plan;
}

/// Needs no Python. One view after the other: a process of several threads cannot be split.
std::string exportAll(DisplayState& display, ExportPlan& plan) {
    XMLConfigFile& config = display.config();
    std::vector<ExportView> views = ExportViews::of(config, plan.channels, plan.eyes);
    if (views.empty()) {
        throw VeltraniException(L"the display has no channels, and nothing was written: add some");
    }
    if (plan.request.blend && !plan.blackLevels.empty()) {
        plan.request.blend->residual = residualOf(config, plan.blackLevels);
    }
    auto sources = display.sources(plan.path, plan.digest);
    if (!plan.content.empty()) {
        plan.request.content = std::make_shared<const ContentPicture>(ContentPicture::read(plan.content));
        sources.push_back(ReportHead::source(plan.content));
    }
    ExportFolder folder(plan.folder, plan.isForced);
    display.requireScreen();
    if (plan.request.hasTestPictures) {
        ExportViews::placeTargets(config, views, progressed);
    }
    const ViewExport exporter(config, plan.request);
    std::vector<std::string> records;
    for (const ExportView& view : views) {
        records.push_back(exporter.write(view, folder.file("."), progressed).json);
    }
    const std::string unit = Veltrani::toUtf8(config.getNativeUnitsConfig()->getUnitName());
    std::string manifest = manifestOf(plan.request, unit, sources, records);
    folder.writeManifest(manifest);
    Entry::pulse();
    folder.commit();
    return manifest;
}

py::bytes exportFolder(DisplayState& display, const py::dict& said) {
    ExportPlan plan = planOf(said);
    return py::bytes(inEntry(&display, [&] { return exportAll(display, plan); }));
}

}  // namespace

void bindExports(DisplayClass& display) {
    display.def_static("input_kinds", &inputKindNames)
        .def_static("check_direction", [](py::handle value) { static_cast<void>(directionOf(value)); })
        .def("player_input", &playerInput)
        .def("player_warp", &playerWarp)
        .def("export", &exportFolder);
}
