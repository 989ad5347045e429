#pragma once

#include "DisplayExport/ChannelWarp.h"
#include "DisplayReport/basics/PngPicture.h"
#include "ExportFiles/ChannelWarpGrid.h"
#include "ExportFiles/ContentPicture.h"

namespace Veltrani::ExportFiles {

/// What a channel shows when its player bends a content by a warp: the picture of the channel, upright, black where the
/// warp has nothing.
///
/// A warp of nodes is drawn triangle by triangle, each pixel by its middle and the places of the corners; a warp of
/// pixels pixel by pixel.
[[nodiscard]] DisplayReport::PngPicture warpedContent(const DisplayExport::ChannelWarp& warp, const ContentStrip& strip,
                                                      const ContentPicture& content);

}  // namespace Veltrani::ExportFiles
