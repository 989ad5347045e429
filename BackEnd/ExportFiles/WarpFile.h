#pragma once

#include "DisplayExport/ChannelWarp.h"
#include "ExportFiles/ChannelWarpGrid.h"

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace Veltrani::ExportFiles {

/// The formats in which an export writes a warp; docs/export-formats.md describes them.
enum class WarpFormat {
    MESH,    ///< the nodes as text
    OBJ,     ///< triangles
    PFM,     ///< the place in the input of each pixel
    PFM_3D,  ///< the place on the screen of each pixel
    PNG_16,  ///< the place in the input of each pixel
};

/// "mesh", "obj", "pfm", "pfm3d", "png16"; none for anything else.
[[nodiscard]] std::optional<WarpFormat> warpFormatOf(const std::string& name);
[[nodiscard]] std::string nameOf(WarpFormat format);
[[nodiscard]] std::vector<std::string> warpFormatNames();
/// How the name of a file of that format ends: "mesh", "obj", "pfm", "points.pfm", "warp.png".
[[nodiscard]] std::string endingOf(WarpFormat format);
/// Whether it is made of nodes, from corner to corner of the picture; else of pixels.
[[nodiscard]] bool isOfNodes(WarpFormat format);

/// Writes a warp.
/// @param warp of nodes or of pixels, as `isOfNodes` of the format; with points for `PFM_3D`
/// @param brightness of the nodes of a mesh; the other formats have none
/// Throws `VeltraniException` for a warp that the format cannot take; a stream that takes no more goes bad.
/// @return the cells with lit places that the format leaves out since they are broken
std::size_t writeWarp(WarpFormat format, const DisplayExport::ChannelWarp& warp, const ContentStrip& strip,
                      std::ostream& out, const NodeBrightness& brightness = {});

/// For people: "97 x 61 nodes, 12 not mapped, within 0.2 pixels of the input".
/// @param broken cells that a format has left out
/// @param isInGrid whether a format has the nodes as a grid: its error is stated then, which counts more around a pole
[[nodiscard]] std::string summaryOf(const DisplayExport::ChannelWarp& warp, std::size_t broken, bool isInGrid);

}  // namespace Veltrani::ExportFiles
