#include "KelvoScreen/detail/RayPacket.h"

#include "KelvoScreen/detail/RayProbe.h"
#include "KelvoScreen/detail/Rounding.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace Veltrani::KelvoScreenDetail {

namespace {

/// Lengths of directions, in length units, between which no product below leaves the range of a double.
constexpr double SHORTEST = 1e-100;
constexpr double LONGEST = 1e100;

/// No edge, sheared along a ray that is at most at 45 degrees to it, is longer than 1 + sqrt(2) times its own length.
constexpr double LONGER = 3;

/// Fewer rays than these are faster one by one.
constexpr int FEWEST = 4;

constexpr double YES = -1;
constexpr double NO = 1;

Point<double, 3> pointAt(const LanePoints& points, std::size_t lane) {
    return {points[0][lane], points[1][lane], points[2][lane]};
}

}  // namespace

/// A triangle; its corners have their components in the order of the packet: two across, one along.
struct RayPacket::Target {
    Target(const RayPacket& packet, std::uint32_t number)
        : index(packet.m_target.mesh.triangles[number]),
          a(packet.m_target.mesh.vertices[index[0]]),
          b(packet.m_target.mesh.vertices[index[1]]),
          c(packet.m_target.mesh.vertices[index[2]]),
          ax(a[packet.m_x]),
          ay(a[packet.m_y]),
          ad(a[packet.m_along]),
          bx(b[packet.m_x]),
          by(b[packet.m_y]),
          bd(b[packet.m_along]),
          cx(c[packet.m_x]),
          cy(c[packet.m_y]),
          cd(c[packet.m_along]),
          triangle(number) {
        const Point<double, 3> ab = b - a;
        const Point<double, 3> ac = c - a;
        longestEdge = LONGER * (std::abs(ab[0]) + std::abs(ab[1]) + std::abs(ab[2]) + std::abs(ac[0]) +
                                std::abs(ac[1]) + std::abs(ac[2]));
    }

    const TriangleMesh::Triangle& index;
    const Point<double, 3>& a;
    const Point<double, 3>& b;
    const Point<double, 3>& c;
    double ax, ay, ad, bx, by, bd, cx, cy, cd;
    Point<double, 3> area;  ///< along the normal; set once a ray may meet the triangle
    double longestEdge;     ///< at least: as any ray of the packet sees it
    double triangle;
};

void RayPacket::take(std::span<const Ray> rays, const PacketPlaces& places) {
    m_places = places;
    const LaneMask taken = ALL_LANES >> (LANES - places.count());
    clip(given(rays));
    m_refused = taken & ~negativeLanes(m_usable);
    m_active = taken & ~m_refused & negativeLanes(m_met);
    if (m_active == 0) {
        return;
    }
    chooseAxis();
    fillInactive();
    if (std::popcount(m_active) < FEWEST || isTooWide()) {
        m_refused |= m_active;
        m_active = 0;
    } else {
        aim();
    }
}

RayPacket::GivenRays RayPacket::given(std::span<const Ray> rays) const {
    GivenRays given{};
    m_places.forEach([&](std::size_t lane, std::size_t place) { given[lane] = &rays[place]; });
    std::fill(given.begin() + static_cast<std::ptrdiff_t>(m_places.count()), given.end(), given[m_places.count() - 1]);
    return given;
}

bool RayPacket::isTooWide() const {
    // Of a square as wide as a row of as many rays is long, each ray would have a part to itself.
    constexpr double OF_ROWS = 0.5;
    return spread() > (m_places.rows > 1 ? OF_ROWS : 1.0) * m_target.largestSpread;
}

KELVO_SCREEN_WIDE_VECTORS void RayPacket::clip(const GivenRays& rays) {
    const Box box = m_target.box;
    for (std::size_t i = 0; i < LANES; i += WIDTH) {
        const FourPoints starts{&rays[i]->first, &rays[i + 1]->first, &rays[i + 2]->first, &rays[i + 3]->first};
        const FourPoints seconds{&rays[i]->second, &rays[i + 1]->second, &rays[i + 2]->second, &rays[i + 3]->second};
        const Wide from[3] = {sideBySide(starts, 0), sideBySide(starts, 1), sideBySide(starts, 2)};
        Wide direction[3];
        for (std::size_t k = 0; k < 3; ++k) {
            direction[k] = sideBySide(seconds, k) - from[k];
            store(m_direction[k], i, direction[k]);
        }
        const Wide x = absolute(direction[0]);
        const Wide y = absolute(direction[1]);
        const Wide z = absolute(direction[2]);
        const Wide farthest = larger(larger(absolute(from[0]), absolute(from[1])), absolute(from[2]));
        const Wide margin = m_target.clipMargin + ROUNDING * farthest;
        const Wide largest = larger(larger(x, y), z);
        const Wide least = smaller(smaller(x, y), z);
        Wide first = all(0);
        Wide second = all(Box::INFINITE);
        for (std::size_t k = 0; k < 3; ++k) {
            const Wide inverse = 1 / direction[k];
            const Wide low = (box.lower[k] - margin - from[k]) * inverse;
            const Wide high = (box.upper[k] + margin - from[k]) * inverse;
            first = larger(first, smaller(low, high));
            second = smaller(second, larger(low, high));
        }
        const Wide rounding = ROUNDING * larger(all(m_target.largestCoordinate), farthest);
        // The sum is not below anything when one of the six is not a number.
        const Wide sum = absolute(from[0]) + absolute(from[1]) + absolute(from[2]) + x + y + z;
        const WideMask usable = (rounding <= m_target.largestRounding) & (least >= SHORTEST) & (sum <= LONGEST);
        store(m_usable, i, usable ? all(YES) : all(NO));
        store(m_met, i, first <= second ? all(YES) : all(NO));
        store(m_axis, i, longestAxis(x, y, z));
        store(m_rays.largest, i, largest);
        store(m_rays.end, i, second - first);
        store(m_skipped, i, first);
        store(m_rounding, i, rounding);
        store(m_earliest, i, -rounding / largest);
        const Wide scale = 1 / largest;
        Wide heading2 = all(0);
        for (std::size_t k = 0; k < 3; ++k) {
            const Wide heading = direction[k] * scale;
            heading2 += heading * heading;
            store(m_rays.heading[k], i, heading);
            store(m_rays.origin[k], i, from[k] + first * direction[k]);
            store(m_exit[k], i, from[k] + second * direction[k]);
        }
        store(m_heading2, i, heading2);
    }
}

/// Rays that run most along another axis than the first one are refused.
void RayPacket::chooseAxis() {
    const double axis = m_axis[static_cast<std::size_t>(std::countr_zero(m_active))];
    m_along = static_cast<std::size_t>(axis);
    m_x = (m_along + 1) % 3;
    m_y = (m_along + 2) % 3;
    LaneMask same = 0;
    for (std::size_t i = 0; i < LANES; ++i) {
        same |= (m_axis[i] == axis ? LaneMask{1} : 0) << i;
    }
    m_refused |= m_active & ~same;
    m_active &= same;
}

/// Lanes that are not active repeat the first active one where all lanes are processed together.
void RayPacket::fillInactive() {
    const auto any = static_cast<std::size_t>(std::countr_zero(m_active));
    forEachLane(m_active ^ ALL_LANES, [&](std::size_t i) {
        for (std::size_t k = 0; k < 3; ++k) {
            m_rays.origin[k][i] = m_rays.origin[k][any];
            m_exit[k][i] = m_exit[k][any];
        }
    });
}

KELVO_SCREEN_WIDE_VECTORS double RayPacket::spread() const {
    Wide farthest = all(0);
    for (std::size_t k = 0; k < 3; ++k) {
        const Wide origin = all(m_rays.origin[k][0]);
        const Wide exit = all(m_exit[k][0]);
        for (std::size_t i = 0; i < LANES; i += WIDTH) {
            farthest = larger(farthest, absolute(load(m_rays.origin[k], i) - origin));
            farthest = larger(farthest, absolute(load(m_exit[k], i) - exit));
        }
    }
    return std::max(std::max(farthest[0], farthest[1]), std::max(farthest[2], farthest[3]));
}

KELVO_SCREEN_WIDE_VECTORS void RayPacket::aim() {
    for (std::size_t i = 0; i < LANES; i += WIDTH) {
        const Wide along = load(m_direction[m_along], i);
        store(m_shearX, i, load(m_direction[m_x], i) / along);
        store(m_shearY, i, load(m_direction[m_y], i) / along);
        store(m_perDepth, i, 1 / along);
        store(m_reach, i, all(Box::INFINITE));
        store(m_triangle, i, all(-1));
    }
}

LaneMask RayPacket::visit(std::uint32_t triangle, LaneMask lanes) {
    Target target(*this, triangle);
    const LaneMask possible = findPossible(target, lanes);
    if (possible == 0) {
        return 0;
    }
    const Corners corners{target.a, target.b, target.c};
    target.area = m_target.shapes.isNeedle(triangle) ? accurateAreaVector(corners) : plainAreaVector(corners);
    LaneMask touching = 0;
    LaneMask nearer = keepNearer(target, possible, touching);
    forEachLane(touching, [&](std::size_t i) { nearer |= touch(target, i) ? LaneMask{1} << i : 0; });
    return nearer;
}

/// The corners of a triangle as four rays see them: across each ray, and along it.
struct RayPacket::Flat {
    [[gnu::always_inline]] Flat(const RayPacket& packet, const Target& target, std::size_t i)
        : ad(target.ad - load(packet.m_rays.origin[packet.m_along], i)),
          bd(target.bd - load(packet.m_rays.origin[packet.m_along], i)),
          cd(target.cd - load(packet.m_rays.origin[packet.m_along], i)) {
        const Wide originX = load(packet.m_rays.origin[packet.m_x], i);
        const Wide originY = load(packet.m_rays.origin[packet.m_y], i);
        const Wide shearX = load(packet.m_shearX, i);
        const Wide shearY = load(packet.m_shearY, i);
        const Wide ax = target.ax - originX - shearX * ad;
        const Wide ay = target.ay - originY - shearY * ad;
        const Wide bx = target.bx - originX - shearX * bd;
        const Wide by = target.by - originY - shearY * bd;
        const Wide cx = target.cx - originX - shearX * cd;
        const Wide cy = target.cy - originY - shearY * cd;
        edge0 = bx * cy - by * cx;
        edge1 = cx * ay - cy * ax;
        edge2 = ax * by - ay * bx;
        x = larger(larger(absolute(ax), absolute(bx)), absolute(cx));
        y = larger(larger(absolute(ay), absolute(by)), absolute(cy));
    }
    Wide ad, bd, cd;
    Wide edge0, edge1, edge2;
    Wide x, y;  ///< the largest components across the rays
};

/// Leaves out only lanes that `RayProbe` would leave out at first sight: their rays pass one edge outside and another
/// one inside, both at more than the tolerance.
KELVO_SCREEN_WIDE_VECTORS LaneMask RayPacket::findPossible(const Target& target, LaneMask lanes) const {
    LaneMask possible = 0;
    for (std::size_t i = 0; i < LANES; i += WIDTH) {
        if ((lanes >> i & WIDE_BITS) != 0) {
            const Flat flat(*this, target, i);
            const Wide least = smaller(smaller(flat.edge0, flat.edge1), flat.edge2);
            const Wide greatest = larger(larger(flat.edge0, flat.edge1), flat.edge2);
            const Wide bound = load(m_rounding, i) * target.longestEdge;
            possible |= bitsOf(~((-least > bound) & (greatest > bound))) << i;
        }
    }
    return possible & lanes;
}

/// @param touching receives the lanes that `RayProbe` must decide on
/// @return the lanes that meet the triangle and nothing nearer
KELVO_SCREEN_WIDE_VECTORS LaneMask RayPacket::keepNearer(const Target& target, LaneMask lanes, LaneMask& touching) {
    LaneMask result = 0;
    const double area2 = dot(target.area, target.area);
    for (std::size_t i = 0; i < LANES; i += WIDTH) {
        const LaneMask wanted = lanes >> i & WIDE_BITS;
        if (wanted == 0) {
            continue;
        }
        const Flat flat(*this, target, i);
        const Wide area = flat.edge0 + flat.edge1 + flat.edge2;
        const Wide scale = 1 / area;
        const Wide weight0 = flat.edge0 * scale;
        const Wide weight1 = flat.edge1 * scale;
        const Wide weight2 = flat.edge2 * scale;
        const Wide perDepth = load(m_perDepth, i);
        const Wide t = weight0 * (flat.ad * perDepth) + weight1 * (flat.bd * perDepth) + weight2 * (flat.cd * perDepth);
        const Wide along =
            innerProduct(load(m_rays.heading[0], i), load(m_rays.heading[1], i), load(m_rays.heading[2], i),
                         all(target.area[0]), all(target.area[1]), all(target.area[2]));
        const Wide size2 = area2 * load(m_heading2, i);
        const WideMask inside = (smaller(smaller(flat.edge0, flat.edge1), flat.edge2) > 0) |
                                (larger(larger(flat.edge0, flat.edge1), flat.edge2) < 0);
        const WideMask known =
            flat.x * flat.y * larger(flat.x, flat.y) * WEIGHT_ROUNDING <= load(m_rounding, i) * absolute(area);
        const Wide reach = load(m_reach, i);
        const Wide triangle = load(m_triangle, i);
        const WideMask nearer = (load(m_skipped, i) + t >= load(m_earliest, i)) &
                                ((t < reach) | ((t == reach) & (target.triangle < triangle)));
        const WideMask seen = along * along > ROUNDING * ROUNDING * size2;
        const WideMask clear = inside & known;
        const WideMask kept = maskOf(wanted) & clear & nearer & seen;
        touching |= (wanted & ~bitsOf(clear)) << i;
        result |= bitsOf(kept) << i;
        store(m_reach, i, kept ? t : reach);
        store(m_triangle, i, kept ? all(target.triangle) : triangle);
        store(m_weight1, i, kept ? weight1 : load(m_weight1, i));
        store(m_weight2, i, kept ? weight2 : load(m_weight2, i));
    }
    return result;
}

/// A ray that passes on or near an edge, or whose weights are not known, for which `RayProbe` decides.
bool RayPacket::touch(const Target& target, std::size_t lane) {
    const RayProbe probe(pointAt(m_rays.origin, lane), pointAt(m_direction, lane), m_rounding[lane],
                         m_target.shapes.longestEdge);
    Meeting meeting;
    if (!probe.meets(target.a, target.b, target.c, meeting)) {
        return false;
    }
    const bool isNearer =
        m_skipped[lane] + meeting.t >= m_earliest[lane] &&
        (meeting.t < m_reach[lane] || (meeting.t == m_reach[lane] && target.triangle < m_triangle[lane]));
    if (!isNearer || !isSeen(pointAt(m_rays.heading, lane), target.area)) {
        return false;
    }
    m_reach[lane] = meeting.t;
    m_triangle[lane] = target.triangle;
    m_weight1[lane] = meeting.weights[1];
    m_weight2[lane] = meeting.weights[2];
    return true;
}

LaneMask RayPacket::metLanes() const {
    return m_active & ~negativeLanes(m_triangle);
}

/// Lanes without a hit repeat the triangle of another one.
KELVO_SCREEN_WIDE_VECTORS void RayPacket::complete(LaneMask met) {
    const auto any = static_cast<std::size_t>(std::countr_zero(met));
    const std::vector<Point<double, 3>>& vertices = m_target.mesh.vertices;
    for (std::size_t i = 0; i < LANES; i += WIDTH) {
        FourPoints first{}, second{}, third{};
        for (std::size_t j = 0; j < WIDTH; ++j) {
            const double triangle = m_triangle[(met >> (i + j) & 1U) != 0 ? i + j : any];
            const TriangleMesh::Triangle& index = m_target.mesh.triangles[static_cast<std::uint32_t>(triangle)];
            first[j] = &vertices[index[0]];
            second[j] = &vertices[index[1]];
            third[j] = &vertices[index[2]];
        }
        Wide ab[3], ac[3];
        for (std::size_t k = 0; k < 3; ++k) {
            const Wide a = sideBySide(first, k);
            ab[k] = sideBySide(second, k) - a;
            ac[k] = sideBySide(third, k) - a;
            store(m_completion.point[k], i, a + load(m_weight1, i) * ab[k] + load(m_weight2, i) * ac[k]);
        }
        const Wide area[3] = {ab[1] * ac[2] - ab[2] * ac[1], ab[2] * ac[0] - ab[0] * ac[2],
                              ab[0] * ac[1] - ab[1] * ac[0]};
        const Wide inverse = 1 / squareRoot(innerProduct(area[0], area[1], area[2], area[0], area[1], area[2]));
        Wide along = all(0);
        for (std::size_t k = 0; k < 3; ++k) {
            const Wide normal = area[k] * inverse;
            along += load(m_direction[k], i) * normal;
            store(m_completion.normal[k], i, normal);
        }
        store(m_completion.along, i, along);
        store(m_completion.t, i, larger(all(0), load(m_skipped, i) + load(m_reach, i)));
    }
}

/// The normal of a needle takes more than rounded arithmetic; other triangles are left as they are.
void RayPacket::completeNeedle(std::size_t lane) {
    const auto triangle = static_cast<std::uint32_t>(m_triangle[lane]);
    if (!m_target.shapes.isNeedle(triangle)) {
        return;
    }
    Completion& found = m_completion;
    const Point<double, 3> area = accurateAreaVector(cornersOf(m_target.mesh, triangle));
    const Point<double, 3> normal = area * (1 / norm(area));
    for (std::size_t k = 0; k < 3; ++k) {
        found.normal[k][lane] = normal[k];
    }
    found.along[lane] = dot(pointAt(m_direction, lane), normal);
}

void RayPacket::finish(std::span<SurfaceHit> hits) {
    const LaneMask met = m_active != 0 ? metLanes() : 0;
    if (met != 0) {
        complete(met);
        if (m_target.shapes.hasNeedles) {
            forEachLane(met, [&](std::size_t i) { completeNeedle(i); });
        }
    }
    m_places.forEach([&, &found = m_completion](std::size_t i, std::size_t place) {
        const LaneMask lane = LaneMask{1} << i;
        if ((met & lane) != 0) {
            const int side = found.along[i] > 0 ? 1 : found.along[i] < 0 ? -1 : 0;
            hits[place] = {{found.point[0][i], found.point[1][i], found.point[2][i]},
                           {found.normal[0][i], found.normal[1][i], found.normal[2][i]},
                           found.t[i],
                           side,
                           true};
        } else if ((m_refused & lane) == 0) {
            hits[place] = SurfaceHit{};
        }
    });
}

}  // namespace Veltrani::KelvoScreenDetail
