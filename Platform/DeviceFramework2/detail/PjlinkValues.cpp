#include "DeviceFramework2/detail/PjlinkValues.h"

#include "DeviceFramework2/detail/AsciiText.h"

#include <algorithm>

namespace Veltrani::DeviceFramework2Detail {

using DeviceFramework2::PowerState;

std::optional<int> PjlinkValues::commandClass(std::string_view value) {
    constexpr std::string_view WORD = "CLASS ";
    const std::string text = capitals(value);
    const std::string digit = text.starts_with(WORD) ? text.substr(WORD.size()) : text;
    if (digit.size() != 1 || digit[0] < '1' || digit[0] > '9') {
        return std::nullopt;
    }
    return digit[0] == '1' ? 1 : 2;
}

std::optional<Point<int, 2>> PjlinkValues::resolution(std::string_view value) {
    const std::size_t cross = value.find_first_of("xX");
    if (cross == std::string_view::npos) {
        return std::nullopt;
    }
    const auto width = wholeNumber(value.substr(0, cross));
    const auto height = wholeNumber(value.substr(cross + 1));
    if (!width || !height || *width == 0 || *height == 0) {
        return std::nullopt;
    }
    return Point<int, 2>{*width, *height};
}

std::optional<PowerState> PjlinkValues::power(std::string_view value) {
    if (value == "0") {
        return PowerState::STANDBY;
    }
    if (value == "1") {
        return PowerState::ON;
    }
    if (value == "2") {
        return PowerState::COOLING;
    }
    if (value == "3") {
        return PowerState::WARMING_UP;
    }
    return std::nullopt;
}

std::optional<bool> PjlinkValues::pictureMute(std::string_view value) {
    if (value == "11" || value == "31") {
        return true;
    }
    if (value == "10" || value == "20" || value == "21" || value == "30") {
        return false;
    }
    return std::nullopt;
}

std::optional<std::string> PjlinkValues::input(std::string_view value) {
    const std::string text = capitals(value);
    if (text.size() != 2 || text[0] < '1' || text[0] > '6') {
        return std::nullopt;
    }
    const char number = text[1];
    if ((number < '1' || number > '9') && (number < 'A' || number > 'Z')) {
        return std::nullopt;
    }
    return text;
}

std::optional<std::vector<std::string>> PjlinkValues::inputs(std::string_view value) {
    std::vector<std::string> list;
    while (true) {
        value.remove_prefix(std::min(value.find_first_not_of(' '), value.size()));
        if (value.empty()) {
            break;
        }
        const std::size_t end = std::min(value.find(' '), value.size());
        const auto entry = input(value.substr(0, end));
        if (!entry) {
            return std::nullopt;
        }
        list.push_back(*entry);
        value.remove_prefix(end);
    }
    if (list.empty()) {
        return std::nullopt;
    }
    return list;
}

}  // namespace Veltrani::DeviceFramework2Detail
