#pragma once

#include <string>

class ProjectorConfig;

namespace Veltrani::DeviceFramework2 {

class AbstractDevice;

}  // namespace Veltrani::DeviceFramework2

/// Finds the device and the configuration entry of a projector. Neither belongs to the caller.
class IProjectorProvider {
public:
    IProjectorProvider() = default;
    IProjectorProvider(const IProjectorProvider&) = default;
    IProjectorProvider& operator=(const IProjectorProvider&) = default;

    /// Returns the device of a channel; null when there is no such channel or it has no device.
    virtual Veltrani::DeviceFramework2::AbstractDevice* getAbstractDeviceRefactor(
        const std::wstring& projectorConfigId) = 0;

    /// Returns the entry with that id, whether there is a channel for it or not; null when there is none.
    virtual ProjectorConfig* getProjectorConfig(const std::wstring& projectorConfigId) = 0;

    virtual ~IProjectorProvider();
};
