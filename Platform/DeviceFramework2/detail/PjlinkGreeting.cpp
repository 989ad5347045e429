#include "DeviceFramework2/detail/PjlinkGreeting.h"

#include "DeviceFramework2/detail/AsciiText.h"

#include <algorithm>

namespace Veltrani::DeviceFramework2 {

namespace {

constexpr std::string_view LOGIN_PREFIX = "PJLINK 1 ";
constexpr std::size_t SEED_LENGTH = 8;

}  // namespace

std::optional<PjlinkGreeting> PjlinkGreeting::parse(std::string_view line) {
    const std::string text = capitals(line);
    if (text == "PJLINK 0") {
        return PjlinkGreeting{Kind::OPEN, {}};
    }
    if (text == "PJLINK ERRA") {
        return PjlinkGreeting{Kind::REFUSED, {}};
    }
    // The seed keeps its case: it goes into the digest letter by letter.
    const std::string_view seed = line.substr(std::min(line.size(), LOGIN_PREFIX.size()));
    if (!text.starts_with(LOGIN_PREFIX) || seed.size() != SEED_LENGTH ||
        !std::all_of(seed.begin(), seed.end(), isHexDigit)) {
        return std::nullopt;
    }
    return PjlinkGreeting{Kind::LOGIN, std::string(seed)};
}

}  // namespace Veltrani::DeviceFramework2
