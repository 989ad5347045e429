#include "DeviceFramework2/DeviceTypeManager.h"

#include "DeviceFramework2/DeviceSnippet.h"

namespace Veltrani::DeviceFramework2 {

std::wstring DeviceTypeManager::virtualProjectorTypeName() {
    return L"VirtualProjector";
}

std::wstring DeviceTypeManager::pjlinkTypeName() {
    return L"PJLink";
}

std::wstring createMACAddressDeviceUIDFromDeviceSnippet(const std::wstring& identity, const std::wstring& text) {
    try {
        const auto mac = DeviceSnippet::macAddressIn(text);
        return mac ? mac->uid() : identity;
    } catch (...) {
        // Callers compute identities outside any guard; a text that cannot be read holds no address.
        return identity;
    }
}

Device* deprecatedDeviceFromAbstractDevice(AbstractDevice* device) {
    return dynamic_cast<Device*>(device);
}

}  // namespace Veltrani::DeviceFramework2
