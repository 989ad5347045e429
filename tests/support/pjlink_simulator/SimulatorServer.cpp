#include "SimulatorServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <stdexcept>

namespace {

constexpr int BACKLOG = 64;

/// 127.0.1.1 and following: addresses of projectors that are spread.
constexpr std::uint32_t FIRST_PROJECTOR = INADDR_LOOPBACK + 0x100;
/// 127.1.0.1 and following: addresses that replies to a search come from, and that nothing serves.
constexpr std::uint32_t FIRST_SEARCH_HOST = INADDR_LOOPBACK + 0x10000;
/// The number of the first MAC address of projectors that are spread; other replies have smaller ones.
constexpr int FIRST_SPREAD_MAC = 0x10000;

sockaddr_in endpoint(std::uint32_t host, int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(host);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    return address;
}

/// A socket on a port, or on a free one for 0; -1 when the port is in use.
int tryToBind(int kind, std::uint32_t host, int port) {
    const int descriptor = ::socket(AF_INET, kind | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    const sockaddr_in address = endpoint(host, port);
    const int on = 1;
    // A port that was served a moment ago can be served again.
    if (kind == SOCK_STREAM) {
        ::setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    }
    if (descriptor < 0 || ::bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        ::close(descriptor);
        return -1;
    }
    return descriptor;
}

int boundSocket(int kind, std::uint32_t host, int port) {
    const int descriptor = tryToBind(kind, host, port);
    if (descriptor < 0) {
        throw std::runtime_error("no socket on loopback, port " + std::to_string(port));
    }
    return descriptor;
}

int portOf(int descriptor) {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    ::getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

std::string macOf(int number) {
    std::array<char, 18> text{};
    std::snprintf(text.data(), text.size(), "02:00:00:%02x:%02x:%02x", (number >> 16) & 0xFF, (number >> 8) & 0xFF,
                  number & 0xFF);
    return text.data();
}

std::string answerOf(const std::string& mac) {
    return "%2ACKN=" + mac + "\r";
}

/// Sends a datagram from a socket of its own, from any port of the address.
void sendFrom(std::uint32_t host, const std::string& text, const sockaddr_in& receiver) {
    const int descriptor = boundSocket(SOCK_DGRAM, host, 0);
    ::sendto(descriptor, text.data(), text.size(), 0, reinterpret_cast<const sockaddr*>(&receiver), sizeof receiver);
    ::close(descriptor);
}

}  // namespace

SimulatorServer::SimulatorServer(const SimulatorOptions& options) : m_options(options) {
    if (!options.journal.empty()) {
        m_journal.open(options.journal, std::ios::app);
    }
    for (int i = 0; i < options.projectors; ++i) {
        // Projectors that are spread share the port of the first.
        const int port = options.spread ? searchPort() : options.port == 0 ? 0 : options.port + i;
        const int listener = i == 0 ? bindFirst() : boundSocket(SOCK_STREAM, addressOf(i), port);
        m_listeners.push_back({listener, std::make_unique<SimulatedProjector>(options)});
        if (::listen(m_listeners.back().descriptor, BACKLOG) != 0) {
            throw std::runtime_error("cannot listen");
        }
    }
}

std::uint32_t SimulatorServer::addressOf(int projector) const {
    return m_options.spread ? FIRST_PROJECTOR + static_cast<std::uint32_t>(projector) : INADDR_LOOPBACK;
}

/// Control and search share one port number, as with a real projector. A free one of one kind may be taken in the
/// other.
int SimulatorServer::bindFirst() {
    constexpr int ATTEMPTS = 20;
    for (int attempt = 0; attempt < ATTEMPTS; ++attempt) {
        const int listener = boundSocket(SOCK_STREAM, addressOf(0), m_options.port);
        m_search = tryToBind(SOCK_DGRAM, INADDR_LOOPBACK, portOf(listener));
        if (m_search >= 0) {
            return listener;
        }
        ::close(listener);
    }
    throw std::runtime_error("no port on 127.0.0.1 for control and search");
}

SimulatorServer::~SimulatorServer() {
    for (const Connection& connection : m_connections) {
        ::close(connection.descriptor);
    }
    for (const Listener& listener : m_listeners) {
        ::close(listener.descriptor);
    }
    ::close(m_search);
}

std::vector<int> SimulatorServer::projectorPorts() const {
    std::vector<int> ports;
    for (const Listener& listener : m_listeners) {
        ports.push_back(portOf(listener.descriptor));
    }
    return ports;
}

int SimulatorServer::searchPort() const {
    return portOf(m_search);
}

void SimulatorServer::run(std::chrono::seconds longest) {
    const auto end = Clock::now() + longest;
    while (Clock::now() < end) {
        std::vector<pollfd> watched{{STDIN_FILENO, POLLIN, 0}, {m_search, POLLIN, 0}};
        for (const Listener& listener : m_listeners) {
            watched.push_back({listener.descriptor, POLLIN, 0});
        }
        for (const Connection& connection : m_connections) {
            watched.push_back({connection.descriptor, POLLIN, 0});
        }
        if (::poll(watched.data(), watched.size(), waitMilliseconds(end)) < 0) {
            continue;
        }
        if (watched[0].revents != 0) {
            return;
        }
        // Connections before listeners: a client that closes one and opens the next is seen in that order.
        std::size_t slot = 2 + m_listeners.size();
        for (Connection& connection : m_connections) {
            if (watched[slot++].revents != 0) {
                read(connection);
            }
            flush(connection);
        }
        for (std::size_t i = 0; i < m_listeners.size(); ++i) {
            if (watched[2 + i].revents != 0) {
                accept(i);
            }
        }
        if (watched[1].revents != 0) {
            answerSearch();
        }
        m_connections.remove_if([](const Connection& connection) { return connection.closed; });
        if (m_dying && m_connections.empty()) {
            return;
        }
    }
}

/// Until the next output is due; a socket that takes no more is tried again every millisecond.
int SimulatorServer::waitMilliseconds(Clock::time_point end) const {
    auto next = end;
    for (const Connection& connection : m_connections) {
        if (!connection.output.empty()) {
            next = std::min(next, std::max(connection.output.front().due, Clock::now() + std::chrono::milliseconds(1)));
        }
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now()).count();
    return static_cast<int>(std::max<std::int64_t>(left, 0));
}

/// To be called before the last reply leaves, so that no client that has it can still connect.
void SimulatorServer::stopListening() {
    m_dying = true;
    for (Listener& listener : m_listeners) {
        ::close(listener.descriptor);
        listener.descriptor = -1;  // passed over by poll
    }
}

void SimulatorServer::note(const std::string& event) {
    m_journal << event << '\n' << std::flush;
}

void SimulatorServer::accept(std::size_t projector) {
    Listener& listener = m_listeners[projector];
    const int descriptor = ::accept4(listener.descriptor, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (descriptor < 0) {
        return;
    }
    note("OPEN " + std::to_string(projector) + ' ' + std::to_string(++listener.open));
    m_connections.push_back({projector, descriptor, {}, 0, {}, false});
    Connection& connection = m_connections.back();
    const std::string greeting = listener.projector->greeting();
    if (!greeting.empty()) {
        queue(connection, greeting + m_options.lineEnd, m_options.halfClose ? Then::HALF_CLOSE : Then::NOTHING);
    }
    if (m_options.flood > 0) {
        const std::string line = "%1POWR=1\r";
        std::string flood;
        while (flood.size() < static_cast<std::size_t>(m_options.flood)) {
            flood += line;
        }
        connection.output.push_back({Clock::now(), flood, Then::NOTHING});
    }
    flush(connection);
}

void SimulatorServer::read(Connection& connection) {
    std::array<char, 4096> buffer{};
    const ssize_t count = ::recv(connection.descriptor, buffer.data(), buffer.size(), 0);
    if (count <= 0) {
        close(connection);
        return;
    }
    connection.received.append(buffer.data(), static_cast<std::size_t>(count));
    for (auto end = connection.received.find('\r'); end != std::string::npos && !connection.closed;
         end = connection.received.find('\r')) {
        const std::string line = connection.received.substr(0, end);
        connection.received.erase(0, end + 1);
        take(connection, line);
    }
}

void SimulatorServer::take(Connection& connection, const std::string& line) {
    note("LINE " + std::to_string(connection.projector) + ' ' + line);
    const bool unheard = !m_options.silentOn.empty() && line.find(m_options.silentOn) != std::string::npos;
    if (unheard || (m_options.silentAfter >= 0 && connection.commands >= m_options.silentAfter)) {
        return;
    }
    const auto answer = m_listeners[connection.projector].projector->answer(line, connection.commands == 0);
    ++connection.commands;
    if (++m_commands == m_options.dieAfter) {
        stopListening();
    }
    const bool last = answer.close || connection.commands == m_options.closeAfter;
    if (connection.commands == m_options.resetAfter) {
        queue(connection, "%1", Then::RESET);
    } else if (m_options.endless > 0) {
        queue(connection, std::string(static_cast<std::size_t>(m_options.endless), 'x'));
    } else if (!m_options.rawAnswer.empty()) {
        queue(connection, m_options.rawAnswer + m_options.lineEnd);
    } else if (!answer.line.empty() || last) {
        queue(connection, answer.line + m_options.lineEnd, last ? Then::CLOSE : Then::NOTHING);
    }
}

void SimulatorServer::queue(Connection& connection, const std::string& bytes, Then then) {
    auto due = Clock::now() + std::chrono::milliseconds(m_options.delay);
    if (m_options.split < 0) {
        connection.output.push_back({due, bytes, then});
        return;
    }
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        connection.output.push_back({due, bytes.substr(i, 1), i + 1 == bytes.size() ? then : Then::NOTHING});
        due += std::chrono::milliseconds(m_options.split);
    }
}

void SimulatorServer::flush(Connection& connection) {
    while (!connection.closed && !connection.output.empty() && connection.output.front().due <= Clock::now()) {
        Output& output = connection.output.front();
        const ssize_t count =
            ::send(connection.descriptor, output.bytes.data(), output.bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count < 0 && errno == EAGAIN) {
            return;
        }
        if (count < 0) {
            close(connection);
            return;
        }
        output.bytes.erase(0, static_cast<std::size_t>(count));
        if (!output.bytes.empty()) {
            return;
        }
        const Then then = output.then;
        connection.output.pop_front();
        if (then == Then::HALF_CLOSE) {
            ::shutdown(connection.descriptor, SHUT_WR);
        } else if (then == Then::CLOSE || then == Then::RESET) {
            const linger abort{then == Then::RESET ? 1 : 0, 0};
            ::setsockopt(connection.descriptor, SOL_SOCKET, SO_LINGER, &abort, sizeof abort);
            close(connection);
        }
    }
}

void SimulatorServer::close(Connection& connection) {
    connection.closed = true;
    ::close(connection.descriptor);
    note("CLOSE " + std::to_string(connection.projector) + ' ' +
         std::to_string(--m_listeners[connection.projector].open));
}

void SimulatorServer::answerSearch() {
    std::array<char, 256> buffer{};
    sockaddr_in sender{};
    socklen_t size = sizeof sender;
    const ssize_t count =
        ::recvfrom(m_search, buffer.data(), buffer.size(), 0, reinterpret_cast<sockaddr*>(&sender), &size);
    if (count < 0) {
        return;
    }
    const std::string request(buffer.data(), static_cast<std::size_t>(count));
    note("SEARCH " + request.substr(0, request.find('\r')));
    if (request != "%2SRCH\r") {
        return;
    }
    const auto answer = [&](const std::string& text) {
        ::sendto(m_search, text.data(), text.size(), 0, reinterpret_cast<const sockaddr*>(&sender), size);
    };
    if (!m_options.mac.empty()) {
        answer(answerOf(m_options.mac));
    }
    for (int i = 0; m_options.spread && i < m_options.projectors; ++i) {
        sendFrom(addressOf(i), answerOf(macOf(FIRST_SPREAD_MAC + i)), sender);
    }
    for (int i = 1; i <= m_options.searchAnswers; ++i) {
        if (m_options.searchHosts > 0) {
            sendFrom(FIRST_SEARCH_HOST + static_cast<std::uint32_t>(i % m_options.searchHosts), answerOf(macOf(i)),
                     sender);
            continue;
        }
        answer(answerOf(macOf(i)));
        if (m_options.searchNoise) {
            answer(answerOf(macOf(i)));
            answer(i % 2 == 0 ? "%2SRCH\r" : "%2ACKN=not:an:address\r");
            answer(i % 2 == 0 ? std::string(1200, 'x') : "");
        }
    }
}
