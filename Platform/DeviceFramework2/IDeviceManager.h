#pragma once

#include "DeviceFramework2/AbstractDevice.h"
#include "DeviceFramework2/Device.h"

#include <string>

namespace Veltrani::DeviceFramework2 {

/// Makes devices, owns them and finds them again.
class IDeviceManager {
public:
    IDeviceManager() = default;
    IDeviceManager(const IDeviceManager&) = delete;
    IDeviceManager& operator=(const IDeviceManager&) = delete;
    virtual ~IDeviceManager() = default;

    /// Returns the device of a configuration entry; null when there is none.
    virtual AbstractDevice* getDevice(const std::wstring& configurationId) = 0;

    /// Makes the device that a snippet describes, or counts the one that is already there once more.
    /// @param realDevice false for a virtual projector, which nothing is sent to
    /// @param typeName empty: the type that the snippet names
    /// @return null when a real device does not answer; the cause is logged
    virtual Device* createDevice(const std::wstring& snippet, bool realDevice, const std::wstring& typeName) = 0;

    /// Releases a device: it is destroyed when it has been released as often as it was created. Null is tolerated.
    virtual void releaseDevice(AbstractDevice* device) = 0;

    /// States under which configuration entry a device is kept, for devices whose snippet holds no identity of its own.
    /// Not pure, so that existing managers stay complete; the default body returns false.
    /// @return true when `getDevice(configurationId)` returns the device from now on
    virtual bool bindDevice(AbstractDevice* device, const std::wstring& configurationId);
};

}  // namespace Veltrani::DeviceFramework2
