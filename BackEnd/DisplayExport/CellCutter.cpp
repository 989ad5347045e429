#include "DisplayExport/CellCutter.h"

#include "DisplayExport/ContentInput.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Veltrani::DisplayExport {

namespace {

using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

/// How often a cell that holds a pole is divided before the part with the pole is left out.
constexpr int SUBDIVISIONS = 6;

/// The two triangles of a cell, by its corners; a player that halves cells does so along this diagonal.
constexpr std::array<std::array<std::size_t, 3>, 2> HALVES{{{0, 1, 2}, {0, 2, 3}}};

/// A corner of a polygon that is being cut.
struct Vertex {
    P2 picture;
    P2 content;
    P3 direction;
};

using Polygon = std::vector<Vertex>;

Vertex between(const Vertex& a, const Vertex& b, double part) {
    return {a.picture + part * (b.picture - a.picture), a.content + part * (b.content - a.content),
            a.direction + part * (b.direction - a.direction)};
}

/// What is left of a convex polygon on the side where `height` of a vertex, which is linear in it, is not below zero.
template <class Height>
Polygon cutBy(const Polygon& polygon, const Height& height) {
    Polygon left;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Vertex& here = polygon[i];
        const Vertex& next = polygon[(i + 1) % polygon.size()];
        const double a = height(here);
        const double b = height(next);
        if (a >= 0) {
            left.push_back(here);
        }
        if ((a > 0 && b < 0) || (a < 0 && b > 0)) {
            left.push_back(between(here, next, a / (a - b)));
        }
    }
    return left;
}

double areaOf(const P2& a, const P2& b, const P2& c) {
    return (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]);
}

/// As a fan of triangles; those without an area are left out.
void addFan(const Polygon& polygon, std::uint8_t face, std::vector<WarpPiece>& pieces) {
    for (std::size_t i = 2; i < polygon.size(); ++i) {
        const Vertex& a = polygon[0];
        const Vertex& b = polygon[i - 1];
        const Vertex& c = polygon[i];
        if (areaOf(a.picture, b.picture, c.picture) > 0) {
            pieces.push_back({{{{a.picture, a.content}, {b.picture, b.content}, {c.picture, c.content}}}, face});
        }
    }
}

Polygon halfOf(const WarpCell& cell, const std::array<P2, 4>& contents, const std::array<std::size_t, 3>& corners) {
    Polygon polygon;
    for (const std::size_t i : corners) {
        polygon.push_back({cell.picture[i], contents[i], cell.directions[i]});
    }
    return polygon;
}

}  // namespace

CellCutter::CellCutter(const WarpSampler& sampler, const ContentInput& input, const WarpErrorMeter& meter, Seam seam,
                       double error, double allowed)
    : m_sampler(sampler),
      m_input(input),
      m_meter(meter),
      m_seam(seam),
      m_error(error),
      m_allowed(allowed),
      m_poles(input.poles()),
      m_wrapsAround(input.wrapsAround()) {}

bool CellCutter::mustCut(const WarpCell& cell, WarpCell::Kind kind) const {
    return kind != WarpCell::Kind::UNUSABLE && (kind != WarpCell::Kind::WHOLE || cell.isNear(m_poles));
}

CellCutter::Cut CellCutter::cut(const WarpCell& cell, WarpCell::Kind kind) const {
    Cut cut;
    const bool isAtPole = kind == WarpCell::Kind::OVER_POLE || cell.isNear(m_poles);
    const bool isMeasured = isAtPole && kind != WarpCell::Kind::OVER_POLE;
    const WarpError error = isMeasured ? m_meter.errorIn(cell, m_allowed) : WarpError();
    if (kind == WarpCell::Kind::OVER_POLE || error.largest > m_error) {
        subdivide(cell, SUBDIVISIONS, cut);
    } else {
        cut.error = error;
        cutAsItIs(cell, kind, cut);
    }
    return cut;
}

void CellCutter::cutAsItIs(const WarpCell& cell, WarpCell::Kind kind, Cut& cut) const {
    if (kind == WarpCell::Kind::OVER_FACES) {
        cutAtFaces(cell, cut.pieces);
    } else if (kind != WarpCell::Kind::UNUSABLE) {
        cutAtSeam(cell, cut.pieces);
    }
}

void CellCutter::cutAtSeam(const WarpCell& cell, std::vector<WarpPiece>& pieces) const {
    const std::array<P2, 4> contents = cell.contents(m_wrapsAround);
    for (const auto& corners : HALVES) {
        const Polygon half = halfOf(cell, contents, corners);
        if (!m_wrapsAround || m_seam == Seam::CONTINUE) {
            addFan(half, cell.nodes[0].face, pieces);
            continue;
        }
        const auto [least, most] = std::minmax_element(
            half.begin(), half.end(), [](const Vertex& a, const Vertex& b) { return a.content[0] < b.content[0]; });
        const auto first = static_cast<int>(std::floor(least->content[0]));
        const auto end = std::max(first + 1, static_cast<int>(std::ceil(most->content[0])));
        for (int start = first; start < end; ++start) {
            Polygon strip = cutBy(half, [start](const Vertex& vertex) { return vertex.content[0] - start; });
            strip = cutBy(strip, [start](const Vertex& vertex) { return start + 1 - vertex.content[0]; });
            for (Vertex& vertex : strip) {
                vertex.content[0] = std::clamp(vertex.content[0] - start, 0.0, 1.0);
            }
            addFan(strip, cell.nodes[0].face, pieces);
        }
    }
}

void CellCutter::cutAtFaces(const WarpCell& cell, std::vector<WarpPiece>& pieces) const {
    for (const auto& corners : HALVES) {
        const Polygon half = halfOf(cell, cell.contents(false), corners);
        for (std::uint8_t face = 0; face < m_input.faces(); ++face) {
            const ViewFrame view = m_input.frustumOf(static_cast<CubeFace>(face))->view;
            Polygon part = half;
            for (const P3& side : {view.right, -view.right, view.up, -view.up}) {
                const P3 inward = view.forward - side;
                part = cutBy(part, [&inward](const Vertex& vertex) { return dot(vertex.direction, inward); });
            }
            for (Vertex& vertex : part) {
                vertex.content = m_input.placeOnFace(vertex.direction, face).value_or(P2());
            }
            addFan(part, face, pieces);
        }
    }
}

void CellCutter::subdivide(const WarpCell& cell, int times, Cut& cut) const {
    const P2 lower = cell.picture[0];
    const P2 half = 0.5 * (cell.picture[2] - lower);
    for (int part = 0; part < 4; ++part) {
        const int row = part / 2;
        const P2 start{lower[0] + (part % 2) * half[0], lower[1] + row * half[1]};
        WarpCell quarter;
        quarter.picture = {start, P2{start[0] + half[0], start[1]}, start + half, P2{start[0], start[1] + half[1]}};
        for (std::size_t i = 0; i < quarter.nodes.size(); ++i) {
            quarter.nodes[i] = m_sampler.nodeAt(quarter.picture[i], quarter.directions[i]);
        }
        const WarpCell::Kind kind = kindOf(quarter);
        const bool isOverPole = kind == WarpCell::Kind::OVER_POLE;
        const WarpError error = m_meter.errorIn(quarter, m_allowed);
        if (times > 1 && (isOverPole || error.largest > m_error)) {
            subdivide(quarter, times - 1, cut);
        } else if (isOverPole) {
            ++cut.leftOut;
        } else {
            cut.error.add(error);
            cutAsItIs(quarter, kind, cut);
        }
    }
}

}  // namespace Veltrani::DisplayExport
