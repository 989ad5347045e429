#pragma once

#include <string>
#include <vector>

namespace Veltrani::DeviceFramework2 {

/// The IPv4 broadcast addresses of the networks that this machine is on, each once; the general one,
/// 255.255.255.255, where there are none.
[[nodiscard]] std::vector<std::string> broadcastAddresses();

}  // namespace Veltrani::DeviceFramework2
