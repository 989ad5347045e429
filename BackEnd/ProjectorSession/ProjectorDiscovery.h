#pragma once

#include "DeviceFramework2/DeviceManager.h"
#include "DeviceFramework2/MacAddress.h"
#include "DisplayReport/basics/Progress.h"

#include <chrono>
#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

namespace Veltrani::ProjectorSession {

/// A projector that replied to a search. All texts UTF-8.
struct DiscoveredProjector {
    DeviceFramework2::MacAddress mac;
    std::string address;  ///< "192.0.2.10:4352"
    std::string name;     ///< that its owner gave it
    std::string model;
    std::string fault;  ///< why name and model are not known; empty when it was not contacted, too
};

/// What a search has come to.
struct Discovery {
    std::vector<DiscoveredProjector> projectors;  ///< by MAC address
    /// What was left out, and what to do about it: one line, UTF-8, for each reason; usually empty.
    std::vector<std::string> leftOut;
};

/// What a search may lead to at most. Replies to a search prove nothing about who sends them; however many there are,
/// no more than this comes of them.
struct DiscoveryLimits {
    /// Projectors whose name and model are requested: those that replied first.
    std::size_t projectors = 256;
    /// The time for all of them together.
    std::chrono::milliseconds time{120000};
};

/// Searches the network for projectors and requests name and model of those that reply, all at the same time.
///
/// Of the replies from one network address `PjlinkSearch::MOST_ANSWERS_PER_ADDRESS` count, and the projectors there are
/// contacted one after another.
class ProjectorDiscovery {
public:
    /// @param progress called at the beginning and whenever a projector is done
    explicit ProjectorDiscovery(DeviceFramework2::DeviceManager::Settings settings,
                                DisplayReport::Progress progress = {}, DiscoveryLimits limits = {});

    /// Lasts the duration of the search, then as long as the slowest projector, at most the limits.
    /// Throws `DeviceException` when there can be no search.
    [[nodiscard]] Discovery run() const;

    /// As a table.
    static void print(const std::vector<DiscoveredProjector>& projectors, std::ostream& out);

private:
    /// Returns how many had no time left for their replies.
    std::size_t introduce(std::vector<DiscoveredProjector>& projectors, std::size_t count) const;

    DeviceFramework2::DeviceManager::Settings m_settings;
    DisplayReport::Progress m_progress;
    DiscoveryLimits m_limits;
};

}  // namespace Veltrani::ProjectorSession
