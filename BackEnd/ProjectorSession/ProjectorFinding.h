#pragma once

#include <string>

namespace Veltrani::DeviceFramework2 {

class Device;

}  // namespace Veltrani::DeviceFramework2

namespace Veltrani::ProjectorSession {

/// What contacting a configured projector led to.
struct ProjectorFinding {
    std::wstring id;       ///< of the configuration entry
    std::wstring snippet;  ///< of the configuration entry
    std::string name;      ///< of the channel, UTF-8
    /// Why the projector is not usable, and what to mend: one line, UTF-8; empty when it is.
    std::string fault;
    /// Belongs to the device manager of the survey, where it is counted once for this finding. Null with a fault.
    DeviceFramework2::Device* device = nullptr;
    /// False for an entry with the identity of another one: no channel can be made of it, not even a simulated one.
    bool replaceable = true;

    [[nodiscard]] bool usable() const { return fault.empty(); }
};

}  // namespace Veltrani::ProjectorSession
