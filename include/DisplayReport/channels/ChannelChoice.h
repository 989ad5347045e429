#pragma once

#include "Common/Point.h"

#include <cstddef>
#include <string>

class ProjectorConfig;
class XMLConfigManager;

namespace Veltrani::DisplayReport {

/// One channel of a configuration, chosen by what a person calls it.
struct ChannelChoice {
    std::size_t index = 0;                       ///< in the order of the configuration
    const ProjectorConfig* projector = nullptr;  ///< not owned, never null

    /// The channel with this id, else the one with this name.
    ///
    /// Throws `VeltraniException`, with the list of channels, when there is none and when several have the name.
    /// @param nameOrId UTF-8
    [[nodiscard]] static ChannelChoice of(const XMLConfigManager& config, const std::string& nameOrId);

    /// "channel Left (020000000001)", UTF-8.
    [[nodiscard]] std::string describe() const;

    /// Width and height of its picture in pixels. Throws `VeltraniException`, naming the channel, without one.
    [[nodiscard]] Point<int, 2> pictureSize() const;

    /// Throws `VeltraniException`: what is wrong with the channel, UTF-8.
    [[noreturn]] void refuse(const std::string& what) const;
};

}  // namespace Veltrani::DisplayReport
