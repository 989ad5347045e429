#pragma once

#include "DisplayReport/coverage/ChannelLight.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

class ProjectorConfig;
class ScreenGeometry;
class XMLConfigManager;

namespace Veltrani::DisplayReport {

/// The light of every channel of a display, for whatever measures it or draws it.
struct DisplayLights {
    ChannelLights lights;             ///< of those channels whose light is known, at most `MOST_CHANNELS`
    std::vector<std::size_t> places;  ///< of these channels in the configuration, as many as `lights`
    std::vector<std::string> faults;  ///< by channel of the configuration: why its light is not known; else empty

    /// A channel whose light cannot be had reports that in its fault, and does not keep the others from theirs.
    /// @param surface not null; the current screen
    [[nodiscard]] static DisplayLights of(const XMLConfigManager& config,
                                          const std::shared_ptr<const ScreenGeometry>& surface);

private:
    void add(const XMLConfigManager& config, const ProjectorConfig& projector,
             const std::shared_ptr<const ScreenGeometry>& surface);
};

}  // namespace Veltrani::DisplayReport
