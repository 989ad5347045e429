#include "DisplayExport/ChannelWarp.h"

#include "DisplayExport/WarpBuilder.h"

#include <algorithm>

namespace Veltrani::DisplayExport {

void WarpError::addPlace(double error, double allowed) {
    ++places;
    beyond += error > allowed ? 1 : 0;
    largest = std::max(largest, error);
}

void WarpError::add(const WarpError& other) {
    largest = std::max(largest, other.largest);
    places += other.places;
    beyond += other.beyond;
    leftOut += other.leftOut;
}

ChannelWarp ChannelWarp::of(const ChannelSight& sight, const ContentInput& input, const WarpRequest& request) {
    return WarpBuilder(sight, input, request).build();
}

Point<double, 2> ChannelWarp::pictureOf(std::size_t column, std::size_t row) const {
    const auto along = [this](std::size_t place, std::size_t count) {
        return m_reachesCorners ? static_cast<double>(place) / static_cast<double>(count - 1)
                                : (static_cast<double>(place) + 0.5) / static_cast<double>(count);
    };
    return {along(column, m_columns), along(row, m_rows)};
}

std::size_t ChannelWarp::count(WarpNode::State state) const {
    return static_cast<std::size_t>(
        std::count_if(m_nodes.begin(), m_nodes.end(), [state](const WarpNode& node) { return node.state == state; }));
}

std::array<std::size_t, 4> ChannelWarp::cornersOf(std::size_t cell) const {
    const std::size_t first = cell / (m_columns - 1) * m_columns + cell % (m_columns - 1);
    return {first, first + 1, first + m_columns + 1, first + m_columns};
}

void ChannelWarp::forEachPiece(const std::function<void(const WarpPiece&)>& take) const {
    if (!m_reachesCorners) {
        return;
    }
    auto cut = m_cutCells.begin();
    for (std::size_t cell = 0; cell < (m_columns - 1) * (m_rows - 1); ++cell) {
        if (cut != m_cutCells.end() && cut->cell == cell) {
            std::for_each(cut->pieces.begin(), cut->pieces.end(), take);
            ++cut;
            continue;
        }
        const auto corners = cornersOf(cell);
        if (!std::all_of(corners.begin(), corners.end(), [this](std::size_t i) { return m_nodes[i].isUsable(); })) {
            continue;
        }
        const auto cornerAt = [&](std::size_t i) {
            return WarpCorner{pictureOf(corners[i] % m_columns, corners[i] / m_columns), m_nodes[corners[i]].content};
        };
        const std::uint8_t face = m_nodes[corners[0]].face;
        take({{cornerAt(0), cornerAt(1), cornerAt(2)}, face});
        take({{cornerAt(0), cornerAt(2), cornerAt(3)}, face});
    }
}

std::vector<WarpNode> ChannelWarp::gridNodes(std::size_t& broken) const {
    std::vector<WarpNode> nodes = m_nodes;
    const auto isUsable = [this](const std::vector<WarpNode>& of, std::size_t cell) {
        const auto corners = cornersOf(cell);
        return std::all_of(corners.begin(), corners.end(), [&of](std::size_t i) { return of[i].isUsable(); });
    };
    for (const CutCell& cut : m_cutCells) {
        if (cut.isBroken && isUsable(nodes, cut.cell)) {
            nodes[cornersOf(cut.cell)[2]] = WarpNode();
        }
    }
    broken = 0;
    if (m_reachesCorners) {
        for (std::size_t cell = 0; cell < (m_columns - 1) * (m_rows - 1); ++cell) {
            broken += isUsable(m_nodes, cell) && !isUsable(nodes, cell) ? 1 : 0;
        }
    }
    return nodes;
}

}  // namespace Veltrani::DisplayExport
