#pragma once

#include <memory>
#include <string>

class ProjectorConfig;
class TargetLocator;
class XMLConfigManager;

namespace Veltrani::DisplayReport {

/// The target locator of a channel, or why there is none.
struct ChannelLocator {
    std::shared_ptr<const TargetLocator> locator;  ///< null when there is none
    std::string fault;                             ///< the reason, UTF-8; empty when there is one

    /// Asks the `TargetLocatorManager`; what it throws becomes the fault.
    [[nodiscard]] static ChannelLocator of(const XMLConfigManager& config, const ProjectorConfig& projector);
};

}  // namespace Veltrani::DisplayReport
