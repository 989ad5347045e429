#pragma once

#include "DeviceFramework2/MacAddress.h"
#include "DeviceFramework2/ProjectorAddress.h"

#include <optional>
#include <string>

class ChannelManager;
class ProjectorConfig;
class XMLConfigFile;

namespace Veltrani::DeviceFramework2 {

class Device;
class DeviceManager;

}  // namespace Veltrani::DeviceFramework2

namespace Veltrani::ProjectorSession {

/// Adds a projector to a configuration, as an entry and as a channel. No projector but the new one is contacted.
///
/// Every fault is a `VeltraniException` with a message for people; the configuration may be half changed then and must
/// not be saved.
class ProjectorAddition {
public:
    /// Which projector: by its address, by its MAC address, or both.
    struct Target {
        std::optional<DeviceFramework2::ProjectorAddress> address;  ///< without: the network is searched
        std::optional<DeviceFramework2::MacAddress> mac;            ///< without: requested from the projector
        std::wstring name;                                          ///< of the channel; empty: where it is
    };

    struct Added {
        std::wstring uid;
        std::wstring name;
        std::wstring place;  ///< "PJLink 192.0.2.10:4352"
        int width = 0;       ///< pixels, 0 when the projector does not report it
        int height = 0;
    };

    ProjectorAddition(XMLConfigFile& config, DeviceFramework2::DeviceManager& devices)
        : m_config(config), m_devices(devices) {}

    /// Refuses a projector, an address and a name that the configuration has already, and a MAC address that is not the
    /// one that the projector at the address reports.
    Added add(const Target& target) const;

    /// Adds the entry that `add` has made once more, to a newer state of the configuration; no projector is contacted.
    /// The same is refused as there, with nothing changed.
    /// @param statedName that of the target; empty when the name of the entry is where it is, which need not be new
    static void repeat(const ProjectorConfig& entry, const std::wstring& statedName, XMLConfigFile& newer);

private:
    [[nodiscard]] DeviceFramework2::MacAddress macAt(const DeviceFramework2::ProjectorAddress& address) const;
    [[nodiscard]] std::optional<DeviceFramework2::MacAddress> askMac(
        const DeviceFramework2::ProjectorAddress& address) const;
    void requireSame(const DeviceFramework2::MacAddress& mac, const DeviceFramework2::ProjectorAddress& address,
                     DeviceFramework2::Device* device) const;
    DeviceFramework2::Device* connect(const DeviceFramework2::MacAddress& mac, const Target& target) const;
    void addChannel(ChannelManager& channels, DeviceFramework2::Device* device) const;

    XMLConfigFile& m_config;
    DeviceFramework2::DeviceManager& m_devices;
};

}  // namespace Veltrani::ProjectorSession
