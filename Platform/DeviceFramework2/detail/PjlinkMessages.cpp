#include "DeviceFramework2/detail/PjlinkMessages.h"

#include "Common/OpensslFault.h"
#include "Common/Utf8.h"
#include "DeviceFramework2/DeviceException.h"
#include "DeviceFramework2/detail/AsciiText.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>

#include <algorithm>
#include <array>

namespace Veltrani::DeviceFramework2Detail {

using DeviceFramework2::DeviceException;
using DeviceFramework2::MacAddress;

namespace {

constexpr std::string_view LINE_ENDS = "\r\n";

constexpr std::string_view LOGIN_PREFIX = "PJLINK 1 ";
constexpr std::string_view LOGIN_REFUSAL = "PJLINK ERRA";
constexpr std::size_t SEED_LENGTH = 8;

struct KnownAnswer {
    std::string_view text;
    PjlinkReply::Outcome outcome;
};

constexpr std::array<KnownAnswer, 5> KNOWN_ANSWERS{{{"OK", PjlinkReply::Outcome::DONE},
                                                    {"ERR1", PjlinkReply::Outcome::UNKNOWN_COMMAND},
                                                    {"ERR2", PjlinkReply::Outcome::BAD_PARAMETER},
                                                    {"ERR3", PjlinkReply::Outcome::NOT_NOW},
                                                    {"ERR4", PjlinkReply::Outcome::FAILURE}}};

constexpr std::size_t BODY_BEGIN = 2;  // after "%1"
constexpr std::size_t BODY_LENGTH = 4;
constexpr std::size_t VALUE_BEGIN = 7;  // after "%1POWR="

bool isBody(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); });
}

}  // namespace

void LineBuffer::append(std::string_view bytes) {
    m_bytes += bytes;
}

std::optional<std::string> LineBuffer::takeLine() {
    const std::size_t begin = std::min(m_bytes.find_first_not_of(LINE_ENDS), m_bytes.size());
    m_bytes.erase(0, begin);
    m_skipped += begin;
    const std::size_t end = m_bytes.find_first_of(LINE_ENDS);
    if (m_skipped + std::min(end, m_bytes.size()) > LONGEST_LINE) {
        throw DeviceException(__FILE__, __LINE__,
                              L"it sent more than " + std::to_wstring(LONGEST_LINE) + L" bytes without a line");
    }
    if (end == std::string::npos) {
        return std::nullopt;
    }
    std::string line = m_bytes.substr(0, end);
    m_bytes.erase(0, end + 1);
    m_skipped = 0;
    return line;
}

bool LineBuffer::isIdle() const {
    return m_bytes.find_first_not_of(LINE_ENDS) == std::string::npos;
}

std::optional<PjlinkGreeting> PjlinkGreeting::parse(std::string_view line) {
    const std::string text = capitals(line);
    if (text == "PJLINK 0") {
        return PjlinkGreeting{Kind::OPEN, {}};
    }
    if (text == LOGIN_REFUSAL) {
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

std::string pjlinkLoginDigest(const std::string& seed, const std::string& password) {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    std::size_t size = 0;
    OSSL_LIB_CTX* const context = opensslContext();
    std::string text = seed + password;
    const bool done = EVP_Q_digest(context, "MD5", nullptr, text.data(), text.size(), digest.data(), &size) == 1;
    OPENSSL_cleanse(text.data(), text.size());
    if (!done) {
        throwIfOpensslLacksMemory();
        throw DeviceException(__FILE__, __LINE__, L"the login needs MD5, which this machine refuses");
    }
    constexpr char DIGITS[] = "0123456789abcdef";
    std::string hex;
    for (std::size_t i = 0; i < size; ++i) {
        hex += DIGITS[digest[i] / 16];
        hex += DIGITS[digest[i] % 16];
    }
    return hex;
}

std::string PjlinkRequest::line() const {
    std::string request = std::string("%") + commandClass + body + ' ' + parameter + '\r';
    if (request.size() > LONGEST_REQUEST || request.find_first_of(LINE_ENDS) != request.size() - 1) {
        throw DeviceException(__FILE__, __LINE__, L"the parameter of " + fromUtf8OrBytes(body) + L" cannot be sent");
    }
    return request;
}

std::wstring PjlinkRequest::text() const {
    return fromUtf8OrBytes(body + ' ' + parameter);
}

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

std::optional<MacAddress> parsePjlinkSearchReply(std::string_view datagram) {
    constexpr std::string_view PREFIX = "%2ACKN=";
    const std::size_t last = datagram.find_last_not_of(LINE_ENDS);
    const std::string text = capitals(datagram.substr(0, last == std::string_view::npos ? 0 : last + 1));
    if (!text.starts_with(PREFIX)) {
        return std::nullopt;
    }
    return MacAddress::parse(fromUtf8OrBytes(text.substr(PREFIX.size())));
}

}  // namespace Veltrani::DeviceFramework2Detail
