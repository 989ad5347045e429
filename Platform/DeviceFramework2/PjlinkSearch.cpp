#include "DeviceFramework2/PjlinkSearch.h"

#include "Common/Utf8.h"
#include "Common/VeltraniLogging.h"
#include "DeviceFramework2/DeviceException.h"
#include "DeviceFramework2/detail/Endpoint.h"
#include "DeviceFramework2/detail/PjlinkMessages.h"
#include "DeviceFramework2/detail/Sockets.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <map>
#include <optional>
#include <set>
#include <utility>

namespace Veltrani::DeviceFramework2 {

using DeviceFramework2Detail::broadcastAddresses;
using DeviceFramework2Detail::Deadline;
using DeviceFramework2Detail::Endpoint;
using DeviceFramework2Detail::parsePjlinkSearchReply;
using DeviceFramework2Detail::Socket;

namespace {

const log4cxx::LoggerPtr LOGGER = log4cxx::Logger::getLogger(L"Dravix.DeviceFramework2.PjlinkSearch");

constexpr std::string_view REQUEST = "%2SRCH\r";
/// Bytes of a datagram that are read: a reply has 25.
constexpr std::size_t LONGEST_DATAGRAM = 64;
/// Room for the replies of a large installation that arrive at once; the system may give less.
constexpr int RECEIVE_BUFFER = 1 << 20;

/// One search: the socket, and what has been received.
class Hearing {
public:
    explicit Hearing(const PjlinkSearchSettings& settings) : m_settings(settings), m_socket(AF_INET, SOCK_DGRAM) {
        const int on = 1;
        ::setsockopt(m_socket.descriptor(), SOL_SOCKET, SO_BROADCAST, &on, sizeof on);
        ::setsockopt(m_socket.descriptor(), SOL_SOCKET, SO_RCVBUF, &RECEIVE_BUFFER, sizeof RECEIVE_BUFFER);
        const auto own = Endpoint::parse(settings.ownAddress, settings.ownPort);
        if (!own || own->family() != AF_INET) {
            throw DeviceException(__FILE__, __LINE__, L"the own address is not IPv4");
        }
        if (::bind(m_socket.descriptor(), own->address(), own->size()) != 0) {
            throw DeviceException(__FILE__, __LINE__, fromUtf8(own->text()) + L": " + Socket::reason(errno));
        }
    }

    /// An address that no request can be sent to is logged; the others are still served.
    /// @return how many requests were sent
    std::size_t request(const std::vector<std::string>& targets) const {
        std::size_t asked = 0;
        for (const std::string& target : targets) {
            const auto peer = Endpoint::parse(target, m_settings.targetPort);
            const bool usable = peer && peer->family() == AF_INET;
            if (!usable || ::sendto(m_socket.descriptor(), REQUEST.data(), REQUEST.size(), MSG_NOSIGNAL,
                                    peer->address(), peer->size()) < 0) {
                const std::wstring cause = usable ? Socket::reason(errno) : L"not an IPv4 address";
                VELTRANI_LOG(LOGGER, Warn, L"search: " + fromUtf8OrBytes(target) + L" cannot be asked: " + cause);
                continue;
            }
            ++asked;
        }
        return asked;
    }

    /// Returns the next reply; nothing when the time is over first. The deadline is checked for every datagram, so that
    /// a flood does not prolong the search.
    std::optional<PjlinkSearch::Answer> next(const Deadline& deadline) {
        while (!deadline.expired() && m_socket.waitFor(POLLIN, deadline)) {
            if (auto answer = receive()) {
                return answer;
            }
        }
        return std::nullopt;
    }

private:
    std::optional<PjlinkSearch::Answer> receive() {
        std::array<char, LONGEST_DATAGRAM> bytes{};
        sockaddr_storage sender{};
        socklen_t size = sizeof sender;
        const ssize_t count = ::recvfrom(m_socket.descriptor(), bytes.data(), bytes.size(), MSG_TRUNC,
                                         reinterpret_cast<sockaddr*>(&sender), &size);
        if (count < 0 || static_cast<std::size_t>(count) > bytes.size()) {
            return std::nullopt;
        }
        const auto mac = parsePjlinkSearchReply({bytes.data(), static_cast<std::size_t>(count)});
        if (!mac) {
            return std::nullopt;
        }
        return PjlinkSearch::Answer{*mac, Endpoint::of(sender).host()};
    }

    const PjlinkSearchSettings& m_settings;
    Socket m_socket;
};

/// What is kept of the replies. It stays small, whatever arrives.
class Collection {
public:
    explicit Collection(const std::function<bool(const PjlinkSearch::Answer&)>& enough) : m_enough(enough) {}

    /// Returns false when the search has ended with this reply.
    bool take(const PjlinkSearch::Answer& answer) {
        if (m_known.count(answer.mac) != 0) {
            return true;
        }
        const bool last = m_enough && m_enough(answer);
        std::size_t& ofAddress = m_perAddress[answer.host];
        if (!last && ofAddress >= PjlinkSearch::MOST_ANSWERS_PER_ADDRESS) {
            noteCrowded(answer.host);
            return true;
        }
        ++ofAddress;
        m_known.insert(answer.mac);
        m_result.answers.push_back(answer);
        m_result.full = m_result.answers.size() >= PjlinkSearch::MOST_ANSWERS;
        return !last && !m_result.full;
    }

    [[nodiscard]] PjlinkSearch::Result result() && { return std::move(m_result); }

private:
    void noteCrowded(const std::string& host) {
        auto& hosts = m_result.crowded;
        if (std::find(hosts.begin(), hosts.end(), host) == hosts.end()) {
            hosts.push_back(host);
        }
    }

    const std::function<bool(const PjlinkSearch::Answer&)>& m_enough;
    std::set<MacAddress> m_known;
    std::map<std::string, std::size_t> m_perAddress;
    PjlinkSearch::Result m_result;
};

}  // namespace

PjlinkSearch::Result PjlinkSearch::hear(const std::function<bool(const Answer&)>& enough) const {
    Collection collection(enough);
    try {
        Hearing hearing(m_settings);
        const auto targets = m_settings.targets.empty() ? broadcastAddresses() : m_settings.targets;
        const Deadline end(m_settings.duration);
        for (int sent = 1; !end.expired(); ++sent) {
            const bool last = sent >= m_settings.requests;
            if (hearing.request(targets) == 0 && sent == 1) {
                throw DeviceException(__FILE__, __LINE__, L"no network can be asked");
            }
            const Deadline pause(last ? end.remaining() : std::min(m_settings.interval, end.remaining()));
            while (const auto answer = hearing.next(pause)) {
                if (!collection.take(*answer)) {
                    return std::move(collection).result();
                }
            }
            if (last) {
                break;
            }
        }
    } catch (const DeviceException& fault) {
        throw DeviceException(
            __FILE__, __LINE__,
            L"No search for projectors: " + fault.message + L". Give the address of each projector instead",
            DeviceException::Cause::THIS_MACHINE);
    }
    return std::move(collection).result();
}

}  // namespace Veltrani::DeviceFramework2
