#pragma once

#include <log4cxx/spi/location/locationinfo.h>

#include <string>

class ProjectorConfig;
class XMLConfigManager;

namespace Veltrani::DeviceFramework2 {

class Device;
class IDeviceManager;

}  // namespace Veltrani::DeviceFramework2

/// Finds the device of a configured projector, or puts a virtual projector in its place, and brings the configuration
/// entry in line with it. Everything is logged under the name of the `ChannelManager`, at the place of its operation.
class ProjectorBinding {
public:
    struct Result {
        Veltrani::DeviceFramework2::Device* device;  ///< never null; the caller's to release
        std::wstring uid;                            ///< of the device, and the id of the entry from now on
    };

    /// @param config not owned; not null
    /// @param deviceManager not owned; without one no projector has a device
    /// @param replaceMissing whether a virtual projector takes the place of one that cannot be reached
    /// @param operation whose part this is; the location of every log record
    ProjectorBinding(XMLConfigManager* config, Veltrani::DeviceFramework2::IDeviceManager* deviceManager,
                     bool replaceMissing, const log4cxx::spi::LocationInfo& operation);

    /// Gets the device that the entry describes (with `DravixDiagnostics::doVirtualLoad` a virtual projector from the
    /// start), renames the entry to the UID of the device and stores the device's snippet in it.
    ///
    /// Throws `ChannelInitializationException`, naming the section of the entry, when there is no device, and
    /// `ChannelSwapException` when another entry has the UID. Whatever is thrown, no device is left behind.
    Result bind(const std::wstring& id, ProjectorConfig& entry) const;

    [[nodiscard]] const log4cxx::spi::LocationInfo& operation() const { return m_operation; }

private:
    [[nodiscard]] Veltrani::DeviceFramework2::Device* acquire(const std::wstring& id,
                                                              const ProjectorConfig& entry) const;
    [[nodiscard]] Veltrani::DeviceFramework2::Device* createConfigured(const ProjectorConfig& entry) const;
    [[nodiscard]] Veltrani::DeviceFramework2::Device* createVirtual(const std::wstring& id,
                                                                    const ProjectorConfig& entry) const;
    [[nodiscard]] Veltrani::DeviceFramework2::Device* replace(const std::wstring& id, const ProjectorConfig& entry,
                                                              const std::wstring& failure) const;

    XMLConfigManager* m_config;
    Veltrani::DeviceFramework2::IDeviceManager* m_deviceManager;
    bool m_replaceMissing;
    log4cxx::spi::LocationInfo m_operation;
};
