#pragma once

#include "DeviceFramework2/DeviceManager.h"
#include "DeviceFramework2/MacAddress.h"

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace Veltrani::DisplayReport {

/// A projector that answered a search. All texts UTF-8.
struct DiscoveredProjector {
    DeviceFramework2::MacAddress mac;
    std::string address;  ///< "192.0.2.10:4352"
    std::string name;     ///< that its owner gave it
    std::string model;
    std::string fault;  ///< why it does not tell name and model; empty when it does
};

/// Searches the network for projectors and asks those that answer who they are.
class ProjectorDiscovery {
public:
    /// Told before each projector is asked how many are done, of how many.
    using Progress = std::function<void(std::size_t done, std::size_t total)>;

    explicit ProjectorDiscovery(DeviceFramework2::DeviceManager::Settings settings, Progress progress = {});

    /// By MAC address. Lasts the duration of the search, and up to the limits of the settings per projector.
    /// Throws `DeviceException` when there can be no search.
    [[nodiscard]] std::vector<DiscoveredProjector> run() const;

    /// As a table.
    static void print(const std::vector<DiscoveredProjector>& projectors, std::ostream& out);

private:
    [[nodiscard]] DiscoveredProjector ask(const DeviceFramework2::PjlinkSearch::Answer& answer) const;

    DeviceFramework2::DeviceManager::Settings m_settings;
    Progress m_progress;
};

}  // namespace Veltrani::DisplayReport
