#include "ProjectorSession/SurveyedDeviceManager.h"

#include "DeviceFramework2/DeviceManager.h"
#include "DeviceFramework2/DeviceTypeManager.h"
#include "DeviceFramework2/VirtualProjector.h"

#include <algorithm>
#include <utility>

namespace Veltrani::ProjectorSession {

using DeviceFramework2::AbstractDevice;
using DeviceFramework2::Device;

SurveyedDeviceManager::SurveyedDeviceManager(DeviceFramework2::DeviceManager& manager,
                                             std::vector<ProjectorFinding> findings)
    : m_manager(manager), m_findings(std::move(findings)) {}

SurveyedDeviceManager::~SurveyedDeviceManager() {
    for (const ProjectorFinding& finding : m_findings) {
        try {
            m_manager.releaseDevice(finding.device);
        } catch (...) {
            // A device that was given back before is logged, for which memory may be missing.
            continue;
        }
    }
}

AbstractDevice* SurveyedDeviceManager::getDevice(const std::wstring& configurationId) {
    return recorded(DeviceFramework2::deprecatedDeviceFromAbstractDevice(m_manager.getDevice(configurationId)));
}

Device* SurveyedDeviceManager::createDevice(const std::wstring& snippet, bool realDevice,
                                            const std::wstring& typeName) {
    if (realDevice && isUnusable(snippet)) {
        return nullptr;
    }
    return recorded(m_manager.createDevice(snippet, realDevice, typeName));
}

void SurveyedDeviceManager::releaseDevice(AbstractDevice* device) {
    AbstractDevice* const own = deviceBehind(device);
    m_manager.releaseDevice(own);
    if (m_manager.useCount(own) == 0) {
        m_devices.erase(own);
    }
}

bool SurveyedDeviceManager::bindDevice(AbstractDevice* device, const std::wstring& configurationId) {
    return m_manager.bindDevice(deviceBehind(device), configurationId);
}

AbstractDevice* SurveyedDeviceManager::deviceBehind(AbstractDevice* device) {
    const auto* recorded = dynamic_cast<const RecordedDevice*>(device);
    return recorded == nullptr ? device : &recorded->device();
}

bool SurveyedDeviceManager::isSimulated(const AbstractDevice& device) {
    const auto* recorded = dynamic_cast<const RecordedDevice*>(&device);
    const AbstractDevice& own = recorded == nullptr ? device : recorded->device();
    return dynamic_cast<const DeviceFramework2::VirtualProjector*>(&own) != nullptr;
}

void SurveyedDeviceManager::note(const CommandRecord& record) {
    m_records.push_back(record);
    if (m_observer) {
        m_observer(record);
    }
}

RecordedDevice* SurveyedDeviceManager::recorded(Device* device) {
    if (device == nullptr) {
        return nullptr;
    }
    auto& slot = m_devices[device];
    if (!slot) {
        slot = std::make_unique<RecordedDevice>(*device, [this](const CommandRecord& record) { note(record); });
    }
    return slot.get();
}

bool SurveyedDeviceManager::isUnusable(const std::wstring& snippet) const {
    return std::any_of(m_findings.begin(), m_findings.end(), [&](const ProjectorFinding& finding) {
        return finding.snippet == snippet && !finding.usable();
    });
}

}  // namespace Veltrani::ProjectorSession
