#include "DisplayReport/basics/GeometryText.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "DisplayReport/basics/NumberText.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/TriangleMesh.h"

namespace Veltrani::DisplayReport {

namespace {

/// Samples per side: fine enough that the box around a dome is right to a thousandth of its size.
constexpr int SAMPLES = 65;

Extent sampledExtent(const ScreenGeometry& geometry) {
    Extent extent;
    try {
        for (int row = 0; row < SAMPLES; ++row) {
            for (int column = 0; column < SAMPLES; ++column) {
                Point<double, 3> point;
                const Point<double, 2> st{static_cast<double>(column) / (SAMPLES - 1),
                                          static_cast<double>(row) / (SAMPLES - 1)};
                if (geometry.mapInto3D(st, point, false)) {
                    extent.add(point);
                }
            }
        }
    } catch (const VeltraniException&) {
        return {};  // no 2D parameters: nothing to sample
    }
    return extent;
}

}  // namespace

std::string geometryText(const ScreenGeometry& geometry) {
    const TriangleMesh* const mesh = geometry.triangleMesh();
    if (mesh == nullptr) {
        return "given by its numbers";
    }
    const std::size_t count = mesh->triangles.size();
    return std::to_string(count) + (count == 1 ? " triangle" : " triangles") +
           (geometry.isParameterised() ? " with texture coordinates" : " without texture coordinates");
}

std::string missingParameters(const ScreenGeometry& geometry) {
    try {
        Point<double, 3> ignored;
        static_cast<void>(geometry.mapInto3D({0.5, 0.5}, ignored, false));
        return {};
    } catch (const VeltraniException& refusal) {
        return toUtf8(refusal.message);
    }
}

Extent extentOf(const ScreenGeometry& geometry) {
    const TriangleMesh* const mesh = geometry.triangleMesh();
    if (mesh == nullptr) {
        return sampledExtent(geometry);
    }
    Extent extent;
    for (const TriangleMesh::Triangle& triangle : mesh->triangles) {
        for (const auto corner : triangle) {
            extent.add(mesh->vertices[corner]);
        }
    }
    return extent;
}

std::string sizeText(const Extent& extent, const std::string& unit) {
    if (extent.empty()) {
        return "empty";
    }
    const Point<double, 3> size = extent.size();
    return roundedText(size[0]) + " x " + roundedText(size[1]) + " x " + roundedText(size[2]) +
           (unit.empty() ? "" : " " + unit) + " (right x forward x up)";
}

}  // namespace Veltrani::DisplayReport
