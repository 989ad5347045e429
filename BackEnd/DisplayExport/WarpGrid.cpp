#include "DisplayExport/WarpGrid.h"

#include "DisplayExport/ChannelSight.h"
#include "DisplayExport/ContentInput.h"
#include "DisplayExport/PlaceFit.h"
#include "DisplayReport/basics/LargePages.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace Veltrani::DisplayExport {

namespace {

using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

/// Places that are seen at once: neighbours of a few rows, whose rays have more of a surface in common than as many of
/// one row. With all that is kept of them on the way they stay in the processor's cache.
constexpr std::size_t ROWS_AT_ONCE = 4;
constexpr std::size_t COLUMNS_AT_ONCE = 256;

/// Places inside a dark cell at which light is looked for, per side.
constexpr std::size_t INSIDE = 3;

P3 unit(const P3& direction) {
    const double length = norm(direction);
    return length > 0 ? direction * (1 / length) : P3();
}

WarpNode nodeOf(const std::optional<InputPlace>& place, WarpNode::State state) {
    return place ? WarpNode{place->at, place->face, state} : WarpNode{};
}

/// Places inside a cell, evenly.
void addInside(const WarpGrid& grid, std::size_t cell, std::vector<P2>& picture) {
    constexpr double STEPS = INSIDE + 1;
    for (std::size_t i = 0; i < INSIDE * INSIDE; ++i) {
        const std::size_t column = i % INSIDE + 1;
        const std::size_t row = i / INSIDE + 1;
        picture.push_back(
            grid.pictureIn(cell, {static_cast<double>(column) / STEPS, static_cast<double>(row) / STEPS}));
    }
}

/// Every pixel along the sides of a cell, without its corners. A corner of the screen that reaches into a cell from the
/// cells beside it crosses two of its sides, however far it reaches.
void addSides(const WarpGrid& grid, std::size_t cell, const Point<int, 2>& pixels, std::vector<P2>& picture) {
    const P2 size = grid.pictureIn(cell, {1, 1}) - grid.pictureIn(cell, {0, 0});
    for (const std::size_t axis : {std::size_t{0}, std::size_t{1}}) {
        const int steps = std::max(1, static_cast<int>(std::ceil(size[axis] * pixels[axis])));
        for (int step = 1; step < steps; ++step) {
            for (const double side : {0.0, 1.0}) {
                P2 part{side, side};
                part[axis] = static_cast<double>(step) / steps;
                picture.push_back(grid.pictureIn(cell, part));
            }
        }
    }
}

/// Whether a cell around this one has a lit corner.
bool isBesideLight(const WarpGrid& grid, std::size_t cell) {
    const std::size_t column = cell % grid.cellColumns();
    const std::size_t row = cell / grid.cellColumns();
    for (std::size_t y = row > 0 ? row - 1 : 0; y <= std::min(row + 2, grid.rows() - 1); ++y) {
        for (std::size_t x = column > 0 ? column - 1 : 0; x <= std::min(column + 2, grid.columns() - 1); ++x) {
            if (grid.nodes[y * grid.columns() + x].isUsable()) {
                return true;
            }
        }
    }
    return false;
}

}  // namespace

/// Columns and rows of a grid from the first to before the last.
struct WarpSampler::Part {
    std::size_t firstColumn, endColumn, firstRow, endRow;
};

/// Samples a grid part by part, in memory that is used again for each.
class WarpSampler::PartSampler {
public:
    PartSampler(const ChannelSight& sight, const ContentInput& input, WarpGrid& grid, const Kept& kept)
        : m_sight(sight), m_input(input), m_grid(grid), m_kept(kept) {}

    void sample(const Part& part) {
        m_picture.clear();
        for (std::size_t row = part.firstRow; row < part.endRow; ++row) {
            for (std::size_t column = part.firstColumn; column < part.endColumn; ++column) {
                m_picture.emplace_back(m_grid.across[column], m_grid.upwards[row]);
            }
        }
        m_seen.resize(m_picture.size());
        m_sight.see(m_picture, m_seen);
        std::size_t next = 0;
        for (std::size_t row = part.firstRow; row < part.endRow; ++row) {
            for (std::size_t column = part.firstColumn; column < part.endColumn; ++column, ++next) {
                keep(row * m_grid.columns() + column, m_picture[next], m_seen[next]);
            }
        }
    }

private:
    void keep(std::size_t node, const P2& picture, const SeenPlace& seen) {
        const std::optional<InputPlace> place = m_input.place(picture, seen);
        const bool isMapped = place.has_value();
        if (isMapped) {
            WarpNode& mapped = m_grid.nodes[node];
            mapped.content = place->at;
            mapped.face = place->face;
            mapped.state = WarpNode::State::MAPPED;
        }
        if (m_kept.points) {
            m_grid.points[node] = isMapped ? seen.point : P3();
        }
        if (m_kept.directions) {
            m_grid.directions[node] = isMapped ? unit(seen.direction) : P3();
        }
    }

    const ChannelSight& m_sight;
    const ContentInput& m_input;
    WarpGrid& m_grid;
    Kept m_kept;
    std::vector<P2> m_picture;
    std::vector<SeenPlace> m_seen;
};

WarpGrid WarpSampler::sample(std::vector<double> across, std::vector<double> upwards, const Kept& kept,
                             const DisplayReport::Progress& progress) const {
    WarpGrid grid{std::move(across), std::move(upwards), {}, {}, {}};
    const std::size_t count = grid.columns() * grid.rows();
    DisplayReport::reserveInLargePages(grid.nodes, count);
    DisplayReport::reserveInLargePages(grid.points, kept.points ? count : 0);
    DisplayReport::reserveInLargePages(grid.directions, kept.directions ? count : 0);
    PartSampler sampler(m_sight, m_input, grid, kept);
    for (std::size_t row = 0; row < grid.rows(); row += ROWS_AT_ONCE) {
        const std::size_t endRow = std::min(row + ROWS_AT_ONCE, grid.rows());
        if (progress) {
            progress(row, grid.rows());
        }
        grid.nodes.resize(endRow * grid.columns());
        grid.points.resize(kept.points ? endRow * grid.columns() : 0);
        grid.directions.resize(kept.directions ? endRow * grid.columns() : 0);
        for (std::size_t column = 0; column < grid.columns(); column += COLUMNS_AT_ONCE) {
            sampler.sample({column, std::min(column + COLUMNS_AT_ONCE, grid.columns()), row, endRow});
        }
    }
    if (progress) {
        progress(grid.rows(), grid.rows());
    }
    return grid;
}

std::vector<bool> WarpSampler::areLit(const WarpGrid& grid, const std::vector<std::size_t>& cells) const {
    const Point<int, 2> pixels = m_sight.channel().pictureSize();
    std::vector<P2> picture;
    std::vector<std::size_t> owners;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        addInside(grid, cells[i], picture);
        if (isBesideLight(grid, cells[i])) {
            addSides(grid, cells[i], pixels, picture);
        }
        owners.resize(picture.size(), i);
    }
    std::vector<SeenPlace> seen(picture.size());
    m_sight.see(picture, seen);
    std::vector<bool> lit(cells.size());
    for (std::size_t i = 0; i < picture.size(); ++i) {
        lit[owners[i]] = lit[owners[i]] || m_input.place(picture[i], seen[i]);
    }
    return lit;
}

std::vector<bool> WarpSampler::wantedNodes(const WarpGrid& grid, DarkCells dark) const {
    std::vector<bool> wanted(grid.nodes.size());
    const auto want = [&](std::size_t cell) {
        for (const std::size_t corner : grid.cornersOf(cell)) {
            wanted[corner] = wanted[corner] || !grid.nodes[corner].isUsable();
        }
    };
    std::vector<std::size_t> darkCells;
    for (std::size_t cell = 0; cell < grid.cells(); ++cell) {
        const auto corners = grid.cornersOf(cell);
        const auto usable = std::count_if(corners.begin(), corners.end(),
                                          [&grid](std::size_t corner) { return grid.nodes[corner].isUsable(); });
        if (usable == 0 && dark == DarkCells::LOOKED_INTO) {
            darkCells.push_back(cell);
        } else if (usable > 0 && usable < static_cast<std::ptrdiff_t>(corners.size())) {
            want(cell);
        }
    }
    const std::vector<bool> lit = areLit(grid, darkCells);
    for (std::size_t i = 0; i < darkCells.size(); ++i) {
        if (lit[i]) {
            want(darkCells[i]);
        }
    }
    return wanted;
}

void WarpSampler::continueOver(WarpGrid& grid, DarkCells dark) const {
    const bool isComplete =
        std::all_of(grid.nodes.begin(), grid.nodes.end(), [](const WarpNode& node) { return node.isUsable(); });
    if (isComplete || grid.columns() < 2 || grid.rows() < 2) {
        return;
    }
    const std::vector<bool> wanted = wantedNodes(grid, dark);
    for (std::size_t node = 0; node < wanted.size(); ++node) {
        if (wanted[node]) {
            continueTo(grid, node);
        }
    }
}

void WarpSampler::continueTo(WarpGrid& grid, std::size_t node) const {
    const P2 picture = grid.pictureOf(node);
    const auto stepOf = [](const std::vector<double>& places) {
        return (places.back() - places.front()) / static_cast<double>(places.size() - 1);
    };
    SeenPlace seen;
    m_sight.see({&picture, 1}, {&seen, 1});
    const WarpNode found = continuedAt(picture, {stepOf(grid.across), stepOf(grid.upwards)}, seen);
    grid.nodes[node] = found;
    if (!grid.directions.empty()) {
        grid.directions[node] = found.isUsable() ? unit(seen.direction) : P3();
    }
    if (!grid.points.empty()) {
        grid.points[node] = found.isUsable() ? seen.point : P3();
    }
}

WarpNode WarpSampler::continuedAt(const P2& picture, const P2& step, SeenPlace& seen) const {
    seen = seen.isSeen ? seen : m_sight.continued(picture);
    WarpNode found = nodeOf(m_input.placeBeyond(picture, seen), WarpNode::State::CONTINUED);
    if (!found.isUsable()) {
        seen = PlaceFit(m_sight, m_input).at(picture, step, found);
    }
    return found;
}

void WarpSampler::sampleAt(std::span<const P2> picture, const P2& step, std::span<WarpNode> nodes,
                           std::span<P3> directions) const {
    std::vector<SeenPlace> seen(picture.size());
    m_sight.see(picture, seen);
    for (std::size_t i = 0; i < picture.size(); ++i) {
        nodes[i] = nodeOf(m_input.place(picture[i], seen[i]), WarpNode::State::MAPPED);
        if (!nodes[i].isUsable()) {
            nodes[i] = continuedAt(picture[i], step, seen[i]);
        }
        directions[i] = nodes[i].isUsable() ? unit(seen[i].direction) : P3();
    }
}

}  // namespace Veltrani::DisplayExport
