#pragma once

#include "Common/Point.h"
#include "DeviceFramework2/Commands.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Veltrani::DeviceFramework2Detail {

/// Reads the values that projectors reply with. Each function returns nothing for a value that is not understood.
class PjlinkValues {
public:
    PjlinkValues() = delete;

    /// 1 or 2, from one digit or the "Class 1" that some projectors send. A class above 2 counts as 2, which it
    /// includes.
    [[nodiscard]] static std::optional<int> commandClass(std::string_view value);

    /// Pixels from "1920x1200", both sides above 0.
    [[nodiscard]] static std::optional<Point<int, 2>> resolution(std::string_view value);

    /// "0" standby, "1" on, "2" cooling, "3" warming up.
    [[nodiscard]] static std::optional<DeviceFramework2::PowerState> power(std::string_view value);

    /// Returns true for "11" and "31", false for "10", "20", "21" and "30": the sound alone mutes no picture.
    [[nodiscard]] static std::optional<bool> pictureMute(std::string_view value);

    /// Reads one input, "31" or "2A": kind 1 to 6 and number 1 to 9 or A to Z; letters in capitals.
    [[nodiscard]] static std::optional<std::string> input(std::string_view value);

    /// Reads a list of inputs with blanks between them, in the projector's order; at least one.
    [[nodiscard]] static std::optional<std::vector<std::string>> inputs(std::string_view value);
};

}  // namespace Veltrani::DeviceFramework2Detail
