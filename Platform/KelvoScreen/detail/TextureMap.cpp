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

/// The same in twice the precision of a double.
std::array<double, 3> accurateWeights(const Corners& corners, const Point<double, 3>& point) {
    const auto flat = [](const Point<double, 3>& place) { return Point<double, 2>{place[0], place[1]}; };
    const Point<double, 2> a = flat(corners[0]);
    const Point<double, 2> b = flat(corners[1]);
    const Point<double, 2> c = flat(corners[2]);
    const Point<double, 2> p = flat(point);
    const double whole = accurateArea(a, b, c);
    return {accurateArea(p, b, c) / whole, accurateArea(p, c, a) / whole, accurateArea(p, a, b) / whole};
}

/// Height over longest edge of texture triangles below which rounding the differences from the point, and their
/// products, could move the weights by more than 2e-13.
constexpr double THIN = 1.0 / 256;

/// The weights of a point inside a thin triangle to their last digits: none is below zero. The point was found inside
/// by rounded differences and may be outside by their rounding, which is no small part of a height as small as that.
std::array<double, 3> weightsWithinThin(const Corners& corners, const Point<double, 3>& point) {
    std::array<double, 3> weights = accurateWeights(corners, point);
    double sum = 0;
    for (double& weight : weights) {
        weight = std::max(0.0, weight);
        sum += weight;
    }
    return {weights[0] / sum, weights[1] / sum, weights[2] / sum};
}

/// The weights of the place on the edges of a triangle that is nearest to a point.
std::array<double, 3> weightsOnEdge(const Corners& corners, const Point<double, 3>& point) {
    std::array<double, 3> weights{};
    double smallest = Box::INFINITE;
    for (std::size_t i = 0; i < 3; ++i) {
        const Point<double, 3> along = corners[(i + 1) % 3] - corners[i];
        const double position = std::clamp(dot(point - corners[i], along) / dot(along, along), 0.0, 1.0);
        const double distance = norm(corners[i] + position * along - point);
        if (distance < smallest) {
            smallest = distance;
            weights[i] = 1 - position;
            weights[(i + 1) % 3] = position;
            weights[(i + 2) % 3] = 0;
        }
    }
    return weights;
}

/// @param distance of the point from the triangle
/// @param tolerance a point that is nearer belongs to the edge
std::array<double, 3> weightsOf(const Corners& corners, const Point<double, 3>& point, double distance,
                                double tolerance) {
    const bool isOnEdge = distance > 0 && distance <= tolerance;
    if (!TriangleShape(corners).isThinner(THIN)) {
        return weightsAt(corners, isOnEdge ? closestPoint(corners, point) : point);
    }
    if (isOnEdge) {
        return weightsOnEdge(corners, point);
    }
    return distance > 0 ? accurateWeights(corners, point) : weightsWithinThin(corners, point);
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
    return TexturePlace{*nearest.found(), weightsOf(corners, point, nearest.distance(), tolerance)};
}

}  // namespace KelvoScreenDetail
