#include "DisplayReport/coverage/ScreenSampling.h"

#include "Common/VeltraniException.h"
#include "DisplayReport/basics/GeometryText.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/TriangleMesh.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

/// Cells of the net per side: it is halved where more is wanted.
constexpr std::size_t NET_CELLS = 32;
constexpr std::size_t NET_NODES = NET_CELLS + 1;

/// Two steps of halving that agree to this part are extrapolated; what is left is some hundred times smaller.
constexpr double AGREEMENT = 1e-4;
/// A part of the area of the screen that is small enough for its error not to matter. At a pole, where triangles shrink
/// to lines, no two steps ever agree to a part.
constexpr double NEGLIGIBLE_PART = 1e-9;
/// Kinks are followed into 1/256 of a triangle.
constexpr int MOST_HALVINGS = 8;

double chordArea(const ScreenSampling::Triangle& triangle) {
    const auto& [a, b, c] = triangle;
    return norm(cross(b.place - a.place, c.place - a.place)) / 2;
}

template <class Tuple>
Tuple blend(const Tuple& from, const Tuple& to, double part) {
    return from + (to - from) * part;
}

using Corners = std::array<Point<double, 3>, 3>;

/// False for corners on a line, up to the rounding of their coordinates: what lies between them is noise.
bool hasArea(const Corners& corners) {
    constexpr double LEAST_HEIGHT = 4 * std::numeric_limits<double>::epsilon();
    const auto& [a, b, c] = corners;
    const double longest = std::max({norm(b - a), norm(c - b), norm(a - c)});
    double largest = 0;
    for (const Point<double, 3>& corner : corners) {
        largest = std::max({largest, std::abs(corner[0]), std::abs(corner[1]), std::abs(corner[2])});
    }
    return norm(cross(b - a, c - a)) > LEAST_HEIGHT * largest * longest;
}

/// The same whichever corner comes first, and whichever way round.
Corners cornersOf(const TriangleMesh& mesh, std::size_t i) {
    Corners corners;
    for (std::size_t corner = 0; corner < corners.size(); ++corner) {
        // Zero has two signs, and one place.
        corners[corner] = mesh.vertices[mesh.triangles[i][corner]] + Point<double, 3>();
    }
    std::sort(corners.begin(), corners.end());
    return corners;
}

std::size_t hashOf(const Corners& corners) {
    constexpr std::size_t SPREAD = 0x9E3779B97F4A7C15U;
    std::size_t hash = 0;
    for (const Point<double, 3>& corner : corners) {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            hash = (hash ^ std::hash<double>()(corner[axis])) * SPREAD;
            hash ^= hash >> 32U;
        }
    }
    return hash;
}

}  // namespace

ScreenSampling::ScreenSampling(std::shared_ptr<const ScreenGeometry> surface)
    : m_surface(std::move(surface)), m_mesh(m_surface->triangleMesh()) {
    if (!m_surface->isValid()) {
        throw VeltraniException(__FILE__, __LINE__,
                                L"The screen has no surface: check its size, its limits or its mesh");
    }
    if (m_mesh == nullptr) {
        addNet();
        for (std::size_t i = 0; i < size(); ++i) {
            m_negligibleArea += NEGLIGIBLE_PART * chordArea(triangle(i));
        }
    } else {
        chooseTriangles();
    }
    m_extent = extentOf(*m_surface);
}

void ScreenSampling::addNet() {
    m_net.reserve(NET_NODES * NET_NODES);
    for (std::size_t row = 0; row < NET_NODES; ++row) {
        for (std::size_t column = 0; column < NET_NODES; ++column) {
            SurfacePoint node;
            node.parameters = {static_cast<double>(column) / NET_CELLS, static_cast<double>(row) / NET_CELLS};
            node.hasParameters = m_surface->mapInto3D(node.parameters, node.place, false);
            m_net.push_back(node);
        }
    }
}

void ScreenSampling::chooseTriangles() {
    const TriangleMesh& mesh = *m_mesh;
    std::vector<std::pair<std::size_t, std::size_t>> byHash;
    byHash.reserve(mesh.triangles.size());
    std::vector<bool> isLeftOut(mesh.triangles.size());
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        const Corners corners = cornersOf(mesh, i);
        isLeftOut[i] = !hasArea(corners);
        byHash.emplace_back(hashOf(corners), i);
    }
    std::sort(byHash.begin(), byHash.end());
    for (std::size_t i = 1; i < byHash.size(); ++i) {
        for (std::size_t j = i; j-- > 0 && byHash[j].first == byHash[i].first;) {
            if (cornersOf(mesh, byHash[i].second) == cornersOf(mesh, byHash[j].second)) {
                isLeftOut[byHash[i].second] = true;
                break;
            }
        }
    }
    if (std::find(isLeftOut.begin(), isLeftOut.end(), true) == isLeftOut.end()) {
        return;
    }
    for (std::size_t i = 0; i < isLeftOut.size(); ++i) {
        if (!isLeftOut[i]) {
            m_chosen.push_back(i);
        }
    }
}

std::size_t ScreenSampling::size() const {
    if (m_mesh == nullptr) {
        return 2 * NET_CELLS * NET_CELLS;
    }
    return m_chosen.empty() ? m_mesh->triangles.size() : m_chosen.size();
}

ScreenSampling::Triangle ScreenSampling::triangle(std::size_t i) const {
    Triangle triangle;
    if (m_mesh != nullptr) {
        const TriangleMesh& mesh = *m_mesh;
        i = numberInMesh(i);
        const bool hasParameters = m_surface->isParameterised();
        for (std::size_t corner = 0; corner < 3; ++corner) {
            triangle[corner].place = mesh.vertices[mesh.triangles[i][corner]];
            triangle[corner].hasParameters = hasParameters;
            if (hasParameters) {
                triangle[corner].parameters = mesh.textureCoordinates[mesh.textureTriangles[i][corner]];
            }
        }
        return triangle;
    }
    const auto [a, b, c] = nodesOf(i);
    triangle = {m_net[a], m_net[b], m_net[c]};
    const bool isWhole = triangle[0].hasParameters && triangle[1].hasParameters && triangle[2].hasParameters;
    return isWhole ? triangle : Triangle{};
}

std::array<std::size_t, 3> ScreenSampling::nodesOf(std::size_t i) {
    const std::size_t cell = i / 2;
    const std::size_t first = cell / NET_CELLS * NET_NODES + cell % NET_CELLS;
    if (i % 2 == 1) {
        return {first + NET_NODES + 1, first + NET_NODES, first + 1};
    }
    return {first, first + 1, first + NET_NODES};
}

std::array<std::uint64_t, 3> ScreenSampling::cornerNumbers(std::size_t i) const {
    std::array<std::uint64_t, 3> numbers{};
    if (m_mesh == nullptr) {
        const auto nodes = nodesOf(i);
        std::copy(nodes.begin(), nodes.end(), numbers.begin());
        return numbers;
    }
    // One vertex may stand in several places of the texture.
    constexpr int HALF = 32;
    const TriangleMesh& mesh = *m_mesh;
    i = numberInMesh(i);
    for (std::size_t corner = 0; corner < 3; ++corner) {
        numbers[corner] = static_cast<std::uint64_t>(mesh.triangles[i][corner]) << HALF;
        if (m_surface->isParameterised()) {
            numbers[corner] += static_cast<std::uint64_t>(mesh.textureTriangles[i][corner]);
        }
    }
    return numbers;
}

SurfacePoint ScreenSampling::between(const SurfacePoint& from, const SurfacePoint& to, double part) const {
    SurfacePoint point;
    point.parameters = blend(from.parameters, to.parameters, part);
    point.hasParameters = from.hasParameters && to.hasParameters;
    if (m_mesh != nullptr || !point.hasParameters || !m_surface->mapInto3D(point.parameters, point.place, false)) {
        point.place = blend(from.place, to.place, part);
    }
    return point;
}

double ScreenSampling::area(const Triangle& triangle) const {
    const double flat = chordArea(triangle);
    return m_mesh != nullptr ? flat : curvedArea(triangle, flat, 0);
}

double ScreenSampling::curvedArea(const Triangle& triangle, double chordAreaOfAll, int depth) const {
    const auto& [a, b, c] = triangle;
    const SurfacePoint ab = between(a, b, 0.5);
    const SurfacePoint bc = between(b, c, 0.5);
    const SurfacePoint ca = between(c, a, 0.5);
    const std::array<Triangle, 4> quarters{Triangle{a, ab, ca}, {ab, b, bc}, {ca, bc, c}, {ab, bc, ca}};
    std::array<double, 4> areas{};
    double sum = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        areas[i] = chordArea(quarters[i]);
        sum += areas[i];
    }
    if (!(std::abs(sum - chordAreaOfAll) > AGREEMENT * sum + m_negligibleArea) || depth >= MOST_HALVINGS) {
        // The error of chords falls with the square of their length: a third of the last change is left.
        return sum + (sum - chordAreaOfAll) / 3;
    }
    sum = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        sum += curvedArea(quarters[i], areas[i], depth + 1);
    }
    return sum;
}

}  // namespace Veltrani::DisplayReport
