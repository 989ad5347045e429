#pragma once

#include "DisplayExport/ChannelWarp.h"
#include "ExportFiles/ChannelWarpGrid.h"

#include <iosfwd>

namespace Veltrani::ExportFiles {

/// Writes a warp of nodes as an OBJ mesh:
///
///     v x y 0                a corner in the picture: y from -1 (bottom) to 1 (top), x from -aspect to aspect, which
///     is
///                            width / height of the picture
///     vt u v                 its place in the input, (0, 0) bottom left
///     f a/a b/b c/c          a triangle, counter-clockwise
///
/// The nodes come first, row by row from the bottom left one, then the corners that cut cells have beside them, each in
/// front of the triangles that use it. A whole cell is two triangles that share the diagonal from the bottom left to
/// the top right; the `vt` of a node that no triangle uses is 0 0. Numbers read back as exactly those that were
/// computed.
void writeObj(const DisplayExport::ChannelWarp& warp, const ContentStrip& strip, std::ostream& out);

}  // namespace Veltrani::ExportFiles
