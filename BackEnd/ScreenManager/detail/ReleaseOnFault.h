#pragma once

#include "DeviceFramework2/IDeviceManager.h"

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
