#include "ProjectorSession/ProjectorRun.h"

#include "Common/Utf8.h"
#include "DeviceFramework2/DeviceTypeManager.h"

#include <algorithm>

namespace Veltrani::ProjectorSession {

ProjectorRun::ProjectorRun(XMLConfigManager& config, DeviceFramework2::DeviceManager& devices, ProjectorNeed need,
                           const DisplayReport::Progress& progress)
    : m_config(config), m_devices(devices, ProjectorSurvey(need, progress).run(config, devices)) {}

ProjectorRun::~ProjectorRun() = default;

bool ProjectorRun::complete() const {
    return std::all_of(findings().begin(), findings().end(),
                       [](const ProjectorFinding& finding) { return finding.usable(); });
}

void ProjectorRun::buildChannels() {
    m_channels = std::make_unique<ChannelManager>(&m_config);
    m_channels->setDeviceManager(&m_devices);
    m_channels->initialize(!complete());
}

std::size_t ProjectorRun::simulatedChannels() {
    const auto channels = m_channels->getChannels();
    return static_cast<std::size_t>(std::count_if(channels.begin(), channels.end(), [this](const Channel& channel) {
        const auto* device = m_channels->getAbstractDeviceRefactor(channel.getProjectorConfigId());
        return device != nullptr && SurveyedDeviceManager::isSimulated(*device);
    }));
}

std::string ProjectorRun::nameOf(const std::wstring& uid) const {
    const int index = indexOfDevice(uid);
    return toUtf8(index < 0 ? uid : m_channels->getChannelInfo(index).getName());
}

bool ProjectorRun::isSimulated(const std::wstring& uid) const {
    const int index = indexOfDevice(uid);
    return index >= 0 && SurveyedDeviceManager::isSimulated(*m_channels->getDeviceRefactor(index));
}

/// By the devices, not by the entries: a virtual projector without a MAC address has a UID of its own.
int ProjectorRun::indexOfDevice(const std::wstring& uid) const {
    const int count = m_channels ? m_channels->getNumberOfChannels() : 0;
    for (int i = 0; i < count; ++i) {
        const auto* device = DeviceFramework2::deprecatedDeviceFromAbstractDevice(m_channels->getDeviceRefactor(i));
        if (device != nullptr && device->getUID() == uid) {
            return i;
        }
    }
    return -1;
}

}  // namespace Veltrani::ProjectorSession
