#pragma once

#include "DisplayExport/ChannelWarp.h"
#include "DisplayReport/maps/WarpGrid.h"

#include <cstddef>
#include <functional>
#include <span>

namespace Veltrani::ExportFiles {

/// How the content of a warp lies in the one picture that a player has.
struct ContentStrip {
    std::size_t faces = 1;     ///< that lie beside each other in it, 0 the left one
    bool wrapsAround = false;  ///< whether its left edge goes on at its right one

    /// The place in the whole picture of a place on a face.
    [[nodiscard]] Point<double, 2> placeOf(const Point<double, 2>& content, std::uint8_t face) const {
        return {faces == 1 ? content[0] : (face + content[0]) / static_cast<double>(faces), content[1]};
    }
    /// The same, between the edges of the picture where these belong together.
    [[nodiscard]] Point<double, 2> wrappedPlaceOf(const Point<double, 2>& content, std::uint8_t face) const;
};

/// The brightness of a node, code value 0 to 1, by its place in the picture. Empty: 1.
using NodeBrightness = std::function<double(const Point<double, 2>& picture)>;

/// The nodes of a warp as the formats that are grids have them: those of nodes without the ones that would belong to a
/// broken cell, those of pixels as far as light arrives there.
class ChannelWarpGrid : public DisplayReport::WarpGrid {
public:
    /// @param warp must outlive the grid
    /// @param nodes as many as the warp has, such as its `gridNodes`; must outlive the grid
    ChannelWarpGrid(const DisplayExport::ChannelWarp& warp, std::span<const DisplayExport::WarpNode> nodes,
                    const ContentStrip& strip, NodeBrightness brightness = {});

    [[nodiscard]] Point<int, 2> pixels() const override { return m_warp.pixels(); }
    [[nodiscard]] std::size_t columns() const override { return m_warp.columns(); }
    [[nodiscard]] std::size_t rows() const override { return m_warp.rows(); }
    [[nodiscard]] DisplayReport::WarpSample at(std::size_t column, std::size_t row) const override;

private:
    const DisplayExport::ChannelWarp& m_warp;
    std::span<const DisplayExport::WarpNode> m_nodes;
    ContentStrip m_strip;
    NodeBrightness m_brightness;
};

}  // namespace Veltrani::ExportFiles
