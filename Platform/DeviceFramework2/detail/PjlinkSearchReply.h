#pragma once

#include "DeviceFramework2/MacAddress.h"

#include <optional>
#include <string_view>

namespace Veltrani::DeviceFramework2 {

/// The MAC address of an answer to a search, "%2ACKN=02:00:00:00:00:01" with or without line ends; nothing for any
/// other datagram.
[[nodiscard]] std::optional<MacAddress> parsePjlinkSearchReply(std::string_view datagram);

}  // namespace Veltrani::DeviceFramework2
