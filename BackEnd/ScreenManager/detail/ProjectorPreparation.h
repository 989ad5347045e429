#pragma once

#include "ScreenManager/IChannelManager.h"

#include <vector>

namespace Veltrani::ScreenManagerDetail {

/// Brings a list of projectors into a state, by commands in a fixed order. The behaviour of
/// `IChannelManager::setupProjectorState` once the devices are known.
///
/// Whether a command is sent to a projector that does not support it depends on the command and the state: most are, so
/// that the fault shows. Results are not evaluated. What a projector throws passes through, and the commands before it
/// stay in effect.
class ProjectorPreparation {
public:
    /// @param devices none of them null; must outlive this object
    explicit ProjectorPreparation(std::vector<Veltrani::DeviceFramework2::AbstractDevice*> devices);

    /// Returns whether `run` does anything for this value.
    [[nodiscard]] static bool isState(IChannelManager::ProjectorState state);

    void run(IChannelManager::ProjectorState state) const;

private:
    void black() const;
    void gray50() const;
    void clear() const;

    /// Sends nothing unless every projector can do it: a display with the correction on some of its projectors only
    /// would not be evenly dark. A fault in here is reported by `RunCatch`, and the preparation goes on.
    void disableBlackLevelBlend() const;

    std::vector<Veltrani::DeviceFramework2::AbstractDevice*> m_devices;
};

}  // namespace Veltrani::ScreenManagerDetail
