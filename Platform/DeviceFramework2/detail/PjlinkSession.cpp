#include "DeviceFramework2/detail/PjlinkSession.h"

#include "DeviceFramework2/DeviceException.h"

namespace Veltrani::DeviceFramework2 {

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

}  // namespace Veltrani::DeviceFramework2
