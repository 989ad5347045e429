#pragma once

#include "DeviceFramework2/PasswordSource.h"
#include "DeviceFramework2/detail/PjlinkMessages.h"

#include <optional>
#include <string>
#include <string_view>

namespace Veltrani::DeviceFramework2Detail {

/// The course of one session with a projector: its greeting, the login with the first request, one request at a time.
///
/// Neither socket nor clock: bytes go in and out, in pieces of any size. Every fault is a `DeviceException` with the
/// cause alone, and the session must not be used afterwards: a late reply could be taken for that of another request.
/// The password is in none of the messages.
class PjlinkProtocol {
public:
    /// @param uid selects the password
    PjlinkProtocol(std::wstring uid, DeviceFramework2::PasswordSource passwords);

    /// Returns true once the projector has greeted, and while no request is under way.
    [[nodiscard]] bool isIdle() const { return m_state == State::IDLE; }

    /// Processes what the projector sent; empty when it has finished sending. Throws when the projector wants a
    /// password and none is configured.
    void receive(std::string_view bytes);

    /// Returns the bytes that a request is sent as. May be called only when idle; throws when the projector has sent
    /// anything unrequested, which would be taken for the reply.
    [[nodiscard]] std::string send(const PjlinkRequest& request);

    /// Returns the reply to the last request, once. An error that the projector reports is a reply; a refused login is
    /// a fault.
    [[nodiscard]] std::optional<PjlinkReply> takeReply();

private:
    enum class State { GREETING, IDLE, REPLYING };

    void greet(const std::string& line);
    void takeLine(const std::string& line);

    std::wstring m_uid;
    DeviceFramework2::PasswordSource m_passwords;
    State m_state = State::GREETING;
    LineBuffer m_received;
    std::string m_login;  ///< goes directly before the first request; empty when none is wanted
    bool m_loginSent = false;
    PjlinkRequest m_request;  ///< under way
    std::optional<PjlinkReply> m_reply;
};

}  // namespace Veltrani::DeviceFramework2Detail
