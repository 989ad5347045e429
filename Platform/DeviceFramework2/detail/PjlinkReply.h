#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Veltrani::DeviceFramework2 {

/// A projector's answer to one command: "%1POWR=1".
struct PjlinkReply {
    enum class Outcome {
        VALUE,            ///< the answer to a question
        DONE,             ///< "OK"
        UNKNOWN_COMMAND,  ///< "ERR1"
        BAD_PARAMETER,    ///< "ERR2"
        NOT_NOW,          ///< "ERR3": standby, warming up, cooling
        FAILURE,          ///< "ERR4": the projector is faulty
        LOGIN_REFUSED,    ///< "PJLINK ERRA"
    };

    /// Reads a line without its end; letters are taken without regard to case. Nothing for what is no answer.
    [[nodiscard]] static std::optional<PjlinkReply> parse(std::string_view line);

    /// For messages: "not available now (standby, warming up or cooling)".
    [[nodiscard]] static std::wstring describe(Outcome outcome);

    Outcome outcome = Outcome::VALUE;
    std::string body;   ///< the command that is answered, in capitals; empty for `LOGIN_REFUSED`
    std::string value;  ///< as sent, bytes of any kind; empty unless `VALUE`
};

}  // namespace Veltrani::DeviceFramework2
