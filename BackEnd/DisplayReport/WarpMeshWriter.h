#pragma once

#include "DisplayReport/WarpWriter.h"

namespace Veltrani::DisplayReport {

/// A warp of nodes as a warp mesh:
///
///     2                      rectangular
///     nx ny                  nodes in a row, rows
///     x y u v i              nx * ny nodes, x fastest, from the bottom left one
///     pixels W H             size of the channel's picture
///
/// (x, y) is the node in the picture: y from -1 (bottom) to 1 (top), x from -aspect to aspect, which is width / height
/// of the picture. (u, v) is the place in the input, (0, 0) bottom left. i is the brightness, 1, or -1 where nothing is
/// mapped; every cell that touches such a node is unused. Numbers read back as exactly those that were computed.
///
/// The files serve as maps of custom planar channels, too.
class WarpMeshWriter : public WarpWriter {
public:
    void write(const PictureWarp& warp, std::ostream& out) const override;
    [[nodiscard]] bool hasNodes() const override { return true; }
    [[nodiscard]] bool isText() const override { return true; }
};

}  // namespace Veltrani::DisplayReport
