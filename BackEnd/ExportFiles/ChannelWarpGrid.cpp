#include "ExportFiles/ChannelWarpGrid.h"

#include <cmath>
#include <utility>

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
                                 const ContentStrip& strip, NodeBrightness brightness)
    : m_warp(warp), m_nodes(nodes), m_strip(strip), m_brightness(std::move(brightness)) {}

DisplayReport::WarpSample ChannelWarpGrid::at(std::size_t column, std::size_t row) const {
    const WarpNode& node = m_nodes[row * m_warp.columns() + column];
    if (m_warp.reachesCorners()) {
        const double brightness = m_brightness ? m_brightness(m_warp.pictureOf(column, row)) : 1.0;
        return node.isUsable() ? DisplayReport::WarpSample{m_strip.placeOf(node.content, node.face), true, brightness}
                               : DisplayReport::WarpSample{};
    }
    return node.state == WarpNode::State::MAPPED
               ? DisplayReport::WarpSample{m_strip.wrappedPlaceOf(node.content, node.face), true}
               : DisplayReport::WarpSample{};
}

}  // namespace Veltrani::ExportFiles
