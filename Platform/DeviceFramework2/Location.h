#pragma once

#include <string>

namespace Veltrani::DeviceFramework2 {

/// The place of a device. Two devices with the same description are the same device.
class Location {
public:
    Location() = default;
    Location(const Location&) = default;
    Location(Location&&) = default;
    Location& operator=(const Location&) = default;
    Location& operator=(Location&&) = default;
    virtual ~Location() = default;

    /// Returns a text for people, such as "PJLink 192.0.2.10:4352".
    [[nodiscard]] virtual std::wstring getDescription() const = 0;
};

}  // namespace Veltrani::DeviceFramework2
