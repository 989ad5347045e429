#pragma once

#include "DeviceFramework2/AbstractDevice.h"
#include "DeviceFramework2/Location.h"

#include <string>

namespace Veltrani::DeviceFramework2 {

/// A device with an identity: a projector. Owned by the device manager that made it.
///
/// The commands themselves are in "DeviceFramework2/Commands.h".
class Device : public AbstractDevice {
public:
    /// Commands that draw a test picture.
    struct Drawing {
        class RunFillBlackTo;
        class RunFill50GrayTo;
        class RunClearTo;
    };

    /// Commands that switch the projector's own picture corrections off.
    struct Geometry {
        class DisableWhiteLevelWarp;
        class DisableWhiteLevelBlend;
        class DisableBlackLevelBlend;
    };

    /// Returns the identity of the device: the id of its configuration entry.
    [[nodiscard]] virtual std::wstring getUID() const = 0;
    /// Returns the text from which the device can be created again; this is what a configuration stores.
    [[nodiscard]] virtual std::wstring getDeviceSnippet() const = 0;
    /// Returns the text in which `createMACAddressDeviceUIDFromDeviceSnippet` finds the identity.
    [[nodiscard]] virtual std::wstring getUidSourceText() const = 0;
    /// Returns null when the place is not known; owned by the device.
    [[nodiscard]] virtual const Location* getLocation() const = 0;
    /// Returns a number for the model of the projector, where models differ in the treatment of their picture;
    /// `DeviceTypeManager::NO_TYPE_CODE` where that is not known.
    [[nodiscard]] virtual int getTypeCode() const = 0;
};

}  // namespace Veltrani::DeviceFramework2
