#include "DisplayExport/CellCutter.h"

#include "DisplayExport/CellPolygon.h"
#include "DisplayExport/ContentInput.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Veltrani::DisplayExport {

namespace {

using P2 = Point<double, 2>;

/// How often a cell that holds a pole is divided before the part with the pole is left out.
constexpr int SUBDIVISIONS = 6;

}  // namespace

CellCutter::CellCutter(const WarpSampler& sampler, const ContentInput& input, const WarpErrorMeter& meter, Seam seam,
                       double error)
    : m_sampler(sampler),
      m_input(input),
      m_meter(meter),
      m_seam(seam),
      m_error(error),
      m_poles(input.poles()),
      m_wrapsAround(input.wrapsAround()) {}

bool CellCutter::mustCut(const WarpCell& cell, WarpCell::Kind kind) const {
    return kind != WarpCell::Kind::UNUSABLE && (kind != WarpCell::Kind::WHOLE || cell.isNear(m_poles));
}

CellCutter::Cut CellCutter::cut(const WarpCell& cell, WarpCell::Kind kind) const {
    Cut cut;
    const bool isAtPole = kind == WarpCell::Kind::OVER_POLE || cell.isNear(m_poles);
    const double error = isAtPole && kind != WarpCell::Kind::OVER_POLE ? m_meter.largestIn(cell) : 0.0;
    if (kind == WarpCell::Kind::OVER_POLE || error > m_error) {
        subdivide(cell, SUBDIVISIONS, cut);
    } else {
        cut.error = error;
        cutAsItIs(cell, kind, cut);
    }
    return cut;
}

void CellCutter::cutAsItIs(const WarpCell& cell, WarpCell::Kind kind, Cut& cut) const {
    if (kind == WarpCell::Kind::OVER_FACES) {
        addPiecesAtFaces(cell, m_input, cut.pieces);
    } else if (kind != WarpCell::Kind::UNUSABLE) {
        cutAtSeam(cell, cut.pieces);
    }
}

void CellCutter::cutAtSeam(const WarpCell& cell, std::vector<WarpPiece>& pieces) const {
    const std::array<P2, 4> contents = cell.contents(m_wrapsAround);
    for (const auto& corners : HALVES_OF_CELL) {
        const CellPolygon half = polygonOf(cell, contents, corners);
        if (!m_wrapsAround || m_seam == Seam::CONTINUE) {
            addFan(half, cell.nodes[0].face, pieces);
            continue;
        }
        const auto [least, most] =
            std::minmax_element(half.begin(), half.end(),
                                [](const CellVertex& a, const CellVertex& b) { return a.content[0] < b.content[0]; });
        const auto first = static_cast<int>(std::floor(least->content[0]));
        const auto end = std::max(first + 1, static_cast<int>(std::ceil(most->content[0])));
        for (int start = first; start < end; ++start) {
            CellPolygon strip = cutBy(half, [start](const CellVertex& vertex) { return vertex.content[0] - start; });
            strip = cutBy(strip, [start](const CellVertex& vertex) { return start + 1 - vertex.content[0]; });
            for (CellVertex& vertex : strip) {
                vertex.content[0] = std::clamp(vertex.content[0] - start, 0.0, 1.0);
            }
            addFan(strip, cell.nodes[0].face, pieces);
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
        const double error = isOverPole ? 0.0 : m_meter.largestIn(quarter);
        if (times > 1 && (isOverPole || error > m_error)) {
            subdivide(quarter, times - 1, cut);
        } else if (isOverPole) {
            ++cut.leftOut;
        } else {
            cut.error = std::max(cut.error, error);
            cutAsItIs(quarter, kind, cut);
        }
    }
}

}  // namespace Veltrani::DisplayExport
