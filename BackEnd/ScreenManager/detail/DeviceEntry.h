#pragma once

#include <log4cxx/spi/location/locationinfo.h>

#include <string>

class ProjectorConfig;

namespace Veltrani::DeviceFramework2 {

class Device;

}  // namespace Veltrani::DeviceFramework2

/// What the configuration keeps of a device that becomes a channel. Everything is logged under the name of the
/// `ChannelManager`, at the place of its operation.
class DeviceEntry {
public:
    DeviceEntry() = delete;

    /// Logs what the device is, if it has a location, and stores its snippet, its pond-of-mirror sizes, the name that
    /// suits its channel, and its native resolution where it can tell it. What the device and the entry throw passes
    /// through; what was stored before stays.
    /// @param operation whose part this is; the location of the log records, except those of the snippet, which are
    /// logged by `VeltraniLogging::multiLineLog`
    static void store(Veltrani::DeviceFramework2::Device& device, const std::wstring& uid, ProjectorConfig& entry,
                      const log4cxx::spi::LocationInfo& operation);

    /// The pond-of-mirror size that suits a projector (`ProjectorConfig::setPondOfMirror`), by its model
    /// (`Device::getTypeCode`) and, for some models, its native resolution. The resolution is asked of every device
    /// that can tell it, whatever its model: intended. The usual size for null.
    [[nodiscard]] static int pondOfMirrorSize(Veltrani::DeviceFramework2::Device* device);
};
