#pragma once

#include "DeviceFramework2/detail/PjlinkConversation.h"

#include <optional>
#include <string>

namespace Veltrani::DeviceFramework2 {

/// A conversation with one projector that is waited for: connect, greet, log in with the first command, one command at
/// a time.
///
/// Many projectors take one connection and drop it when it is idle, so a session is short and there is one at a time
/// per projector. Any fault closes it: a late answer can then never be taken for that of a later command. Faults are
/// `DeviceException`s with the cause alone; the password is in none of them.
class PjlinkSession {
public:
    /// Connects and reads the greeting. When the projector wants a password and none is configured, nothing is sent.
    /// @param uid selects the password
    PjlinkSession(const Endpoint& peer, const std::wstring& uid, const PjlinkSettings& settings);

    /// Sends a command and waits for its answer. An error that the projector reports is an answer; a refused login is
    /// a fault.
    [[nodiscard]] PjlinkReply ask(const PjlinkRequest& request);

private:
    void waitUntilReady();

    std::optional<PjlinkConversation> m_conversation;  ///< none after a fault
};

}  // namespace Veltrani::DeviceFramework2
