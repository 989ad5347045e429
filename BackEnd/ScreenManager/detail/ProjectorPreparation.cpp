#include "ScreenManager/detail/ProjectorPreparation.h"

#include "Common/RunCatch.h"
#include "DeviceFramework2/Commands.h"

#include <algorithm>
#include <memory>
#include <utility>

using Veltrani::DeviceFramework2::AbstractDevice;
using Veltrani::DeviceFramework2::Command;
using Veltrani::DeviceFramework2::Device;

namespace Veltrani::ScreenManagerDetail {

namespace {

/// Passed to the devices as they are; each device defines what they mean.
constexpr int FILL_PARAMETER = 5;
constexpr int CLEAR_PARAMETER = 2;

void send(const std::vector<AbstractDevice*>& devices, const std::shared_ptr<Command>& command) {
    for (AbstractDevice* const device : devices) {
        device->execute(command);
    }
}

void sendWhereSupported(const std::vector<AbstractDevice*>& devices, const std::shared_ptr<Command>& command) {
    for (AbstractDevice* const device : devices) {
        if (device->supports(*command)) {
            device->execute(command);
        }
    }
}

}  // namespace

ProjectorPreparation::ProjectorPreparation(std::vector<AbstractDevice*> devices) : m_devices(std::move(devices)) {}

bool ProjectorPreparation::isState(IChannelManager::ProjectorState state) {
    return state == IChannelManager::Black || state == IChannelManager::Gray50 || state == IChannelManager::Clear;
}

void ProjectorPreparation::run(IChannelManager::ProjectorState state) const {
    switch (state) {
        case IChannelManager::Black:
            black();
            break;
        case IChannelManager::Gray50:
            gray50();
            break;
        case IChannelManager::Clear:
            clear();
            break;
    }
}

void ProjectorPreparation::black() const {
    send(m_devices, std::make_shared<Device::Drawing::RunFillBlackTo>(FILL_PARAMETER));
    send(m_devices, std::make_shared<Device::Geometry::DisableWhiteLevelBlend>());
    disableBlackLevelBlend();
    sendWhereSupported(m_devices, std::make_shared<Device::Geometry::DisableWhiteLevelWarp>());
}

void ProjectorPreparation::gray50() const {
    send(m_devices, std::make_shared<Device::Drawing::RunFill50GrayTo>(FILL_PARAMETER));
    // Sent to every device, unlike for black: intended, measurements rely on it, as a grey that is still warped cannot
    // be measured.
    send(m_devices, std::make_shared<Device::Geometry::DisableWhiteLevelWarp>());
    send(m_devices, std::make_shared<Device::Geometry::DisableWhiteLevelBlend>());
    disableBlackLevelBlend();
}

void ProjectorPreparation::clear() const {
    send(m_devices, std::make_shared<Device::Drawing::RunClearTo>(CLEAR_PARAMETER));
}

void ProjectorPreparation::disableBlackLevelBlend() const {
    RunCatch::run([devices = m_devices] {
        const auto command = std::make_shared<Device::Geometry::DisableBlackLevelBlend>();
        const auto accepts = [&](const AbstractDevice* device) { return device->supports(*command); };
        if (std::all_of(devices.begin(), devices.end(), accepts)) {
            send(devices, command);
        }
    });
}

}  // namespace Veltrani::ScreenManagerDetail
