#include "DeviceFramework2/detail/PjlinkReply.h"

#include "DeviceFramework2/detail/AsciiText.h"

#include <algorithm>
#include <array>

namespace Veltrani::DeviceFramework2 {

namespace {

struct KnownAnswer {
    std::string_view text;
    PjlinkReply::Outcome outcome;
};

constexpr std::array<KnownAnswer, 5> KNOWN_ANSWERS{{{"OK", PjlinkReply::Outcome::DONE},
                                                    {"ERR1", PjlinkReply::Outcome::UNKNOWN_COMMAND},
                                                    {"ERR2", PjlinkReply::Outcome::BAD_PARAMETER},
                                                    {"ERR3", PjlinkReply::Outcome::NOT_NOW},
                                                    {"ERR4", PjlinkReply::Outcome::FAILURE}}};

constexpr std::string_view LOGIN_REFUSAL = "PJLINK ERRA";
constexpr std::size_t BODY_BEGIN = 2;  // after "%1"
constexpr std::size_t BODY_LENGTH = 4;
constexpr std::size_t VALUE_BEGIN = 7;  // after "%1POWR="

bool isBody(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); });
}

}  // namespace

std::optional<PjlinkReply> PjlinkReply::parse(std::string_view line) {
    if (capitals(line) == LOGIN_REFUSAL) {
        return PjlinkReply{Outcome::LOGIN_REFUSED, {}, {}};
    }
    if (line.size() < VALUE_BEGIN || line[0] != '%' || (line[1] != '1' && line[1] != '2') ||
        line[VALUE_BEGIN - 1] != '=') {
        return std::nullopt;
    }
    const std::string body = capitals(line.substr(BODY_BEGIN, BODY_LENGTH));
    if (!isBody(body)) {
        return std::nullopt;
    }
    const std::string value(line.substr(VALUE_BEGIN));
    const std::string answer = capitals(value);
    for (const KnownAnswer& known : KNOWN_ANSWERS) {
        if (answer == known.text) {
            return PjlinkReply{known.outcome, body, {}};
        }
    }
    return PjlinkReply{Outcome::VALUE, body, value};
}

std::wstring PjlinkReply::describe(Outcome outcome) {
    switch (outcome) {
        case Outcome::VALUE:
            return L"it answered with a value";
        case Outcome::DONE:
            return L"it answered OK";
        case Outcome::UNKNOWN_COMMAND:
            return L"it does not know the command (ERR1)";
        case Outcome::BAD_PARAMETER:
            return L"it does not take the parameter (ERR2)";
        case Outcome::NOT_NOW:
            return L"not available now: standby, warming up or cooling (ERR3)";
        case Outcome::FAILURE:
            return L"the projector reports a failure of its own (ERR4)";
        case Outcome::LOGIN_REFUSED:
            return L"it refused the password (ERRA)";
    }
    return L"an unknown answer";
}

}  // namespace Veltrani::DeviceFramework2
