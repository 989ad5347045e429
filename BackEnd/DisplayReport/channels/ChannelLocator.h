#pragma once

#include "DisplayReport/basics/Fault.h"

#include <memory>
#include <string>
#include <vector>

class ProjectorConfig;
class XMLConfigManager;
class TargetLocator;

namespace Veltrani::DisplayReport {

/// What the target locator of a channel is built from, in words, and what is wrong with it.
struct LocatorSource {
    std::string text;
    std::vector<Fault> faults;
};

/// By the kind of the display; reads the files that the channel names. No screen is needed. "nothing" without target
/// data, and with a fault for a type that no kind has.
[[nodiscard]] LocatorSource locatorSourceOf(const XMLConfigManager& config, const ProjectorConfig& projector);

/// Empty without target data.
[[nodiscard]] std::wstring targetDataTypeOf(const XMLConfigManager& config);

/// True for displays whose channels are described by areas of the screen and rectangles of the layout.
[[nodiscard]] bool isPlanarDisplay(const XMLConfigManager& config);

/// The target locator of a channel, or why there is none.
struct ChannelLocator {
    std::shared_ptr<const TargetLocator> locator;  ///< null when there is none
    std::string fault;                             ///< the reason, UTF-8; empty when there is one

    /// Requests the locator from the `TargetLocatorManager`; what that throws becomes the fault.
    [[nodiscard]] static ChannelLocator of(const XMLConfigManager& config, const ProjectorConfig& projector);
};

}  // namespace Veltrani::DisplayReport
