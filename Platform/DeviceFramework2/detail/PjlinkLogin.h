#pragma once

#include <string>

namespace Veltrani::DeviceFramework2 {

/// The login digest: MD5 of seed and password, 32 hex digits in lower case. Throws `DeviceException` when the
/// cryptographic library of the machine refuses MD5.
[[nodiscard]] std::string pjlinkLoginDigest(const std::string& seed, const std::string& password);

}  // namespace Veltrani::DeviceFramework2
