#include "KelvoScreen/detail/PolygonCutter.h"

#include <algorithm>
#include <cmath>

namespace Veltrani::KelvoScreenDetail {

namespace {

using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

/// Twice the area of the triangle (a, b, c), positive when it is counter-clockwise.
double doubleArea(const P2& a, const P2& b, const P2& c) {
    return (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]);
}

/// Returns whether p lies in a counter-clockwise triangle or on its edge, but not on one of its corners: the two sides
/// of a slit that leads to a hole share their corners without covering each other.
bool isCovered(const P2& p, const P2& a, const P2& b, const P2& c) {
    return doubleArea(a, b, p) >= 0 && doubleArea(b, c, p) >= 0 && doubleArea(c, a, p) >= 0 && !(p == a) && !(p == b) &&
           !(p == c);
}

/// Returns the normal of a polygon that need be neither planar nor convex; its length is twice the area.
P3 newellNormal(std::span<const P3> corners) {
    P3 normal;
    for (std::size_t i = 2; i < corners.size(); ++i) {
        normal += cross(corners[i - 1] - corners[0], corners[i] - corners[0]);
    }
    return normal;
}

/// Returns the corners relative to the first one and scaled by a power of two, exactly, to about 1, so that neither
/// very large nor very small polygons leave the range of a double.
std::vector<P3> normalised(std::span<const P3> corners) {
    std::vector<P3> result(corners.begin(), corners.end());
    double extent = 0;
    for (P3& corner : result) {
        corner -= corners[0];
        extent = std::max({extent, std::abs(corner[0]), std::abs(corner[1]), std::abs(corner[2])});
    }
    const int exponent = std::isfinite(extent) && extent > 0 ? -std::ilogb(extent) : 0;
    for (P3& corner : result) {
        corner = {std::ldexp(corner[0], exponent), std::ldexp(corner[1], exponent), std::ldexp(corner[2], exponent)};
    }
    return result;
}

/// Returns whether the diagonal from corner 0 to corner 2 cuts the quadrilateral into two triangles of its own winding,
/// or the other diagonal does no better.
bool isCutFromFirstCorner(std::span<const P3> corners) {
    const P3 normal = cross(corners[2] - corners[0], corners[3] - corners[1]);
    const auto keepsWinding = [&](int a, int b, int c) {
        const auto corner = [&](int i) { return corners[static_cast<std::size_t>(i)]; };
        return dot(cross(corner(b) - corner(a), corner(c) - corner(a)), normal) > 0;
    };
    return (keepsWinding(0, 1, 2) && keepsWinding(0, 2, 3)) || !(keepsWinding(0, 1, 3) && keepsWinding(1, 2, 3));
}

}  // namespace

std::span<const PolygonCutter::Triangle> PolygonCutter::cut(std::span<const P3> corners) {
    if (corners.size() == 3) {
        m_triangles.assign({{0, 1, 2}});
    } else if (corners.size() == 4 && isCutFromFirstCorner(corners)) {
        m_triangles.assign({{0, 1, 2}, {0, 2, 3}});
    } else if (corners.size() == 4) {
        m_triangles.assign({{0, 1, 3}, {1, 2, 3}});
    } else {
        m_triangles.clear();
        flatten(corners);
        linkCorners();
        if (!clipEars()) {
            m_triangles.clear();
        }
    }
    return m_triangles;
}

void PolygonCutter::flatten(std::span<const P3> corners) {
    const std::vector<P3> near = normalised(corners);
    const P3 normal = newellNormal(near);
    std::size_t axis = 0;
    for (std::size_t i = 1; i < 3; ++i) {
        axis = std::abs(normal[i]) > std::abs(normal[axis]) ? i : axis;
    }
    std::size_t across = (axis + 1) % 3;
    std::size_t up = (axis + 2) % 3;
    if (normal[axis] < 0) {
        std::swap(across, up);
    }
    m_corners.clear();
    m_corners.reserve(near.size());
    for (const P3& corner : near) {
        m_corners.push_back({corner[across], corner[up]});
    }
}

void PolygonCutter::linkCorners() {
    const auto count = static_cast<std::uint32_t>(m_corners.size());
    m_previous.resize(count);
    m_next.resize(count);
    m_hollow.clear();
    m_hollowPlace.assign(count, NOWHERE);
    m_turn.resize(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        m_previous[i] = (i + count - 1) % count;
        m_next[i] = (i + 1) % count;
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        classify(i);
    }
    m_current = 0;
    m_cornersLeft = count;
    listAllCandidates();
}

void PolygonCutter::listAllCandidates() {
    m_candidates.clear();
    std::uint32_t corner = m_current;
    for (std::size_t i = 0; i < m_cornersLeft; ++i, corner = m_next[corner]) {
        addCandidate(corner);
    }
}

/// A corner that is listed again waits for its new turn, so that the neighbours of an ear come last: a round polygon
/// then falls into triangles of similar width instead of a fan of slivers.
void PolygonCutter::addCandidate(std::uint32_t corner) {
    m_turn[corner] = m_candidates.size();
    m_candidates.push_back(corner);
}

/// A clipped ear changes only whether its two neighbours are ears: a diagonal that left the polygon also leaves what
/// remains of it. So every corner is tested once, and again when a neighbour goes.
bool PolygonCutter::clipEars() {
    std::size_t turn = 0;
    int recoveries = 0;
    while (m_cornersLeft > 3 && m_stepsLeft > 0) {
        if (turn < m_candidates.size()) {
            const std::uint32_t corner = m_candidates[turn];
            if (m_turn[corner] == turn++ && isEar(corner)) {
                clip(corner);
            }
        } else if (recoveries++ < MAX_RECOVERIES) {
            clip(findFlatCorner());
            listAllCandidates();
            turn = 0;
        } else {
            clip(m_current);
        }
    }
    m_triangles.push_back({m_previous[m_current], m_current, m_next[m_current]});
    return m_cornersLeft <= 3;
}

/// Returns a corner whose triangle has no area, such as the tip of a spike; the current one when there is none.
std::uint32_t PolygonCutter::findFlatCorner() {
    spend(m_cornersLeft);
    std::uint32_t corner = m_current;
    for (std::size_t i = 0; i < m_cornersLeft; ++i, corner = m_next[corner]) {
        if (bulge(corner) == 0) {
            return corner;
        }
    }
    return m_current;
}

void PolygonCutter::clip(std::uint32_t corner) {
    const std::uint32_t previous = m_previous[corner];
    const std::uint32_t next = m_next[corner];
    m_triangles.push_back({previous, corner, next});
    m_next[previous] = next;
    m_previous[next] = previous;
    m_turn[corner] = SIZE_MAX;
    forgetHollow(corner);
    --m_cornersLeft;
    m_current = next;
    for (const std::uint32_t neighbour : {previous, next}) {
        classify(neighbour);
        addCandidate(neighbour);
    }
}

/// A triangle that holds any corner holds one that does not bulge outwards, so that only those are tested.
bool PolygonCutter::isEar(std::uint32_t corner) {
    spend(1);
    if (m_hollowPlace[corner] != NOWHERE) {
        return false;
    }
    const P2& a = m_corners[m_previous[corner]];
    const P2& b = m_corners[corner];
    const P2& c = m_corners[m_next[corner]];
    const auto covered = std::find_if(m_hollow.begin(), m_hollow.end(),
                                      [&](const Hollow& other) { return isCovered(other.place, a, b, c); });
    spend(static_cast<std::size_t>(covered - m_hollow.begin()));
    return covered == m_hollow.end();
}

void PolygonCutter::classify(std::uint32_t corner) {
    if (bulge(corner) > 0) {
        forgetHollow(corner);
    } else if (m_hollowPlace[corner] == NOWHERE) {
        m_hollowPlace[corner] = static_cast<std::uint32_t>(m_hollow.size());
        m_hollow.push_back({m_corners[corner], corner});
    }
}

void PolygonCutter::forgetHollow(std::uint32_t corner) {
    const std::uint32_t place = m_hollowPlace[corner];
    if (place != NOWHERE) {
        m_hollow[place] = m_hollow.back();
        m_hollowPlace[m_hollow[place].corner] = place;
        m_hollow.pop_back();
        m_hollowPlace[corner] = NOWHERE;
    }
}

double PolygonCutter::bulge(std::uint32_t corner) const {
    return doubleArea(m_corners[m_previous[corner]], m_corners[corner], m_corners[m_next[corner]]);
}

}  // namespace Veltrani::KelvoScreenDetail
