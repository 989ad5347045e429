#include "DeviceFramework2/detail/PjlinkSearchReply.h"

#include "Common/Utf8.h"
#include "DeviceFramework2/detail/AsciiText.h"

namespace Veltrani::DeviceFramework2 {

std::optional<MacAddress> parsePjlinkSearchReply(std::string_view datagram) {
    constexpr std::string_view PREFIX = "%2ACKN=";
    const std::size_t last = datagram.find_last_not_of("\r\n");
    const std::string text = capitals(datagram.substr(0, last == std::string_view::npos ? 0 : last + 1));
    if (!text.starts_with(PREFIX)) {
        return std::nullopt;
    }
    return MacAddress::parse(fromUtf8OrBytes(text.substr(PREFIX.size())));
}

}  // namespace Veltrani::DeviceFramework2
