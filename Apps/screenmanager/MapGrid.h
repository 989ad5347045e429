#pragma once

#include "DisplayReport/channels/ChannelChoice.h"
#include "MapPoints.h"

#include <string>
#include <vector>

class XMLConfigFile;

/// The formats of a whole picture, the first of which is the default.
[[nodiscard]] std::vector<std::string> gridFormats();
/// Whether a terminal can show one of them.
[[nodiscard]] bool isGridOfText(const std::string& format);

/// Refuses the command line for options of `map --grid` that the input or the format does not heed.
void requireHeeded(const MapOptions& options);

/// True for a mesh that could not be read again; reported then, with what could.
[[nodiscard]] bool isTooLargeMesh(const Veltrani::DisplayReport::ChannelChoice& channel, const MapOptions& options);

/// Maps the whole picture of a channel and writes it; returns an `ExitCode`, with what is wrong reported or thrown as
/// `VeltraniException`.
///
/// The layout map of the display takes its own input and the two panoramas about its eye point, straight ahead. All
/// other inputs, eyes and directions, and formats that hold more, are of what is seen of the channel, as `export` has
/// them.
int mapGrid(XMLConfigFile& config, const Veltrani::DisplayReport::ChannelChoice& channel, const MapOptions& options);
