#include "DisplayExport/CellCutter.h"

#include "DisplayExport/CellPolygon.h"
#include "DisplayExport/ContentInput.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <limits>

namespace Veltrani::DisplayExport {

namespace {

using P2 = Point<double, 2>;

constexpr double WITHOUT_LIMIT = std::numeric_limits<double>::max();

P2 sizeOf(const WarpCell& cell) {
    return cell.picture[2] - cell.picture[0];
}

/// The places of the four quarters of a cell: nine, row by row from the bottom left.
std::array<P2, 9> latticeOf(const WarpCell& cell) {
    std::array<P2, 9> lattice;
    for (std::size_t i = 0; i < lattice.size(); ++i) {
        const std::size_t column = i % 3;
        const std::size_t row = i / 3;
        lattice[i] = cell.at({static_cast<double>(column) / 2, static_cast<double>(row) / 2});
    }
    return lattice;
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
      m_wrapsAround(input.wrapsAround()) {}

bool CellCutter::mustCut(const WarpCell& cell, WarpCell::Kind kind) const {
    return kind != WarpCell::Kind::UNUSABLE && (kind != WarpCell::Kind::WHOLE || m_meter.zone().turnsIn(cell));
}

std::vector<CellCutter::Cut> CellCutter::cut(std::span<const WarpCell> cells) const {
    std::vector<Cut> cuts(cells.size());
    std::vector<Part> parts;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const WarpCell::Kind kind = kindOf(cells[i]);
        if (kind == WarpCell::Kind::OVER_POLE || m_meter.zone().turnsIn(cells[i])) {
            parts.push_back({i, cells[i], WITHOUT_LIMIT});
        } else {
            cutAsItIs(cells[i], kind, cuts[i]);
        }
    }
    std::size_t room = MOST_PARTS;
    for (bool areWhole = true; !parts.empty(); areWhole = false) {
        std::vector<WarpCell> partCells;
        std::transform(parts.begin(), parts.end(), std::back_inserter(partCells),
                       [](const Part& part) { return part.cell; });
        const std::vector<WarpError> errors = m_meter.errorsIn(partCells, m_allowed);
        const std::vector<bool> divided = areDivided(parts, errors, room);
        for (std::size_t i = 0; i < parts.size(); ++i) {
            Cut& cut = cuts[parts[i].number];
            cut.error.largestOfGrid = areWhole && !divided[i] ? errors[i].largest : cut.error.largestOfGrid;
            cut.isDivided = cut.isDivided || divided[i];
            if (!divided[i]) {
                settle(parts[i], errors[i], cut);
            }
        }
        parts = quartersOf(parts, errors, divided);
        room -= parts.size();
    }
    return cuts;
}

bool CellCutter::needsDivision(const Part& part, const WarpError& error) const {
    const P2 size = sizeOf(part.cell);
    const P2& least = m_meter.zone().least();
    if (size[0] <= least[0] && size[1] <= least[1]) {
        return false;
    }
    if (kindOf(part.cell) == WarpCell::Kind::OVER_POLE) {
        return true;
    }
    // Of an error that has another cause, such as a step of the surface, division takes little.
    constexpr double HELPS = 0.7;
    return error.largest > m_error && (m_meter.zone().turnsIn(part.cell) || error.largest < HELPS * part.errorBefore);
}

std::vector<bool> CellCutter::areDivided(std::span<const Part> parts, std::span<const WarpError> errors,
                                         std::size_t room) const {
    std::vector<std::size_t> wanted;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (needsDivision(parts[i], errors[i])) {
            wanted.push_back(i);
        }
    }
    const std::size_t most = room / 4;
    if (wanted.size() > most) {
        // Of what holds a pole nothing is known: it comes first.
        const auto rank = [&errors](std::size_t i) { return errors[i].places > 0 ? errors[i].largest : WITHOUT_LIMIT; };
        std::nth_element(wanted.begin(), wanted.begin() + static_cast<std::ptrdiff_t>(most), wanted.end(),
                         [&rank](std::size_t a, std::size_t b) { return rank(a) > rank(b); });
        wanted.resize(most);
    }
    std::vector<bool> divided(parts.size());
    for (const std::size_t i : wanted) {
        divided[i] = true;
    }
    return divided;
}

std::vector<CellCutter::Part> CellCutter::quartersOf(std::span<const Part> parts, std::span<const WarpError> errors,
                                                     const std::vector<bool>& areDivided) const {
    std::vector<Part> quarters;
    std::array<WarpNode, 9> nodes;
    std::array<Point<double, 3>, 9> directions;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (!areDivided[i]) {
            continue;
        }
        const std::array<P2, 9> lattice = latticeOf(parts[i].cell);
        m_sampler.sampleAt(lattice, 0.5 * sizeOf(parts[i].cell), nodes, directions);
        // Corners stay as they were continued from light that may lie further off than the next nodes do now.
        constexpr std::array<std::size_t, 4> OWN{0, 2, 8, 6};
        for (std::size_t corner = 0; corner < OWN.size(); ++corner) {
            nodes[OWN[corner]] = parts[i].cell.nodes[corner];
            directions[OWN[corner]] = parts[i].cell.directions[corner];
        }
        for (const std::size_t start : {0U, 1U, 3U, 4U}) {
            Part quarter{parts[i].number, {}, errors[i].places > 0 ? errors[i].largest : WITHOUT_LIMIT};
            const std::array<std::size_t, 4> corners{start, start + 1, start + 4, start + 3};
            for (std::size_t corner = 0; corner < corners.size(); ++corner) {
                quarter.cell.picture[corner] = lattice[corners[corner]];
                quarter.cell.nodes[corner] = nodes[corners[corner]];
                quarter.cell.directions[corner] = directions[corners[corner]];
            }
            quarters.push_back(quarter);
        }
    }
    return quarters;
}

void CellCutter::settle(const Part& part, const WarpError& error, Cut& cut) const {
    const WarpCell::Kind kind = kindOf(part.cell);
    const P2 size = sizeOf(part.cell);
    const P2& least = m_meter.zone().least();
    const bool isSmall = size[0] <= least[0] && size[1] <= least[1];
    const bool keepsError = error.largest <= std::max(m_error, m_allowed);
    if (kind == WarpCell::Kind::OVER_POLE || (isSmall && !keepsError && m_meter.zone().turnsIn(part.cell))) {
        const bool isLit = error.places + error.leftOut > 0;
        cut.leftOut += isLit ? 1 : 0;
        cut.areaLeftOut += isLit ? size[0] * size[1] : 0;
        return;
    }
    cut.error.add(error);
    cutAsItIs(part.cell, kind, cut);
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

}  // namespace Veltrani::DisplayExport
