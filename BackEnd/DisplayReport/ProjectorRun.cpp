#include "DisplayReport/ProjectorRun.h"

#include "Common/Utf8.h"

#include <algorithm>

namespace Veltrani::DisplayReport {

ProjectorRun::ProjectorRun(XMLConfigManager& config, DeviceFramework2::DeviceManager& devices, ProjectorNeed need,
                           const ProjectorSurvey::Progress& progress)
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
    const int index = m_channels ? m_channels->getChannelIndexByID(uid) : -1;
    return toUtf8(index < 0 ? uid : m_channels->getChannelInfo(index).getName());
}

}  // namespace Veltrani::DisplayReport
