#pragma once

#include "DeviceFramework2/IDeviceManager.h"
#include "ProjectorSession/CommandRecord.h"
#include "ProjectorSession/ProjectorFinding.h"
#include "ProjectorSession/RecordedDevice.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Veltrani::DeviceFramework2 {

class DeviceManager;

}  // namespace Veltrani::DeviceFramework2

namespace Veltrani::ProjectorSession {

/// The device manager of one run over surveyed projectors: no projector is queried for a second time, and everything
/// that is sent through it is recorded.
///
/// A projector that the survey found unusable does not exist here, so that a caller that sets channels up treats it as
/// missing. Devices are handed out as `RecordedDevice`s, one per device.
class SurveyedDeviceManager : public DeviceFramework2::IDeviceManager {
public:
    /// @param manager the one that the survey used; must outlive this
    /// @param findings of the survey; their devices are given back with this object
    SurveyedDeviceManager(DeviceFramework2::DeviceManager& manager, std::vector<ProjectorFinding> findings);
    ~SurveyedDeviceManager() override;

    DeviceFramework2::AbstractDevice* getDevice(const std::wstring& configurationId) override;
    DeviceFramework2::Device* createDevice(const std::wstring& snippet, bool realDevice,
                                           const std::wstring& typeName) override;
    void releaseDevice(DeviceFramework2::AbstractDevice* device) override;
    bool bindDevice(DeviceFramework2::AbstractDevice* device, const std::wstring& configurationId) override;

    [[nodiscard]] const std::vector<ProjectorFinding>& findings() const { return m_findings; }
    /// What was sent to the devices as they are handed out, whether it arrived or not.
    [[nodiscard]] const CommandRecords& records() const { return m_records; }
    /// Sets the function that is called with each command from now on.
    void setObserver(RecordedDevice::Recorder observer) { m_observer = std::move(observer); }
    /// The device behind one that is handed out, for `DeviceTalks`; any other, and null, as it is. What is sent to it
    /// is not recorded.
    [[nodiscard]] static DeviceFramework2::AbstractDevice* deviceBehind(DeviceFramework2::AbstractDevice* device);
    /// True for a virtual projector of this manager.
    [[nodiscard]] static bool isSimulated(const DeviceFramework2::AbstractDevice& device);

private:
    void note(const CommandRecord& record);
    RecordedDevice* recorded(DeviceFramework2::Device* device);
    [[nodiscard]] bool isUnusable(const std::wstring& snippet) const;

    DeviceFramework2::DeviceManager& m_manager;
    std::vector<ProjectorFinding> m_findings;
    CommandRecords m_records;
    RecordedDevice::Recorder m_observer;
    std::map<const DeviceFramework2::AbstractDevice*, std::unique_ptr<RecordedDevice>> m_devices;
};

}  // namespace Veltrani::ProjectorSession
