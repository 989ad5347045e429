#pragma once

#include "DeviceFramework2/AbstractDevice.h"
#include "DeviceFramework2/Device.h"

#include <string>

namespace Veltrani::DeviceFramework2 {

/// The types of device that the device manager can make.
class DeviceTypeManager {
public:
    DeviceTypeManager() = delete;

    /// The `Device::getTypeCode` of a projector whose model is not known.
    static constexpr int NO_TYPE_CODE = 0;

    /// "VirtualProjector": simulated, nothing is sent anywhere (`VirtualProjector`).
    [[nodiscard]] static std::wstring virtualProjectorTypeName();

    /// "PJLink": a projector that is controlled over the network by that standard (`PJLinkProjector`).
    [[nodiscard]] static std::wstring pjlinkTypeName();
};

/// Returns the identity of a device: the MAC address in `text` (`Device::getUidSourceText`, or a snippet) as twelve
/// upper-case digits, or `identity` when there is none. Never an IP address, which can move to another projector. Never
/// throws.
///
/// In well-formed XML the first attribute `mac` counts. In any other text it is the first address that stands alone.
[[nodiscard]] std::wstring createMACAddressDeviceUIDFromDeviceSnippet(const std::wstring& identity,
                                                                      const std::wstring& text);

/// Returns the device behind its command interface; null for null and for an object that is no `Device`.
[[nodiscard]] Device* deprecatedDeviceFromAbstractDevice(AbstractDevice* device);

}  // namespace Veltrani::DeviceFramework2
