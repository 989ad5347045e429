#pragma once

#include "DisplayReport/basics/Fault.h"

#include <string>
#include <vector>

class ProjectorConfig;
class XMLConfigManager;

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

}  // namespace Veltrani::DisplayReport
