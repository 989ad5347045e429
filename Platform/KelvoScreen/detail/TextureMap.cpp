#include "KelvoScreen/detail/TextureMap.h"

#include "KelvoScreen/detail/Rounding.h"

#include <algorithm>
#include <cmath>

namespace Veltrani::KelvoScreenDetail {

namespace {

/// Returns the texture triangle as a triangle in space, at height zero.
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

/// Height over longest edge of texture triangles below which rounding the differences from the point, and their
/// products, could move the weights by more than 2e-13.
constexpr double THIN = 1.0 / 256;

bool isThin(const Corners& corners) {
    return TriangleShape(corners).isThinner(THIN);
}

/// The place of a point relative to a texture triangle, in twice the precision of a double.
///
/// Across a thin triangle the mesh changes within a few last digits of (s, t). There a point that is inside after
/// rounding is not inside, and the nearest of two edges after rounding is the other one.
class AccuratePlace {
public:
    AccuratePlace(const Corners& corners, const Point<double, 3>& point)
        : m_corners{flat(corners[0]), flat(corners[1]), flat(corners[2])}, m_point(flat(point)) {
        const auto& [a, b, c] = m_corners;
        m_area = accurateArea(a, b, c);
        m_weights = {accurateArea(m_point, b, c) / m_area, accurateArea(m_point, c, a) / m_area,
                     accurateArea(m_point, a, b) / m_area};
    }

    /// Returns the weights in the triangle, continued linearly.
    [[nodiscard]] const std::array<double, 3>& weights() const { return m_weights; }
    [[nodiscard]] bool isInside() const { return m_weights[0] >= 0 && m_weights[1] >= 0 && m_weights[2] >= 0; }

    /// Returns the weights of the place of the triangle that is nearest to the point.
    [[nodiscard]] std::array<double, 3> nearestWeights() const {
        if (isInside()) {
            return m_weights;
        }
        const auto [edge, position] = nearestOnEdges();
        std::array<double, 3> weights{};
        weights[edge] = 1 - position;
        weights[next(edge)] = position;
        return weights;
    }

    /// Zero inside only.
    [[nodiscard]] double distance() const {
        if (isInside()) {
            return 0;
        }
        const auto [edge, position] = nearestOnEdges();
        const Point<double, 2>& end = m_corners[position > 0 ? next(edge) : edge];
        const bool isAtEnd = !(position > 0 && position < 1);
        return isAtEnd ? norm(end - m_point)
                       : std::abs(m_weights[opposite(edge)] * m_area) / norm(end - m_corners[edge]);
    }

private:
    /// Edges have the number of the corner at which they begin.
    struct EdgePlace {
        std::size_t edge;
        double position;  ///< from 0 to 1
    };

    static Point<double, 2> flat(const Point<double, 3>& place) { return {place[0], place[1]}; }
    static std::size_t next(std::size_t edge) { return (edge + 1) % 3; }
    static std::size_t opposite(std::size_t edge) { return (edge + 2) % 3; }

    [[nodiscard]] bool isBeyond(std::size_t edge) const { return m_weights[opposite(edge)] < 0; }

    [[nodiscard]] double positionOn(std::size_t edge) const {
        const Point<double, 2>& start = m_corners[edge];
        const Point<double, 2>& end = m_corners[next(edge)];
        return accurateProjection(start, end, m_point) / accurateProjection(start, end, end);
    }

    /// A point outside is beyond one edge or two. The nearest place is on such an edge; of two it is on the second one
    /// if the foot of the point comes after its beginning. Distances are not compared: those from the two long edges
    /// of a needle differ by less than they are rounded.
    [[nodiscard]] EdgePlace nearestOnEdges() const {
        const auto isFirst = [this](std::size_t edge) { return isBeyond(edge) && !isBeyond(opposite(edge)); };
        const std::size_t first = isFirst(0) ? 0 : isFirst(1) ? 1 : 2;
        const std::size_t second = next(first);
        const double onSecond = isBeyond(second) ? positionOn(second) : 0;
        return onSecond > 0 ? EdgePlace{second, std::min(onSecond, 1.0)}
                            : EdgePlace{first, std::clamp(positionOn(first), 0.0, 1.0)};
    }

    std::array<Point<double, 2>, 3> m_corners;
    Point<double, 2> m_point;
    double m_area = 0;
    std::array<double, 3> m_weights{};
};

/// @param distance of the point from the triangle
/// @param tolerance a point that is nearer belongs to the edge
std::array<double, 3> weightsOf(const Corners& corners, const Point<double, 3>& point, double distance,
                                double tolerance) {
    if (isThin(corners)) {
        const AccuratePlace place(corners, point);
        return distance <= tolerance ? place.nearestWeights() : place.weights();
    }
    const bool isOnEdge = distance > 0 && distance <= tolerance;
    return weightsAt(corners, isOnEdge ? closestPoint(corners, point) : point);
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

    /// An ordinary triangle contains its surroundings as far as the differences from the point are rounded, which may
    /// be all of a thin neighbour. A thin triangle that does contain the point comes before it.
    [[nodiscard]] std::optional<std::uint32_t> found() const {
        const bool isBeside =
            m_thin && m_found != m_thin && !AccuratePlace(textureCorners(m_mesh, *m_found), m_point).isInside();
        return isBeside ? m_thin : m_found;
    }
    [[nodiscard]] double distance() const { return m_distance; }

private:
    double distanceTo(std::uint32_t triangle) {
        const Corners corners = textureCorners(m_mesh, triangle);
        if (isThin(corners)) {
            return distanceToThin(triangle, corners);
        }
        if (contains(corners, m_point)) {
            return 0;
        }
        double nearest = Box::INFINITE;
        for (std::size_t i = 0; i < 3; ++i) {
            nearest = std::min(nearest, norm(closestOnSegment(corners[i], corners[(i + 1) % 3], m_point) - m_point));
        }
        return nearest;
    }

    double distanceToThin(std::uint32_t triangle, const Corners& corners) {
        const AccuratePlace place(corners, m_point);
        if (place.isInside() && !(m_thin && *m_thin < triangle)) {
            m_thin = triangle;
        }
        return place.distance();
    }

    const TriangleMesh& m_mesh;
    Point<double, 3> m_point;
    double m_distance;
    std::optional<std::uint32_t> m_found;
    std::optional<std::uint32_t> m_thin;  ///< the lowest thin triangle that contains the point
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
    const std::optional<std::uint32_t> found = nearest.found();
    if (!found) {
        return std::nullopt;
    }
    return TexturePlace{*found, weightsOf(textureCorners(m_mesh, *found), point, nearest.distance(), tolerance)};
}

}  // namespace Veltrani::KelvoScreenDetail
