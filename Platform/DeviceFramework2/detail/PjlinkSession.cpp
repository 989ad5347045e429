#include "DeviceFramework2/detail/PjlinkSession.h"

#include "DeviceFramework2/DeviceException.h"
#include "DeviceFramework2/detail/AsciiText.h"
#include "DeviceFramework2/detail/PjlinkGreeting.h"
#include "DeviceFramework2/detail/PjlinkLogin.h"

#include <utility>

namespace Veltrani::DeviceFramework2 {

namespace {

/// Characters of an unexpected line that a message shows.
constexpr std::size_t LONGEST_QUOTATION = 40;

[[noreturn]] void fail(const std::wstring& reason) {
    throw DeviceException(__FILE__, __LINE__, reason);
}

std::wstring quoted(const std::string& line) {
    return L"\"" + readable(line).substr(0, LONGEST_QUOTATION) + L"\"";
}

}  // namespace

PjlinkSession::PjlinkSession(const Endpoint& peer, const std::wstring& uid, const PjlinkSettings& settings)
    : m_settings(settings), m_connection(peer, Deadline(settings.connectLimit)) {
    greet(uid, settings.passwords);
}

void PjlinkSession::greet(const std::wstring& uid, const PasswordSource& passwords) {
    const std::string line = readLine(Deadline(m_settings.greetingLimit));
    const auto greeting = PjlinkGreeting::parse(line);
    if (!greeting) {
        fail(L"it greeted with " + quoted(line) + L", which is not PJLink");
    }
    if (greeting->kind == PjlinkGreeting::Kind::REFUSED) {
        fail(L"it refuses logins (ERRA)");
    }
    if (greeting->kind == PjlinkGreeting::Kind::LOGIN) {
        const auto password = passwords.find(uid);
        if (!password) {
            fail(L"it wants a password and none is configured, nothing was sent: " + passwords.remedy());
        }
        m_login = pjlinkLoginDigest(greeting->seed, *password);
    }
}

PjlinkReply PjlinkSession::ask(const PjlinkRequest& request) {
    if (!m_open) {
        fail(L"the session ended with an earlier fault");
    }
    try {
        return exchange(request);
    } catch (...) {
        m_open = false;
        m_connection.close();
        throw;
    }
}

PjlinkReply PjlinkSession::exchange(const PjlinkRequest& request) {
    const Deadline deadline(m_settings.replyLimit);
    requireSilence();
    const std::string login = std::exchange(m_login, {});
    m_connection.send(login + request.line(), deadline);
    const std::string line = readLine(deadline);
    // Checked before anything of the line can enter a message.
    if (!login.empty() && line.find(login) != std::string::npos) {
        fail(L"it sent the login back, so it is no projector");
    }
    auto reply = PjlinkReply::parse(line);
    if (reply && reply->outcome == PjlinkReply::Outcome::LOGIN_REFUSED) {
        fail(PjlinkReply::describe(reply->outcome));
    }
    // The class digit is not compared: some projectors answer every command in their own class.
    if (!reply || reply->body != request.body) {
        fail(L"it answered " + request.text() + L" with " + quoted(line));
    }
    return *std::move(reply);
}

/// What arrives before a command is sent cannot be its answer.
void PjlinkSession::requireSilence() {
    if (auto early = m_connection.receiveNow()) {
        if (early->empty()) {
            fail(L"it closed the connection");
        }
        m_received.append(*early);
    }
    if (!m_received.isIdle()) {
        fail(L"it sent what nobody asked for");
    }
}

std::string PjlinkSession::readLine(const Deadline& deadline) {
    while (true) {
        if (auto line = m_received.takeLine()) {
            return *std::move(line);
        }
        const std::string bytes = m_connection.receive(deadline);
        if (bytes.empty()) {
            fail(L"it closed the connection without an answer");
        }
        m_received.append(bytes);
    }
}

}  // namespace Veltrani::DeviceFramework2
