#include "DisplayExport/PoleFan.h"

#include "DisplayExport/CellPolygon.h"
#include "DisplayExport/ChannelSight.h"
#include "DisplayExport/ContentInput.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Veltrani::DisplayExport {

namespace {

using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

/// Of sectors at first, per side of the rectangle.
constexpr int SECTORS_PER_SIDE = 8;
/// From one ring to the next.
constexpr double RING = 0.5;
/// Pixels of the channel, across what is left out in the middle.
constexpr double PIXELS_LEFT_OUT = 0.125;
/// Of a part of a sector: by then it is as small as a pixel, or its error has another cause than the pole.
constexpr int MOST_TIMES = 12;

/// A place in a triangle, by the parts of its second and third corner.
struct InTriangle {
    double ofB, ofC;
    enum class On { AROUND, OUTWARDS, INSIDE } on;
};
using On = InTriangle::On;

/// In both triangles of a part, whose corners are: inner and outer at the start, outer and inner at the end.
constexpr std::array<std::array<InTriangle, 6>, 2> COMPARED{{{{{0.5, 0, On::OUTWARDS},
                                                               {0.5, 0.5, On::AROUND},
                                                               {0.25, 0.75, On::AROUND},
                                                               {0, 0.5, On::INSIDE},
                                                               {1.0 / 3, 1.0 / 3, On::INSIDE},
                                                               {0.6, 0.2, On::INSIDE}}},
                                                             {{{0.5, 0.5, On::OUTWARDS},
                                                               {0, 0.5, On::AROUND},
                                                               {0, 0.25, On::AROUND},
                                                               {0.25, 0, On::INSIDE},
                                                               {1.0 / 3, 1.0 / 3, On::INSIDE},
                                                               {0.2, 0.6, On::INSIDE}}}}};

P2 onTheWay(const P2& pole, const P2& end, double part) {
    return pole + part * (end - pole);
}

}  // namespace

PoleFan::PoleFan(const ChannelSight& sight, const ContentInput& input, const WarpSampler& sampler,
                 const CellCutter& cutter)
    : m_sight(sight), m_input(input), m_sampler(sampler), m_cutter(cutter) {}

std::optional<CellCutter::Cut> PoleFan::fill(const std::array<P2, 4>& corners, const P3& pole) const {
    const auto middle = placeOf(pole, corners);
    if (!middle) {
        return std::nullopt;
    }
    CellCutter::Cut cut;
    cut.isDivided = true;
    const P2 size = corners[2] - corners[0];
    const Point<int, 2> pixels = m_sight.channel().pictureSize();
    const double inner =
        std::min({PIXELS_LEFT_OUT / (size[0] * pixels[0]), PIXELS_LEFT_OUT / (size[1] * pixels[1]), RING});
    std::size_t room = CellCutter::MOST_PARTS;
    std::vector<Part> parts = partsAround(corners, inner);
    while (!parts.empty()) {
        std::vector<WarpCell> cells;
        cells.reserve(parts.size());
        for (const Part& part : parts) {
            cells.push_back(cellOf(part, *middle));
        }
        if (!sampleCorners(cells)) {
            return std::nullopt;
        }
        const std::vector<Measured> measured = measure(cells);
        std::vector<Part> next;
        for (std::size_t i = 0; i < parts.size(); ++i) {
            const bool isDivided =
                measured[i].error.largest > m_cutter.error() && parts[i].times < MOST_TIMES && next.size() + 2 <= room;
            if (isDivided) {
                divide(parts[i], measured[i], next);
            } else {
                cut.error.add(measured[i].error);
                m_cutter.cutAtSeam(cells[i], cut.pieces);
            }
        }
        room -= next.size();
        parts = std::move(next);
    }
    cut.leftOut = 1;
    cut.areaLeftOut = inner * inner * size[0] * size[1];
    return cut;
}

std::optional<P2> PoleFan::placeOf(const P3& pole, const std::array<P2, 4>& corners) const {
    const ViewFrame at = ViewFrame::looking(P3(), pole, 0);
    const P2 size = corners[2] - corners[0];
    P2 place = 0.5 * (corners[0] + corners[2]);
    constexpr int MOST_STEPS = 40;
    constexpr double STEP = 1e-5;
    constexpr double FOUND = 1e-12;
    for (int i = 0; i < MOST_STEPS; ++i) {
        const std::array<P2, 3> places{place, place + P2{STEP * size[0], 0.0}, place + P2{0.0, STEP * size[1]}};
        std::array<WarpNode, 3> nodes;
        std::array<P3, 3> directions;
        m_sampler.sampleAt(places, size, nodes, directions);
        if (!std::all_of(nodes.begin(), nodes.end(), [](const WarpNode& node) { return node.isUsable(); }) ||
            !(dot(directions[0], pole) > 0)) {
            return std::nullopt;
        }
        std::array<P2, 3> aside;
        for (std::size_t k = 0; k < aside.size(); ++k) {
            aside[k] = {dot(directions[k], at.right), dot(directions[k], at.up)};
        }
        if (norm(aside[0]) < FOUND) {
            return place;
        }
        const P2 across = (1 / STEP) * (aside[1] - aside[0]);
        const P2 upwards = (1 / STEP) * (aside[2] - aside[0]);
        const double determinant = across[0] * upwards[1] - across[1] * upwards[0];
        if (!(std::abs(determinant) > 0)) {
            return std::nullopt;
        }
        place = {place[0] - size[0] * (aside[0][0] * upwards[1] - aside[0][1] * upwards[0]) / determinant,
                 place[1] - size[1] * (across[0] * aside[0][1] - across[1] * aside[0][0]) / determinant};
        if (!(place[0] >= corners[0][0] && place[0] <= corners[2][0] && place[1] >= corners[0][1] &&
              place[1] <= corners[2][1])) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

std::vector<PoleFan::Part> PoleFan::partsAround(const std::array<P2, 4>& corners, double inner) {
    std::vector<Part> parts;
    for (std::size_t side = 0; side < corners.size(); ++side) {
        const P2& start = corners[side];
        const P2& end = corners[(side + 1) % corners.size()];
        const auto along = [&](int i) { return start + (static_cast<double>(i) / SECTORS_PER_SIDE) * (end - start); };
        for (int i = 0; i < SECTORS_PER_SIDE; ++i) {
            double outer = 1;
            while (outer > inner) {
                const double next = std::max(RING * outer, inner);
                parts.push_back({along(i), along(i + 1), outer, next, 0});
                outer = next;
            }
        }
    }
    return parts;
}

WarpCell PoleFan::cellOf(const Part& part, const P2& pole) {
    WarpCell cell;
    cell.picture = {onTheWay(pole, part.from, part.inner), onTheWay(pole, part.from, part.outer),
                    onTheWay(pole, part.to, part.outer), onTheWay(pole, part.to, part.inner)};
    return cell;
}

bool PoleFan::sampleCorners(std::vector<WarpCell>& cells) const {
    for (WarpCell& cell : cells) {
        m_sampler.sampleAt(cell.picture, cell.picture[2] - cell.picture[0], cell.nodes, cell.directions);
        if (!std::all_of(cell.nodes.begin(), cell.nodes.end(),
                         [](const WarpNode& node) { return node.state == WarpNode::State::MAPPED; })) {
            return false;
        }
    }
    return true;
}

std::vector<PoleFan::Measured> PoleFan::measure(const std::vector<WarpCell>& cells) const {
    std::vector<P2> picture;
    std::vector<P2> shown;
    for (const WarpCell& cell : cells) {
        const auto contents = cell.contents(m_input.wrapsAround());
        for (std::size_t half = 0; half < HALVES_OF_CELL.size(); ++half) {
            const auto& [a, b, c] = HALVES_OF_CELL[half];
            for (const InTriangle& in : COMPARED[half]) {
                const auto interpolated = [&in](const P2& ofA, const P2& ofB, const P2& ofC) {
                    return ofA + in.ofB * (ofB - ofA) + in.ofC * (ofC - ofA);
                };
                picture.push_back(interpolated(cell.picture[a], cell.picture[b], cell.picture[c]));
                shown.push_back(interpolated(contents[a], contents[b], contents[c]));
            }
        }
    }
    std::vector<SeenPlace> seen(picture.size());
    m_sight.see(picture, seen);
    std::vector<Measured> measured(cells.size());
    constexpr std::size_t PER_HALF = COMPARED[0].size();
    for (std::size_t i = 0; i < picture.size(); ++i) {
        const auto belongs = m_input.place(picture[i], seen[i]);
        if (belongs) {
            Measured& of = measured[i / (2 * PER_HALF)];
            const double error = m_input.distance(belongs->at, shown[i]);
            of.error.addPlace(error, m_cutter.allowed());
            const On on = COMPARED[i / PER_HALF % 2][i % PER_HALF].on;
            of.around = std::max(of.around, on == On::AROUND ? error : 0);
            of.outwards = std::max(of.outwards, on == On::OUTWARDS ? error : 0);
        }
    }
    return measured;
}

void PoleFan::divide(const Part& part, const Measured& measured, std::vector<Part>& parts) {
    const int times = part.times + 1;
    if (measured.around >= measured.outwards) {
        const P2 middle = 0.5 * (part.from + part.to);
        parts.push_back({part.from, middle, part.outer, part.inner, times});
        parts.push_back({middle, part.to, part.outer, part.inner, times});
    } else {
        const double middle = std::sqrt(part.outer * part.inner);
        parts.push_back({part.from, part.to, part.outer, middle, times});
        parts.push_back({part.from, part.to, middle, part.inner, times});
    }
}

}  // namespace Veltrani::DisplayExport
