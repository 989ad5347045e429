#include "ExportFiles/ChannelWarpGrid.h"

#include <cmath>

namespace Veltrani::ExportFiles {

using DisplayExport::WarpNode;

Point<double, 2> ContentStrip::wrappedPlaceOf(const Point<double, 2>& content, std::uint8_t face) const {
    Point<double, 2> place = placeOf(content, face);
    const bool isBeyond = place[0] < 0 || place[0] > 1;
    if (wrapsAround && isBeyond) {
        place[0] -= std::floor(place[0]);
    }
    return place;
}

ChannelWarpGrid::ChannelWarpGrid(const DisplayExport::ChannelWarp& warp, std::span<const WarpNode> nodes,
                                 const ContentStrip& strip)
    : m_warp(warp), m_nodes(nodes), m_strip(strip) {}

DisplayReport::WarpSample ChannelWarpGrid::at(std::size_t column, std::size_t row) const {
    const WarpNode& node = m_nodes[row * m_warp.columns() + column];
    if (!node.isUsable()) {
        return {};
    }
    return {m_warp.reachesCorners() ? m_strip.placeOf(node.content, node.face)
                                    : m_strip.wrappedPlaceOf(node.content, node.face),
            true};
}

}  // namespace Veltrani::ExportFiles
