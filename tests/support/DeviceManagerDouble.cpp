#include "support/DeviceManagerDouble.h"

namespace framework = Veltrani::DeviceFramework2;

framework::AbstractDevice* DeviceManagerDouble::getDevice(const std::wstring& configurationId) {
    record("getDevice", configurationId);
    const auto found = devices.find(configurationId);
    return found == devices.end() ? nullptr : found->second;
}

framework::Device* DeviceManagerDouble::createDevice(const std::wstring& snippet, bool realDevice,
                                                     const std::wstring& typeName) {
    record("createDevice", snippet, realDevice, typeName);
    const auto found = creatable.find({snippet, realDevice});
    if (found == creatable.end() || found->second == nullptr) {
        return nullptr;
    }
    devices.emplace(found->second->uid, found->second);
    return found->second;
}

void DeviceManagerDouble::releaseDevice(framework::AbstractDevice* device) {
    record("releaseDevice", nameOf(device));
}

bool DeviceManagerDouble::bindDevice(framework::AbstractDevice* device, const std::wstring& configurationId) {
    record("bindDevice", nameOf(device), configurationId);
    auto* const whole = dynamic_cast<DeviceDouble*>(device);
    return whole != nullptr && devices.emplace(configurationId, whole).first->second == whole;
}

std::wstring DeviceManagerDouble::nameOf(const framework::AbstractDevice* device) const {
    if (device == nullptr) {
        return L"null";
    }
    for (const auto& [id, known] : devices) {
        if (known == device) {
            return known->uid;
        }
    }
    return L"foreign";
}
