#pragma once

#include "KelvoControl/Blend.h"

#include <memory>
#include <string>

namespace Veltrani::DeviceFramework2 {

class Device;

}  // namespace Veltrani::DeviceFramework2

/// A projector as the channel maps see it.
class KelvoProjector {
public:
    /// Throws `VeltraniException` for an empty handle.
    explicit KelvoProjector(std::shared_ptr<const Blend> blend);

    [[nodiscard]] const Blend& getBlend() const;

    /// Returns the name of a new channel: the location of its device, such as "PJLink 192.0.2.10:4352", or the UID of a
    /// device that does not report one. Empty for null.
    [[nodiscard]] static std::wstring suggestNameForChannel(const Veltrani::DeviceFramework2::Device* device);

private:
    std::shared_ptr<const Blend> m_blend;
};
