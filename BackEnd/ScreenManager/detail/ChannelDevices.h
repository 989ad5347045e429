#pragma once

#include "DeviceFramework2/Commands.h"
#include "DeviceFramework2/IDeviceManager.h"

#include <log4cxx/spi/location/locationinfo.h>

#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

class ProjectorConfig;
class XMLConfigManager;

namespace Veltrani::ScreenManagerDetail {

// The devices of channels: queries to them, steps of a set-up that own one, and what binds each to its entry in the
// configuration.

/// Queries a device, as in `askDevice<GetFirmware>(device)`.
///
/// @tparam Question a `GetCommand`
/// @return nothing when there is no device, or it does not support the command. Throws what the device throws, and
/// `CmdResultNotAvailableException` when it supports the command and yet stores no result.
template <class Question>
auto askDevice(Veltrani::DeviceFramework2::AbstractDevice* device)
    -> std::optional<std::decay_t<decltype(std::declval<Question>().getResult())>> {
    const auto question = std::make_shared<Question>();
    if (device == nullptr || !device->supports(*question)) {
        return std::nullopt;
    }
    device->execute(question);
    return question->getResult();
}

/// Runs a step of a set-up that owns a device. When the step throws, the device is given back and the exception goes
/// on, so that a set-up that fails leaves no device behind.
template <class Step>
decltype(auto) releaseOnFault(Veltrani::DeviceFramework2::IDeviceManager& manager,
                              Veltrani::DeviceFramework2::AbstractDevice* device, const Step& step) {
    try {
        return step();
    } catch (...) {
        manager.releaseDevice(device);
        throw;
    }
}

/// Finds the device of a configured projector, or puts a virtual projector in its place, and brings the configuration
/// entry in line with it. Everything is logged under the name of the `ChannelManager`, at the place of its operation.
class ProjectorBinding {
public:
    struct Result {
        Veltrani::DeviceFramework2::Device* device;  ///< never null; released by the caller
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

/// What the configuration keeps of a device that becomes a channel. Everything is logged under the name of the
/// `ChannelManager`, at the place of its operation.
class DeviceEntry {
public:
    DeviceEntry() = delete;

    /// Logs what the device is, if it has a location, and stores its snippet, its pond-of-mirror sizes, the name that
    /// suits its channel, and its native resolution where it reports one. What the device and the entry throw passes
    /// through; what was stored before stays.
    /// @param operation whose part this is; the location of the log records, except those of the snippet, which are
    /// logged by `VeltraniLogging::multiLineLog`
    static void store(Veltrani::DeviceFramework2::Device& device, const std::wstring& uid, ProjectorConfig& entry,
                      const log4cxx::spi::LocationInfo& operation);

    /// Returns the pond-of-mirror size that suits a projector (`ProjectorConfig::setPondOfMirror`), by its model
    /// (`Device::getTypeCode`) and, for some models, its native resolution. The resolution is requested from every
    /// device that supports the command, whatever its model: intended. Returns the usual size for null.
    [[nodiscard]] static int pondOfMirrorSize(Veltrani::DeviceFramework2::Device* device);
};

}  // namespace Veltrani::ScreenManagerDetail
