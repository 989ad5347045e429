#include "KelvoControl/KelvoProjector.h"

#include "DeviceFramework2/Device.h"

std::wstring KelvoProjector::suggestNameForChannel(const Veltrani::DeviceFramework2::Device* device) {
    if (device == nullptr) {
        return {};
    }
    const Veltrani::DeviceFramework2::Location* const location = device->getLocation();
    const std::wstring description = location != nullptr ? location->getDescription() : std::wstring();
    return description.empty() ? device->getUID() : description;
}
