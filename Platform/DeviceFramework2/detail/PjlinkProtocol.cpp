#include "DeviceFramework2/detail/PjlinkProtocol.h"

#include "DeviceFramework2/DeviceException.h"
#include "DeviceFramework2/detail/AsciiText.h"

#include <utility>

namespace Veltrani::DeviceFramework2Detail {

using DeviceFramework2::DeviceException;
using DeviceFramework2::PasswordSource;

namespace {

/// Characters of an unexpected line that a message shows.
constexpr std::size_t LONGEST_QUOTATION = 40;

[[noreturn]] void fail(const std::wstring& reason, DeviceException::Cause cause = DeviceException::Cause::DEVICE) {
    throw DeviceException(__FILE__, __LINE__, reason, cause);
}

std::wstring quoted(const std::string& line) {
    return L"\"" + readable(line).substr(0, LONGEST_QUOTATION) + L"\"";
}

}  // namespace

PjlinkProtocol::PjlinkProtocol(std::wstring uid, PasswordSource passwords)
    : m_uid(std::move(uid)), m_passwords(std::move(passwords)) {}

void PjlinkProtocol::receive(std::string_view bytes) {
    if (bytes.empty()) {
        fail(isIdle() ? L"it closed the connection" : L"it closed the connection without an answer");
    }
    m_received.append(bytes);
    // What arrives while no request is under way stays in the buffer: the next request finds it there.
    if (isIdle()) {
        return;
    }
    if (const auto line = m_received.takeLine()) {
        m_state == State::GREETING ? greet(*line) : takeLine(*line);
        m_state = State::IDLE;
    }
}

void PjlinkProtocol::greet(const std::string& line) {
    const auto greeting = PjlinkGreeting::parse(line);
    if (!greeting) {
        fail(L"it greeted with " + quoted(line) + L", which is not PJLink");
    }
    if (greeting->kind == PjlinkGreeting::Kind::REFUSED) {
        fail(L"it refuses logins (ERRA)");
    }
    if (greeting->kind == PjlinkGreeting::Kind::LOGIN) {
        const auto password = m_passwords.find(m_uid);
        if (!password) {
            fail(L"it wants a password and none is configured, nothing was sent: " + m_passwords.remedy(),
                 DeviceException::Cause::THIS_MACHINE);
        }
        m_login = pjlinkLoginDigest(greeting->seed, *password);
    }
}

std::string PjlinkProtocol::send(const PjlinkRequest& request) {
    if (!m_received.isIdle()) {
        fail(L"it sent what nobody asked for");
    }
    m_request = request;
    m_state = State::REPLYING;
    return (std::exchange(m_loginSent, true) ? std::string() : m_login) + request.line();
}

void PjlinkProtocol::takeLine(const std::string& line) {
    // Checked before anything of the line can enter a message.
    if (!m_login.empty() && line.find(m_login) != std::string::npos) {
        fail(L"it sent the login back, so it is no projector");
    }
    auto reply = PjlinkReply::parse(line);
    if (reply && reply->outcome == PjlinkReply::Outcome::LOGIN_REFUSED) {
        fail(PjlinkReply::describe(reply->outcome));
    }
    // The class digit is not compared: some projectors reply to every command in their own class.
    if (!reply || reply->body != m_request.body) {
        fail(L"it answered " + m_request.text() + L" with " + quoted(line));
    }
    m_reply = std::move(reply);
}

std::optional<PjlinkReply> PjlinkProtocol::takeReply() {
    return std::exchange(m_reply, std::nullopt);
}

}  // namespace Veltrani::DeviceFramework2Detail
