#include "KelvoScreen/detail/MeshSurface.h"

#include "KelvoScreen/detail/RayPacket.h"
#include "KelvoScreen/detail/RayProbe.h"
#include "KelvoScreen/detail/Rounding.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>

namespace Veltrani::KelvoScreenDetail {

namespace {

/// Relative to half the longest side of the mesh. Rays whose rounding is less visit every triangle that they pass
/// within it, whichever rays are cast with them: the boxes are enlarged by more.
constexpr double LARGEST_PACKET_ROUNDING = 1e-7;

/// Relative to the typical size of a triangle. Rays further apart have few boxes in common (measured: from about ten on
/// they are faster one by one).
constexpr double LARGEST_PACKET_SPREAD = 8;

/// Packets that are not tried after some that were refused.
constexpr std::size_t MOST_SKIPPED = 32;

/// Rays of a list, divided into packets. Those of a picture, listed row by row, are taken from up to four rows at a
/// time: the rays of a square have more of a surface in common than as many of one row.
///
/// Where rows end is guessed from how far neighbouring rays are apart. A wrong guess costs time and changes nothing.
class RayRows {
public:
    explicit RayRows(std::span<const Ray> rays) : m_rays(rays) {}

    /// Calls `visit` with each packet, so that each ray is in one of them.
    template <class Visit>
    void forEachPacket(const Visit& visit) {
        for (std::size_t begin = 0; begin < m_rays.size();) {
            if (!endsRow(begin + m_length)) {
                m_length = nextEnd(begin) - begin;
            }
            const std::size_t rows = rowsFrom(begin);
            const std::size_t columns = LANES / rows;
            for (std::size_t first = 0; first < m_length; first += columns) {
                visit(PacketPlaces{begin + first, std::min(columns, m_length - first), rows, m_length});
            }
            begin += rows * m_length;
        }
    }

private:
    /// Rows in a packet, and the rays of a row from which on rows are put together.
    static constexpr std::size_t MOST_ROWS = 4;
    static constexpr std::size_t SHORTEST_ROW = 8;

    /// Returns true where the way to a ray is far longer than the one before it; and at the end of the list.
    [[nodiscard]] bool endsRow(std::size_t next) const {
        constexpr double FAR2 = 25;
        return next == m_rays.size() || (next >= 2 && next < m_rays.size() && way2(next) > FAR2 * way2(next - 1));
    }

    [[nodiscard]] double way2(std::size_t i) const {
        const Point<double, 3> way = m_rays[i].second - m_rays[i - 1].second;
        return dot(way, way);
    }

    [[nodiscard]] std::size_t nextEnd(std::size_t begin) const {
        std::size_t end = begin + std::min(SHORTEST_ROW, m_rays.size() - begin);
        while (!endsRow(end)) {
            ++end;
        }
        return end;
    }

    /// Returns how many rows of the same length begin here.
    [[nodiscard]] std::size_t rowsFrom(std::size_t begin) const {
        std::size_t rows = 1;
        while (rows < MOST_ROWS && m_length >= SHORTEST_ROW && begin + rows * m_length < m_rays.size() &&
               endsRow(begin + (rows + 1) * m_length)) {
            ++rows;
        }
        return rows;
    }

    std::span<const Ray> m_rays;
    std::size_t m_length = 0;  ///< of the row, where one was found
};

/// Notes their shapes as they are visited.
class TrianglesWithArea final : public TriangleIndex::Source {
public:
    TrianglesWithArea(const TriangleMesh& mesh, TriangleShapes& shapes) : m_mesh(mesh), m_shapes(shapes) {}
    bool corners(std::uint32_t triangle, Corners& out) const override {
        out = cornersOf(m_mesh, triangle);
        const TriangleShape shape(out);
        if (shape.hasArea()) {
            m_shapes.add(m_mesh, triangle, shape);
        }
        return shape.hasArea();
    }

private:
    const TriangleMesh& m_mesh;
    TriangleShapes& m_shapes;
};

/// A ray whose origin was moved forward by `skipped` to where the mesh begins.
struct MovedRay {
    Point<double, 3> origin;
    Point<double, 3> direction;
    double skipped = 0;
    double rounding = 0;  ///< length that rounding the coordinates of ray and mesh can make
};

/// Keeps the nearest hit of a ray.
class HitCollector final : public TriangleIndex::RayVisitor {
public:
    /// @param best empty; receives the nearest hit, whose t counts from the moved origin
    HitCollector(const TriangleMesh& mesh, const TriangleShapes& shapes, const MovedRay& ray, std::optional<int> side,
                 std::optional<MeshPoint>& best)
        : m_mesh(mesh),
          m_shapes(shapes),
          m_ray(ray),
          m_best(best),
          m_probe(ray.origin, ray.direction, ray.rounding, shapes.longestEdge),
          m_heading(ray.direction * (1 / largestComponent(ray.direction))),
          m_earliest(-ray.rounding / largestComponent(ray.direction)),
          m_side(side) {}

    double visit(std::uint32_t triangle) override {
        const TriangleMesh::Triangle& index = m_mesh.triangles[triangle];
        const Point<double, 3>& a = m_mesh.vertices[index[0]];
        const Point<double, 3>& b = m_mesh.vertices[index[1]];
        const Point<double, 3>& c = m_mesh.vertices[index[2]];
        Meeting meeting;
        if (m_probe.meets(a, b, c, meeting) && isNearer(triangle, meeting.t)) {
            const Corners corners{a, b, c};
            if (m_shapes.isNeedle(triangle)) {
                keepNeedle(corners, meeting, triangle);
            } else {
                keepIfSeen(corners, plainAreaVector(corners), meeting, triangle);
            }
        }
        return m_reach;
    }

private:
    [[nodiscard]] bool isNearer(std::uint32_t triangle, double t) const {
        // At an infinite distance there is none before it.
        return m_ray.skipped + t >= m_earliest &&
               (t < m_reach || (t == m_reach && m_best && triangle < m_best->triangle));
    }

    /// Leaves out triangles that the ray sees edge-on or from the side that is not wanted.
    void keepIfSeen(const Corners& corners, const Point<double, 3>& area, const Meeting& meeting,
                    std::uint32_t triangle) {
        if (isSeen(m_heading, area) && (!m_side || *m_side == sideOfSurface(m_heading, area))) {
            m_best.emplace(MeshPoint{pointWithWeights(corners, meeting.weights), area, meeting.t, triangle});
            m_reach = meeting.t;
        }
    }

    /// A separate function, so that the numbers of all other triangles stay in registers.
    [[gnu::noinline]] void keepNeedle(const Corners& corners, const Meeting& meeting, std::uint32_t triangle) {
        keepIfSeen(corners, accurateAreaVector(corners), meeting, triangle);
    }

    const TriangleMesh& m_mesh;
    const TriangleShapes& m_shapes;
    const MovedRay& m_ray;
    std::optional<MeshPoint>& m_best;
    RayProbe m_probe;
    Point<double, 3> m_heading;      ///< the direction, scaled so that it can be squared
    double m_earliest;               ///< t before which a hit is behind the origin
    double m_reach = Box::INFINITE;  ///< t of the nearest hit
    std::optional<int> m_side;
};

/// Keeps the nearest point.
class NearestCollector final : public TriangleIndex::PointVisitor {
public:
    NearestCollector(const TriangleMesh& mesh, const Point<double, 3>& point) : m_mesh(mesh), m_point(point) {}

    double visit(std::uint32_t triangle) override {
        const Corners corners = cornersOf(m_mesh, triangle);
        const Point<double, 3> candidate = closestPoint(corners, m_point);
        const double distance = norm(candidate - m_point);
        if (distance < m_distance || (m_best && distance == m_distance && triangle < m_best->triangle)) {
            m_distance = distance;
            m_best = MeshPoint{candidate, areaVector(corners), 0, triangle};
        }
        return m_distance;
    }

    [[nodiscard]] const std::optional<MeshPoint>& best() const { return m_best; }

private:
    const TriangleMesh& m_mesh;
    Point<double, 3> m_point;
    double m_distance = Box::INFINITE;
    std::optional<MeshPoint> m_best;
};

}  // namespace

MeshSurface::MeshSurface(const TriangleMesh& mesh)
    : m_mesh(mesh),
      m_index(static_cast<std::uint32_t>(mesh.triangles.size()), TrianglesWithArea(mesh, m_shapes)),
      m_largestCoordinate(m_index.box().largestCoordinate()) {}

std::optional<MeshPoint> MeshSurface::nearestHit(const Point<double, 3>& from, const Point<double, 3>& to,
                                                 std::optional<int> side) const {
    std::optional<MeshPoint> best;
    MovedRay ray{from, to - from};
    double end = 0;
    if (!m_index.clip(from, ray.direction, ray.skipped, end)) {
        return best;
    }
    ray.origin += ray.skipped * ray.direction;
    ray.rounding = ROUNDING * std::max(m_largestCoordinate, largestComponent(from));
    HitCollector collector(m_mesh, m_shapes, ray, side, best);
    m_index.alongRay(ray.origin, ray.direction, end - ray.skipped, collector);
    if (best) {
        best->t = std::max(0.0, ray.skipped + best->t);
    }
    return best;
}

void MeshSurface::nearestHits(std::span<const Ray> rays, std::span<SurfaceHit> hits) const {
    const PacketTarget target{m_mesh,
                              m_shapes,
                              m_index.box(),
                              m_index.clipMargin(),
                              LARGEST_PACKET_ROUNDING * m_index.box().halfSize(),
                              LARGEST_PACKET_SPREAD * m_index.typicalSize(),
                              m_largestCoordinate};
    RayPacket packet(target);
    // Where packets are refused whole, those that follow probably would be as well: fewer and fewer are tried.
    std::size_t toSkip = 0;
    std::size_t nextToSkip = 1;
    RayRows(rays).forEachPacket([&](const PacketPlaces& places) {
        LaneMask oneByOne = ALL_LANES;
        if (toSkip > 0) {
            --toSkip;
        } else {
            packet.take(rays, places);
            m_index.alongRays(packet.rays(), packet.active(), widestPacket(), packet);
            packet.finish(hits);
            oneByOne = packet.refused();
            const bool isRefused = std::popcount(oneByOne) == static_cast<int>(places.count());
            toSkip = isRefused ? nextToSkip : 0;
            nextToSkip = isRefused ? std::min(2 * nextToSkip, MOST_SKIPPED) : 1;
        }
        if (oneByOne != 0) {
            places.forEach([&](std::size_t lane, std::size_t place) {
                if ((oneByOne >> lane & 1U) != 0) {
                    hits[place] = surfaceHit(rays[place]);
                }
            });
        }
    });
}

SurfaceHit MeshSurface::surfaceHit(const Ray& ray) const {
    const auto& [from, to] = ray;
    const std::optional<MeshPoint> nearest = nearestHit(from, to, std::nullopt);
    if (!nearest) {
        return {};
    }
    const Point<double, 3> normal = nearest->area * (1 / norm(nearest->area));
    return {nearest->point, normal, nearest->t, sideOfSurface(to - from, normal), true};
}

std::optional<MeshPoint> MeshSurface::nearestPoint(const Point<double, 3>& point) const {
    if (!isFinite(point)) {
        return std::nullopt;
    }
    NearestCollector collector(m_mesh, point);
    m_index.aroundPoint(point, Box::INFINITE, collector);
    return collector.best();
}

}  // namespace Veltrani::KelvoScreenDetail
