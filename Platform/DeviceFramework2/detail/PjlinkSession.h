#pragma once

#include "DeviceFramework2/PjlinkSettings.h"
#include "DeviceFramework2/detail/LineBuffer.h"
#include "DeviceFramework2/detail/PjlinkReply.h"
#include "DeviceFramework2/detail/PjlinkRequest.h"
#include "DeviceFramework2/detail/TcpConnection.h"

#include <string>

namespace Veltrani::DeviceFramework2 {

/// One connection to a projector: connect, greet, log in with the first command, one command at a time.
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
    void greet(const std::wstring& uid, const PasswordSource& passwords);
    void requireSilence();
    std::string readLine(const Deadline& deadline);
    PjlinkReply exchange(const PjlinkRequest& request);

    PjlinkSettings m_settings;
    TcpConnection m_connection;
    LineBuffer m_received;
    std::string m_login;  ///< goes directly before the first command
    bool m_open = true;
};

}  // namespace Veltrani::DeviceFramework2
