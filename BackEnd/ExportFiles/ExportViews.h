#pragma once

#include "Common/Point.h"
#include "DisplayReport/basics/Progress.h"
#include "ExportFiles/ViewExport.h"

#include <string>
#include <vector>

class XMLConfigManager;

namespace Veltrani::ExportFiles {

/// What an export has one record of each: the channels, as they are seen by each eye.
class ExportViews {
public:
    ExportViews() = delete;

    /// Every eye of each channel, in the order of the configuration.
    ///
    /// Throws `VeltraniException` for a channel that the display does not have.
    /// @param channels names or ids, one of which may stand there twice; empty: all
    /// @param eyes world frame, native units; empty: the eye of each channel
    [[nodiscard]] static std::vector<ExportView> of(const XMLConfigManager& config, std::vector<std::string> channels,
                                                    const std::vector<Point<double, 3>>& eyes);

    /// Places the targets that test pictures show. Build the screen first. A channel without any has none in its
    /// picture.
    /// @param progress called before each channel, and once more at the end; what it throws ends the work
    static void placeTargets(XMLConfigManager& config, std::vector<ExportView>& views,
                             const DisplayReport::Progress& progress);
};

}  // namespace Veltrani::ExportFiles
