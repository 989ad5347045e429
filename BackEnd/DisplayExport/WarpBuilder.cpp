#include "DisplayExport/WarpBuilder.h"

#include "DisplayExport/CellCutter.h"
#include "DisplayExport/ChannelSight.h"
#include "DisplayExport/ContentInput.h"
#include "DisplayExport/PoleBlock.h"
#include "DisplayExport/PoleFan.h"
#include "DisplayReport/basics/NumberText.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>

namespace Veltrani::DisplayExport {

namespace {

using Places = WarpRequest::Places;

/// Cells that are compared with what belongs there: of small grids all of them.
constexpr std::size_t MOST_COMPARED = 40'000;
/// The same at first of grids that may keep the error with fewer nodes: many do not.
constexpr std::size_t MOST_AT_FIRST = 10'000;
/// Cells of which no corner is lit are looked into where there are no more than so many: those of larger grids are
/// hardly larger than pixels.
constexpr std::size_t MOST_LOOKED_INTO = 200'000;
/// On a side of a grid whose nodes are searched for: a finer one is stated.
constexpr int MOST_SEARCHED = 512;
/// Of the error that is allowed: the places that are compared leave out a little of the largest.
constexpr double AIM = 0.85;

std::vector<double> cornersAlong(int count) {
    std::vector<double> places;
    for (int i = 0; i < count; ++i) {
        places.push_back(static_cast<double>(i) / (count - 1));
    }
    return places;
}

std::vector<double> middlesAlong(int count) {
    std::vector<double> places;
    for (int i = 0; i < count; ++i) {
        places.push_back((i + 0.5) / count);
    }
    return places;
}

void requireRoom(const ChannelSight& sight, const Point<int, 2>& nodes) {
    if (static_cast<std::size_t>(nodes[0]) > ChannelWarp::MOST_NODES / static_cast<std::size_t>(nodes[1])) {
        sight.channel().refuse("a grid of " + std::to_string(nodes[0]) + " x " + std::to_string(nodes[1]) +
                               " is larger than " + std::to_string(ChannelWarp::MOST_NODES) +
                               " places: state fewer nodes");
    }
}

void requirePossible(const ChannelSight& sight, const WarpRequest& request, const Point<int, 2>& pixels) {
    if (request.places == Places::PIXELS) {
        requireRoom(sight, pixels);
    }
    if (request.places == Places::NODES) {
        if (std::min(request.nodes[0], request.nodes[1]) < 2) {
            sight.channel().refuse("a grid of nodes has two columns and two rows at least, and not " +
                                   std::to_string(request.nodes[0]) + " x " + std::to_string(request.nodes[1]));
        }
        requireRoom(sight, request.nodes);
    }
    if (!(request.error > 0) || !std::isfinite(request.error)) {
        sight.channel().refuse("an error of " + DisplayReport::exactText(request.error) +
                               " pixels cannot be kept: state one above zero");
    }
}

/// Content next to other content, by whole widths of the input.
double beside(double content, double other) {
    return content - std::round(content - other);
}

}  // namespace

WarpBuilder::WarpBuilder(const ChannelSight& sight, const ContentInput& input, const WarpRequest& request)
    : m_sight(sight),
      m_input(input),
      m_request(request),
      m_pixels(sight.channel().pictureSize()),
      m_sampler(sight, input),
      m_meter(sight, input) {
    requirePossible(sight, request, m_pixels);
}

ChannelWarp WarpBuilder::build() const {
    if (m_request.places == Places::PIXELS) {
        return builtFrom(gridOfPixels(), {});
    }
    if (m_request.places == Places::NODES) {
        WarpGrid grid = gridOfNodes(m_request.nodes, m_request.progress);
        MeasuredError measured = m_meter.measure(grid, m_request.error, MOST_COMPARED);
        measured.error.largest = m_meter.boundOf(grid, measured);
        return builtFrom(std::move(grid), measured.error);
    }
    Trial found = search();
    while (m_request.forGrids && found.cells != mostCells() && losesCells(found)) {
        Point<int, 2> cells;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            cells[i] = std::min(2 * found.cells[i], mostCells()[i]);
        }
        found = boundedTrialOf(cells);
    }
    return builtFrom(std::move(found.grid), found.measured.error);
}

double WarpBuilder::errorToKeep(const WarpError& error) const {
    return std::max(AIM * m_request.error, error.largest);
}

bool WarpBuilder::losesCells(Trial& trial) const {
    unwrap(trial.grid);
    const double allowed = errorToKeep(trial.measured.error);
    const CellCutter cutter(m_sampler, m_input, m_meter, m_request.seam, allowed, m_request.error);
    std::vector<WarpCell> turning;
    for (std::size_t number = 0; number < trial.grid.cells(); ++number) {
        const WarpCell cell = WarpCell::of(trial.grid, number);
        const WarpCell::Kind kind = cutter.kindOf(cell);
        if (kind != WarpCell::Kind::WHOLE && kind != WarpCell::Kind::UNUSABLE) {
            return true;
        }
        if (cutter.mustCut(cell, kind)) {
            turning.push_back(cell);
        }
    }
    const std::vector<WarpError> errors = m_meter.errorsIn(turning, m_request.error);
    return std::any_of(errors.begin(), errors.end(),
                       [allowed](const WarpError& error) { return error.largest > allowed; });
}

ChannelWarp WarpBuilder::builtFrom(WarpGrid grid, const WarpError& error) const {
    ChannelWarp warp;
    warp.m_error = error;
    warp.m_error.largestOfGrid = error.largest;
    warp.m_pixels = m_pixels;
    warp.m_reachesCorners = m_request.places != Places::PIXELS;
    warp.m_columns = grid.columns();
    warp.m_rows = grid.rows();
    if (warp.m_reachesCorners) {
        unwrap(grid);
        cutCells(grid, warp);
    }
    warp.m_nodes = std::move(grid.nodes);
    warp.m_points = std::move(grid.points);
    return warp;
}

WarpGrid WarpBuilder::gridOfPixels() const {
    WarpGrid grid = m_sampler.sample(middlesAlong(m_pixels[0]), middlesAlong(m_pixels[1]),
                                     {.points = m_request.withPoints}, m_request.progress);
    m_sampler.continueOver(grid, WarpSampler::DarkCells::LEFT_OUT);
    return grid;
}

WarpGrid WarpBuilder::gridOfNodes(const Point<int, 2>& nodes, const DisplayReport::Progress& progress) const {
    const bool needsDirections = m_input.faces() > 1 || !m_input.poles().empty();
    WarpGrid grid = m_sampler.sample(cornersAlong(nodes[0]), cornersAlong(nodes[1]),
                                     {m_request.withPoints, needsDirections}, progress);
    m_sampler.continueOver(grid, grid.cells() <= MOST_LOOKED_INTO ? WarpSampler::DarkCells::LOOKED_INTO
                                                                  : WarpSampler::DarkCells::LEFT_OUT);
    return grid;
}

WarpBuilder::Trial WarpBuilder::trialOf(const Point<int, 2>& cells, double enough) const {
    Trial trial{cells, gridOfNodes(cells + Point<int, 2>{1, 1}, {}), {}};
    const bool isToBeKept = enough < std::numeric_limits<double>::max();
    if (isToBeKept && trial.grid.cells() > MOST_AT_FIRST) {
        trial.measured = m_meter.measure(trial.grid, m_request.error, MOST_AT_FIRST, enough);
        if (!isKept(trial.measured)) {
            return trial;
        }
    }
    trial.measured = m_meter.measure(trial.grid, m_request.error, MOST_COMPARED, enough);
    return trial;
}

bool WarpBuilder::isKept(const MeasuredError& measured) const {
    return measured.tooCoarse == 0 && measured.searched <= AIM * m_request.error;
}

WarpBuilder::Trial WarpBuilder::boundedTrialOf(const Point<int, 2>& cells) const {
    Trial trial = trialOf(cells);
    trial.measured.error.largest = m_meter.boundOf(trial.grid, trial.measured);
    return trial;
}

WarpBuilder::Trial WarpBuilder::search() const {
    Trial best = searchUpwards();
    const bool keepsIt = isKept(best.measured);
    if (keepsIt) {
        searchDownwards(best);
    }
    best.measured.error.largest = m_meter.boundOf(best.grid, best.measured);
    while (keepsIt && best.measured.error.largest > m_request.error && best.cells != mostCells()) {
        constexpr double FINER = 1.05;
        Point<int, 2> cells;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            cells[i] = std::min(static_cast<int>(std::ceil(FINER * best.cells[i])), mostCells()[i]);
        }
        best = boundedTrialOf(cells);
    }
    if (m_request.progress) {
        const auto rows = static_cast<std::size_t>(best.cells[1]) + 1;
        m_request.progress(rows, rows);
    }
    return best;
}

Point<int, 2> WarpBuilder::mostCells() const {
    return {std::min(m_pixels[0], MOST_SEARCHED), std::min(m_pixels[1], MOST_SEARCHED)};
}

WarpBuilder::Trial WarpBuilder::searchUpwards() const {
    const Point<int, 2> most = mostCells();
    constexpr Point<int, 2> START{16, 10};
    Trial trial = trialOf({std::min(START[0], most[0]), std::min(START[1], most[1])});
    // The error of linear interpolation falls with the square of the cells along a side; half of it to each side takes
    // the fewest cells.
    Point<double, 2> wanted;
    for (std::size_t i = 0; i < 2; ++i) {
        wanted[i] = trial.cells[i] * std::sqrt(2 * trial.measured.along[i] / (AIM * m_request.error));
    }
    while (true) {
        Point<int, 2> cells;
        for (std::size_t i = 0; i < 2; ++i) {
            cells[i] = std::clamp(static_cast<int>(std::ceil(std::min<double>(wanted[i], most[i]))), 1, most[i]);
        }
        const double before = trial.measured.searched;
        const Point<int, 2> cellsBefore = trial.cells;
        trial = trialOf(cells);
        if (isKept(trial.measured) || cells == most) {
            return trial;
        }
        // Cells at a pole are to lie in its zone, whatever the error of the others.
        constexpr double FINER = 1.5;
        const double factor = std::max(std::sqrt(trial.measured.searched / (AIM * m_request.error)),
                                       trial.measured.tooCoarse > 0 ? FINER : 0);
        // Across a step of the surface, more nodes do not help.
        constexpr double HELPS = 0.8;
        const bool isMuchFiner = cells[0] >= 2 * cellsBefore[0] && cells[1] >= 2 * cellsBefore[1];
        if (isMuchFiner && trial.measured.tooCoarse == 0 && trial.measured.searched > HELPS * before) {
            return trial;
        }
        constexpr double LEAST_STEP = 1.05;
        constexpr double LONGEST_STEP = 2.0;
        for (std::size_t i = 0; i < 2; ++i) {
            wanted[i] =
                std::max(wanted[i], static_cast<double>(cells[i])) * std::clamp(factor, LEAST_STEP, LONGEST_STEP);
        }
    }
}

void WarpBuilder::searchDownwards(Trial& best) const {
    const auto countOf = [](const Point<int, 2>& cells) { return (cells[0] + 1LL) * (cells[1] + 1LL); };
    const auto improve = [&](const Point<int, 2>& cells) {
        if (std::min(cells[0], cells[1]) < 1 || countOf(cells) >= countOf(best.cells)) {
            return false;
        }
        Trial trial = trialOf(cells, AIM * m_request.error);
        if (isKept(trial.measured)) {
            best = std::move(trial);
            return true;
        }
        return false;
    };
    for (int part = 8; part > 0;) {
        const Point<int, 2> cells = best.cells;
        // One cell at last.
        const int across = part > 1 ? std::max(1, cells[0] / (4 * part)) : 1;
        const int upwards = part > 1 ? std::max(1, cells[1] / (4 * part)) : 1;
        const bool isBetter = improve({cells[0] - across, cells[1]}) || improve({cells[0], cells[1] - upwards}) ||
                              improve({cells[0] - 2 * across, cells[1] + upwards}) ||
                              improve({cells[0] + across, cells[1] - upwards});
        part = isBetter ? part : part / 2;
    }
}

void WarpBuilder::unwrap(WarpGrid& grid) const {
    if (!m_input.wrapsAround() || m_request.seam == Seam::CUT) {
        return;
    }
    std::vector<bool> isDone(grid.nodes.size());
    // Half as much memory as with larger numbers: it may come to hold every node.
    static_assert(ChannelWarp::MOST_NODES <= std::numeric_limits<std::uint32_t>::max());
    std::vector<std::uint32_t> group;
    for (std::size_t start = 0; start < grid.nodes.size(); ++start) {
        if (isDone[start] || !grid.nodes[start].isUsable()) {
            continue;
        }
        group.assign(1, static_cast<std::uint32_t>(start));
        isDone[start] = true;
        double sum = 0;
        for (std::size_t i = 0; i < group.size(); ++i) {
            const std::size_t node = group[i];
            sum += grid.nodes[node].content[0];
            const auto reach = [&](bool exists, std::size_t next) {
                if (exists && !isDone[next] && grid.nodes[next].isUsable()) {
                    isDone[next] = true;
                    grid.nodes[next].content[0] = beside(grid.nodes[next].content[0], grid.nodes[node].content[0]);
                    group.push_back(static_cast<std::uint32_t>(next));
                }
            };
            reach(node % grid.columns() > 0, node - 1);
            reach(node % grid.columns() + 1 < grid.columns(), node + 1);
            reach(node >= grid.columns(), node - grid.columns());
            reach(node + grid.columns() < grid.nodes.size(), node + grid.columns());
        }
        // Most of it between 0 and 1.
        const double widths = std::floor(sum / static_cast<double>(group.size()));
        std::for_each(group.begin(), group.end(), [&](std::size_t node) { grid.nodes[node].content[0] -= widths; });
    }
}

std::vector<bool> WarpBuilder::fillAroundPoles(const WarpGrid& grid, const CellCutter& cutter,
                                               ChannelWarp& warp) const {
    std::vector<bool> areFilled(grid.cells());
    const PoleFan fan(m_sight, m_input, m_sampler, cutter);
    for (const Point<double, 3>& pole : m_meter.zone().poles()) {
        const auto block = PoleBlock::around(pole, grid, cutter, m_meter);
        if (!block) {
            continue;
        }
        const std::vector<std::size_t> numbers = block->cells();
        const bool isFree =
            std::none_of(numbers.begin(), numbers.end(), [&](std::size_t number) { return areFilled[number]; });
        auto cut = isFree ? fan.fill(block->corners(), pole) : std::nullopt;
        if (!cut) {
            continue;
        }
        for (const std::size_t number : numbers) {
            areFilled[number] = true;
            const WarpCell cell = WarpCell::of(grid, number);
            const WarpCell::Kind kind = cutter.kindOf(cell);
            const double ofGrid = m_meter.errorsIn({&cell, 1}, cutter.allowed()).front().largest;
            const bool isBroken = kind != WarpCell::Kind::WHOLE || ofGrid > cutter.error();
            cut->error.largestOfGrid = isBroken ? 0 : ofGrid;
            addCut(number, kind, isBroken, *cut, warp);
            // All of it belongs to the first cell.
            cut = CellCutter::Cut{.pieces = {}, .isDivided = true, .error = {}};
        }
    }
    return areFilled;
}

void WarpBuilder::addCut(std::size_t number, WarpCell::Kind kind, bool isBroken, CellCutter::Cut& cut,
                         ChannelWarp& warp) {
    warp.m_leftOutAtPoles += cut.leftOut;
    warp.m_areaLeftOutAtPoles += cut.areaLeftOut;
    warp.m_error.add(cut.error);
    warp.m_error.largestOfGrid = std::max(warp.m_error.largestOfGrid, cut.error.largestOfGrid);
    const bool isAtSeam = kind == WarpCell::Kind::OVER_SEAM || kind == WarpCell::Kind::OVER_FACES;
    warp.m_brokenAtSeams += isAtSeam ? 1 : 0;
    if (kind != WarpCell::Kind::WHOLE || cut.isDivided) {
        warp.m_cutCells.push_back({number, isBroken, std::move(cut.pieces)});
    }
}

void WarpBuilder::cutCells(const WarpGrid& grid, ChannelWarp& warp) const {
    const double allowed = errorToKeep(warp.m_error);
    const CellCutter cutter(m_sampler, m_input, m_meter, m_request.seam, allowed, m_request.error);
    const std::vector<bool> areFilled = fillAroundPoles(grid, cutter, warp);
    std::vector<std::size_t> numbers;
    std::vector<WarpCell> cells;
    for (std::size_t number = 0; number < grid.cells(); ++number) {
        const WarpCell cell = WarpCell::of(grid, number);
        if (!areFilled[number] && cutter.mustCut(cell, cutter.kindOf(cell))) {
            numbers.push_back(number);
            cells.push_back(cell);
        }
    }
    std::vector<CellCutter::Cut> cuts = cutter.cut(cells);
    for (std::size_t i = 0; i < cuts.size(); ++i) {
        const WarpCell::Kind kind = cutter.kindOf(cells[i]);
        addCut(numbers[i], kind, kind != WarpCell::Kind::WHOLE || cuts[i].isDivided, cuts[i], warp);
    }
    std::sort(warp.m_cutCells.begin(), warp.m_cutCells.end(),
              [](const auto& a, const auto& b) { return a.cell < b.cell; });
}

}  // namespace Veltrani::DisplayExport
