#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Veltrani::DeviceFramework2 {

/// The first line of a projector: "PJLINK 0", "PJLINK 1 498e4a67" or "PJLINK ERRA".
struct PjlinkGreeting {
    enum class Kind { OPEN, LOGIN, REFUSED };

    /// Reads a line without its end, letters without regard to case; nothing for what is no greeting.
    [[nodiscard]] static std::optional<PjlinkGreeting> parse(std::string_view line);

    Kind kind = Kind::OPEN;
    std::string seed;  ///< eight hex digits as sent; empty unless `LOGIN`
};

}  // namespace Veltrani::DeviceFramework2
