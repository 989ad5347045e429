#pragma once

#include "DeviceFramework2/IDeviceManager.h"
#include "support/DeviceDouble.h"
#include "support/Recorder.h"

#include <map>
#include <string>
#include <utility>

/// A device manager made of doubles, none of which it owns. In the trace a device stands under its UID, a null one as
/// "null" and one that the manager never had to do with as "foreign".
class DeviceManagerDouble : public Veltrani::DeviceFramework2::IDeviceManager, public Recorder {
public:
    explicit DeviceManagerDouble(Trace* trace = nullptr) : Recorder("devices", trace) {}

    /// What `getDevice` returns, by configuration id. The device that `createDevice` makes is added under its UID.
    std::map<std::wstring, DeviceDouble*> devices;
    /// What `createDevice` makes, by snippet and whether a real device is requested; null without an entry.
    std::map<std::pair<std::wstring, bool>, DeviceDouble*> creatable;

    Veltrani::DeviceFramework2::AbstractDevice* getDevice(const std::wstring& configurationId) override;
    Veltrani::DeviceFramework2::Device* createDevice(const std::wstring& snippet, bool realDevice,
                                                     const std::wstring& typeName) override;
    void releaseDevice(Veltrani::DeviceFramework2::AbstractDevice* device) override;
    bool bindDevice(Veltrani::DeviceFramework2::AbstractDevice* device, const std::wstring& configurationId) override;

private:
    [[nodiscard]] std::wstring nameOf(const Veltrani::DeviceFramework2::AbstractDevice* device) const;
};
