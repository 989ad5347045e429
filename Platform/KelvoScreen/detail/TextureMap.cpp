#include "KelvoScreen/detail/TextureMap.h"

#include "KelvoScreen/detail/Components.h"
#include "KelvoScreen/detail/Rounding.h"

#include <algorithm>
#include <cmath>

namespace KelvoScreenDetail {

namespace {

/// The texture triangle as a triangle in space, at height zero.
Corners textureCorners(const TriangleMesh& mesh, std::uint32_t triangle) {
    Corners corners;
    for (std::size_t i = 0; i < 3; ++i) {
        const Point<double, 2>& st = mesh.textureCoordinates[mesh.textureTriangles[triangle][i]];
        corners[i] = {st[0], st[1], 0.0};
    }
    return corners;
}

class TextureTriangles final : public TriangleIndex::Source {
public:
    explicit TextureTriangles(const TriangleMesh& mesh) : m_mesh(mesh) {}
    bool corners(std::uint32_t triangle, Corners& out) const override {
        out = textureCorners(m_mesh, triangle);
        return hasArea(out);
    }

private:
    const TriangleMesh& m_mesh;
};

/// Twice the areas of the three triangles between the point and the edges; the sum is that of the whole.
std::array<double, 3> partAreas(const Corners& corners, const Point<double, 3>& point) {
    const Point<double, 3> a = corners[0] - point;
    const Point<double, 3> b = corners[1] - point;
    const Point<double, 3> c = corners[2] - point;
    return {edgeFunction(b[0], b[1], c[0], c[1]), edgeFunction(c[0], c[1], a[0], a[1]),
            edgeFunction(a[0], a[1], b[0], b[1])};
}

std::array<double, 3> weightsAt(const Corners& corners, const Point<double, 3>& point) {
    const std::array<double, 3> parts = partAreas(corners, point);
    const double scale = 1 / (parts[0] + parts[1] + parts[2]);
    return {parts[0] * scale, parts[1] * scale, parts[2] * scale};
}

bool contains(const Corners& corners, const Point<double, 3>& point) {
    const std::array<double, 3> parts = partAreas(corners, point);
    const auto [least, greatest] = std::minmax({parts[0], parts[1], parts[2]});
    return least >= 0 || greatest <= 0;
}

class NearestTexture final : public TriangleIndex::PointVisitor {
public:
    NearestTexture(const TriangleMesh& mesh, const Point<double, 3>& point, double reach)
        : m_mesh(mesh), m_point(point), m_distance(reach) {}

    double visit(std::uint32_t triangle) override {
        const double distance = distanceTo(triangle);
        if (distance < m_distance || (distance == m_distance && (!m_found || triangle < *m_found))) {
            m_distance = distance;
            m_found = triangle;
        }
        return m_distance;
    }

    [[nodiscard]] const std::optional<std::uint32_t>& found() const { return m_found; }
    [[nodiscard]] double distance() const { return m_distance; }

private:
    [[nodiscard]] double distanceTo(std::uint32_t triangle) const {
        const Corners corners = textureCorners(m_mesh, triangle);
        if (contains(corners, m_point)) {
            return 0;
        }
        double nearest = Box::INFINITE;
        for (std::size_t i = 0; i < 3; ++i) {
            nearest = std::min(nearest, norm(closestOnSegment(corners[i], corners[(i + 1) % 3], m_point) - m_point));
        }
        return nearest;
    }

    const TriangleMesh& m_mesh;
    Point<double, 3> m_point;
    double m_distance;
    std::optional<std::uint32_t> m_found;
};

}  // namespace

TextureMap::TextureMap(const TriangleMesh& mesh)
    : m_mesh(mesh), m_index(static_cast<std::uint32_t>(mesh.triangles.size()), TextureTriangles(mesh)) {}

std::optional<TexturePlace> TextureMap::find(const Point<double, 2>& st, bool extrapolate) const {
    if (!isFinite(st)) {
        return std::nullopt;
    }
    const Point<double, 3> point{st[0], st[1], 0.0};
    // The coordinates themselves are rounded: 1 + 1e-9 is more than 1e-9 away from 1.
    const double tolerance = PARAMETER_TOLERANCE + ROUNDING * std::max({1.0, std::abs(st[0]), std::abs(st[1])});
    const double reach = extrapolate ? Box::INFINITE : tolerance;
    NearestTexture nearest(m_mesh, point, reach);
    m_index.aroundPoint(point, reach, nearest);
    if (!nearest.found()) {
        return std::nullopt;
    }
    const Corners corners = textureCorners(m_mesh, *nearest.found());
    const bool onEdge = nearest.distance() > 0 && nearest.distance() <= tolerance;
    return TexturePlace{*nearest.found(), weightsAt(corners, onEdge ? closestPoint(corners, point) : point)};
}

}  // namespace KelvoScreenDetail
