#include "DeviceFramework2/detail/PjlinkConversation.h"

#include "DeviceFramework2/DeviceException.h"

#include <poll.h>

namespace Veltrani::DeviceFramework2Detail {

using DeviceFramework2::DeviceException;
using DeviceFramework2::PjlinkSettings;

PjlinkConversation::PjlinkConversation(const Endpoint& peer, const std::wstring& uid, const PjlinkSettings& settings)
    : m_settings(settings),
      m_deadline(settings.connectLimit),
      m_connection(peer),
      m_protocol(uid, settings.passwords) {}

void PjlinkConversation::send(const PjlinkRequest& request) {
    m_deadline = Deadline(m_settings.replyLimit);
    if (const auto early = m_connection.receive()) {
        m_protocol.receive(*early);
    }
    m_unsent = m_protocol.send(request);
    sendRest();
}

short PjlinkConversation::events() const {
    return m_state == State::CONNECTING || !m_unsent.empty() ? POLLOUT : POLLIN;
}

void PjlinkConversation::proceed() {
    if (m_state == State::CONNECTING) {
        m_connection.requireConnected();
        m_state = State::IN_SESSION;
        m_deadline = Deadline(m_settings.greetingLimit);
    } else if (!m_unsent.empty()) {
        sendRest();
    } else if (const auto bytes = m_connection.receive()) {
        m_protocol.receive(*bytes);
    }
}

void PjlinkConversation::expire() const {
    const std::wstring limit = L" within " + std::to_wstring(m_deadline.limit().count()) + L" ms";
    if (m_state == State::CONNECTING) {
        throw DeviceException(__FILE__, __LINE__, L"no connection" + limit);
    }
    throw DeviceException(__FILE__, __LINE__,
                          (m_unsent.empty() ? L"no answer" : L"the command could not be sent") + limit);
}

void PjlinkConversation::sendRest() {
    m_unsent.erase(0, m_connection.send(m_unsent));
}

PjlinkSession::PjlinkSession(const Endpoint& peer, const std::wstring& uid, const PjlinkSettings& settings)
    : m_conversation(std::in_place, peer, uid, settings) {
    waitUntilReady();
}

PjlinkReply PjlinkSession::ask(const PjlinkRequest& request) {
    if (!m_conversation) {
        throw DeviceException(__FILE__, __LINE__, L"the session ended with an earlier fault");
    }
    try {
        m_conversation->send(request);
        waitUntilReady();
        return m_conversation->takeReply().value();
    } catch (...) {
        m_conversation.reset();
        throw;
    }
}

void PjlinkSession::waitUntilReady() {
    while (!m_conversation->isReady()) {
        if (!m_conversation->socket().waitFor(m_conversation->events(), m_conversation->deadline())) {
            m_conversation->expire();
        }
        m_conversation->proceed();
    }
}

}  // namespace Veltrani::DeviceFramework2Detail
