#pragma once

#include "DeviceFramework2/MacAddress.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// The lines that PJLink exchanges: how received bytes become lines, what is sent, and what the lines of a projector
// mean.
namespace Veltrani::DeviceFramework2Detail {

/// Cuts received bytes into lines. CR, LF and CRLF all end a line, wherever the bytes were split; empty lines are
/// skipped.
class LineBuffer {
public:
    /// Longest line in bytes, and the most that may arrive before one is complete. The standard stays below 200.
    static constexpr std::size_t LONGEST_LINE = 1024;

    void append(std::string_view bytes);

    /// Returns the next complete line without its end; nothing when more bytes are needed. Throws `DeviceException`
    /// when so many bytes bring no line that none is to be expected.
    [[nodiscard]] std::optional<std::string> takeLine();

    /// Returns true when nothing but line ends is left.
    [[nodiscard]] bool isIdle() const;

private:
    std::string m_bytes;
    std::size_t m_skipped = 0;  ///< line ends skipped since the last line
};

/// The first line of a projector: "PJLINK 0", "PJLINK 1 498e4a67" or "PJLINK ERRA".
struct PjlinkGreeting {
    enum class Kind { OPEN, LOGIN, REFUSED };

    /// Reads a line without its end, letters without regard to case; nothing for what is no greeting.
    [[nodiscard]] static std::optional<PjlinkGreeting> parse(std::string_view line);

    Kind kind = Kind::OPEN;
    std::string seed;  ///< eight hex digits as sent; empty unless `LOGIN`
};

/// Returns the login digest: MD5 of seed and password, 32 hex digits in lower case. Throws `DeviceException` when the
/// cryptographic library of the machine refuses MD5.
[[nodiscard]] std::string pjlinkLoginDigest(const std::string& seed, const std::string& password);

/// One command of the PJLink standard.
struct PjlinkRequest {
    /// Longest request in bytes with its line end, without the login digest.
    static constexpr std::size_t LONGEST_REQUEST = 136;

    char commandClass = '1';  ///< '1' or '2'
    std::string body;         ///< four capitals, such as "POWR"
    std::string parameter;    ///< "?" for a query

    /// "%1POWR ?" and a carriage return. Throws `DeviceException` for one that is too long or holds a line end, which
    /// would smuggle in a second command.
    [[nodiscard]] std::string line() const;

    /// "POWR ?", for messages.
    [[nodiscard]] std::wstring text() const;
};

/// A projector's reply to one command: "%1POWR=1".
struct PjlinkReply {
    enum class Outcome {
        VALUE,            ///< the reply to a query
        DONE,             ///< "OK"
        UNKNOWN_COMMAND,  ///< "ERR1"
        BAD_PARAMETER,    ///< "ERR2"
        NOT_NOW,          ///< "ERR3": standby, warming up, cooling
        FAILURE,          ///< "ERR4": the projector is faulty
        LOGIN_REFUSED,    ///< "PJLINK ERRA"
    };

    /// Reads a line without its end; letters are read without regard to case. Returns nothing for a line that is no
    /// reply.
    [[nodiscard]] static std::optional<PjlinkReply> parse(std::string_view line);

    /// Returns the outcome for messages: "not available now (standby, warming up or cooling)".
    [[nodiscard]] static std::wstring describe(Outcome outcome);

    Outcome outcome = Outcome::VALUE;
    std::string body;   ///< the command that the reply belongs to, in capitals; empty for `LOGIN_REFUSED`
    std::string value;  ///< as sent, bytes of any kind; empty unless `VALUE`
};

/// Returns the MAC address of a reply to a search, "%2ACKN=02:00:00:00:00:01" with or without line ends; nothing for
/// any other datagram.
[[nodiscard]] std::optional<DeviceFramework2::MacAddress> parsePjlinkSearchReply(std::string_view datagram);

}  // namespace Veltrani::DeviceFramework2Detail
