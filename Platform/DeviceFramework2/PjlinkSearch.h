#pragma once

#include "DeviceFramework2/MacAddress.h"

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace Veltrani::DeviceFramework2 {

/// How projectors are searched for. The defaults are those of the standard.
struct PjlinkSearchSettings {
    static constexpr int STANDARD_PORT = 4352;

    /// Returns the own port at which replies arrive: projectors reply to the standard port, whichever port the request
    /// came from. A responder that serves another port is a simulator or is behind a forwarder, and replies to the port
    /// from which the request came: any free port will do.
    [[nodiscard]] static int ownPortFor(int targetPort) { return targetPort == STANDARD_PORT ? STANDARD_PORT : 0; }

    /// Own IPv4 address and port. Projectors reply to the standard port.
    std::string ownAddress = "0.0.0.0";
    int ownPort = STANDARD_PORT;
    /// IPv4 addresses that the request is sent to; empty: the broadcast addresses of all networks of this machine.
    std::vector<std::string> targets;
    int targetPort = STANDARD_PORT;
    /// The duration of the whole search. A projector replies within 10 s of a request.
    std::chrono::milliseconds duration{30000};
    /// How often the request is sent, and the time between: a datagram can be lost.
    int requests = 3;
    std::chrono::milliseconds interval{5000};
};

/// A search for class 2 projectors by broadcast.
class PjlinkSearch {
public:
    struct Answer {
        MacAddress mac;
        std::string host;  ///< IPv4 address of the sender
    };

    /// What a search has received.
    struct Result {
        std::vector<Answer> answers;  ///< each MAC address once, in order of arrival
        /// Addresses that sent more MAC addresses than `MOST_ANSWERS_PER_ADDRESS`, each once.
        std::vector<std::string> crowded;
        bool full = false;  ///< ended with `MOST_ANSWERS`
    };

    /// The most answers that are kept; a network with more has another problem.
    static constexpr std::size_t MOST_ANSWERS = 1024;
    /// The most answers that are kept of one address. A projector has one MAC address, or one per network interface; an
    /// address that states more must not crowd the others out.
    static constexpr std::size_t MOST_ANSWERS_PER_ADDRESS = 4;

    explicit PjlinkSearch(PjlinkSearchSettings settings) : m_settings(std::move(settings)) {}

    /// Collects answers for the time given or until `enough` returns true for one, which is kept in any case. `enough`
    /// sees every answer until its MAC address is kept. Requests of others, our own echo and junk are ignored. An
    /// address that no request can be sent to is logged as a warning. Throws `DeviceException` of this machine, naming
    /// the cause and the remedy, when there is no search at all: without a socket, for instance because another program
    /// holds the port, and when no request can be sent to any address.
    [[nodiscard]] Result hear(const std::function<bool(const Answer&)>& enough = {}) const;

    /// Returns the answers of `hear` alone.
    [[nodiscard]] std::vector<Answer> run(const std::function<bool(const Answer&)>& enough = {}) const {
        return hear(enough).answers;
    }

private:
    PjlinkSearchSettings m_settings;
};

}  // namespace Veltrani::DeviceFramework2
