#pragma once

#include "DeviceFramework2/PjlinkSettings.h"
#include "DeviceFramework2/detail/Endpoint.h"
#include "DeviceFramework2/detail/PjlinkMessages.h"
#include "DeviceFramework2/detail/PjlinkProtocol.h"
#include "DeviceFramework2/detail/Sockets.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

// Conversations with one projector: what a command sends step by step, a conversation that never waits, and one that is
// waited for.
namespace Veltrani::DeviceFramework2Detail {

/// One request of a command, and what follows its reply: the next step, or null when the command is done.
///
/// A command is stated as its first step. The owner of the session sends the request and passes the reply on, waiting
/// for it or not, so that what a command sends is defined in one place.
struct PjlinkStep {
    PjlinkRequest request;
    /// Throws `DeviceException` for a reply that ends the command with a fault.
    std::function<std::unique_ptr<PjlinkStep>(const PjlinkReply&)> then;
};

/// One connection to a projector, from connecting to the last reply, that never waits.
///
/// Its driver waits for the socket, or for many sockets at once, and reports what happened:
///
///     while (!conversation.isReady()) {
///         if (the socket becomes ready for conversation.events() before conversation.deadline()) {
///             conversation.proceed();
///         } else {
///             conversation.expire();
///         }
///     }
///
/// Every fault is a `DeviceException` with the cause alone: the driver knows which projector it is. The conversation
/// must be destroyed then.
class PjlinkConversation {
public:
    /// Begins to connect.
    /// @param uid selects the password
    PjlinkConversation(const Endpoint& peer, const std::wstring& uid, const DeviceFramework2::PjlinkSettings& settings);

    /// Returns true when a request may be sent: the projector has greeted, and the request before has its reply.
    [[nodiscard]] bool isReady() const {
        return m_state == State::IN_SESSION && m_unsent.empty() && m_protocol.isIdle();
    }

    /// Begins a request. May be called only when ready.
    void send(const PjlinkRequest& request);
    /// Returns the reply to the last request, once; nothing before it is there.
    [[nodiscard]] std::optional<PjlinkReply> takeReply() { return m_protocol.takeReply(); }

    /// What is waited for while not ready, and how long.
    [[nodiscard]] const Socket& socket() const { return m_connection.socket(); }
    [[nodiscard]] short events() const;
    [[nodiscard]] const Deadline& deadline() const { return m_deadline; }

    /// Does what can be done without waiting, once the socket is ready or has a fault to report.
    void proceed();
    /// To be called when the wait is over and the socket was never ready; throws the fault.
    [[noreturn]] void expire() const;

private:
    enum class State { CONNECTING, IN_SESSION };

    void sendRest();

    DeviceFramework2::PjlinkSettings m_settings;
    Deadline m_deadline;
    TcpConnection m_connection;
    PjlinkProtocol m_protocol;
    State m_state = State::CONNECTING;
    std::string m_unsent;  ///< of the request under way
};

/// A conversation with one projector that is waited for: connect, greet, log in with the first command, one command at
/// a time.
///
/// Many projectors take one connection and drop it when it is idle, so a session is short and there is one at a time
/// per projector. Any fault closes it: a late reply can then never be taken for that of a later command. Faults are
/// `DeviceException`s with the cause alone; the password is in none of them.
class PjlinkSession {
public:
    /// Connects and reads the greeting. When the projector wants a password and none is configured, nothing is sent.
    /// @param uid selects the password
    PjlinkSession(const Endpoint& peer, const std::wstring& uid, const DeviceFramework2::PjlinkSettings& settings);

    /// Sends a command and waits for its reply. An error that the projector reports is a reply; a refused login is a
    /// fault.
    [[nodiscard]] PjlinkReply ask(const PjlinkRequest& request);

private:
    void waitUntilReady();

    std::optional<PjlinkConversation> m_conversation;  ///< none after a fault
};

}  // namespace Veltrani::DeviceFramework2Detail
