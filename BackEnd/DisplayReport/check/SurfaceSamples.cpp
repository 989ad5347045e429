#include "DisplayReport/check/SurfaceSamples.h"

#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/TriangleMesh.h"

#include <cmath>

namespace Veltrani::DisplayReport {

namespace {

double areaOf(const TriangleMesh& mesh, const TriangleMesh::Triangle& triangle) {
    const auto& [a, b, c] = triangle;
    const double area = 0.5 * norm(cross(mesh.vertices[b] - mesh.vertices[a], mesh.vertices[c] - mesh.vertices[a]));
    return std::isfinite(area) ? area : 0.0;
}

/// The point of triangle i at the weights of its corners.
SurfacePoint pointIn(const TriangleMesh& mesh, std::size_t i, const Point<double, 3>& weights) {
    const auto sum = [&weights](const auto& corners, const TriangleMesh::Triangle& triangle) {
        return corners[triangle[0]] * weights[0] + corners[triangle[1]] * weights[1] +
               corners[triangle[2]] * weights[2];
    };
    SurfacePoint point{sum(mesh.vertices, mesh.triangles[i]), {}, false};
    if (!mesh.textureTriangles.empty()) {
        point.parameters = sum(mesh.textureCoordinates, mesh.textureTriangles[i]);
        point.hasParameters = true;
    }
    return point;
}

/// Walks along the sum of all areas in equal steps. Inside of a triangle the points follow a sequence that fills the
/// plane evenly, so that a large triangle is covered as well as many small ones.
std::vector<SurfacePoint> samplesOfMesh(const TriangleMesh& mesh, std::size_t count) {
    // The powers of the inverse of the number whose cube is itself plus 1.
    constexpr double ALONG = 0.7548776662466927;
    constexpr double ACROSS = 0.5698402909980532;
    double all = 0;
    for (const TriangleMesh::Triangle& triangle : mesh.triangles) {
        all += areaOf(mesh, triangle);
    }
    std::vector<SurfacePoint> samples;
    samples.reserve(count + 1);
    const double step = all / static_cast<double>(count);
    double passed = 0;
    for (std::size_t i = 0; i < mesh.triangles.size() && all > 0; ++i) {
        passed += areaOf(mesh, mesh.triangles[i]);
        while (samples.size() < count && (static_cast<double>(samples.size()) + 0.5) * step < passed) {
            const auto number = static_cast<double>(samples.size());
            double u = std::fmod(number * ALONG, 1.0);
            double v = std::fmod(number * ACROSS, 1.0);
            if (u + v > 1.0) {
                u = 1.0 - u;
                v = 1.0 - v;
            }
            samples.push_back(pointIn(mesh, i, {1.0 - u - v, u, v}));
        }
    }
    return samples;
}

std::vector<SurfacePoint> samplesOfParameters(const ScreenGeometry& surface, std::size_t count) {
    const auto steps = static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(count))));
    const double step = 1.0 / static_cast<double>(steps);
    std::vector<SurfacePoint> samples;
    for (std::size_t row = 0; row < steps && surface.isParameterised(); ++row) {
        for (std::size_t column = 0; column < steps; ++column) {
            const Point<double, 2> st{(static_cast<double>(column) + 0.5) * step,
                                      (static_cast<double>(row) + 0.5) * step};
            SurfacePoint point{{}, st, true};
            if (surface.mapInto3D(st, point.place, false)) {
                samples.push_back(point);
            }
        }
    }
    return samples;
}

}  // namespace

std::vector<SurfacePoint> samplesOf(const ScreenGeometry& surface, std::size_t count) {
    const TriangleMesh* const mesh = surface.triangleMesh();
    return mesh != nullptr ? samplesOfMesh(*mesh, count) : samplesOfParameters(surface, count);
}

}  // namespace Veltrani::DisplayReport
