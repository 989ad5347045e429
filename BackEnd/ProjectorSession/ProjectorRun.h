#pragma once

#include "ProjectorSession/ProjectorFinding.h"
#include "ProjectorSession/ProjectorSurvey.h"
#include "ProjectorSession/SurveyedDeviceManager.h"
#include "ScreenManager/ChannelManager.h"

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

class XMLConfigManager;

namespace Veltrani::ProjectorSession {

/// The projectors of a configuration for one piece of work: surveyed, then made channels of.
///
///     ProjectorRun run(*config, devices, ProjectorNeed::BLACK);
///     if (run.complete() || offline) {
///         run.buildChannels();
///         run.channels().setupProjectorState(IChannelManager::Black);
///     }
///
/// Ids and snippets of the configuration change in memory, as set-up has it; save it only when that is wanted.
class ProjectorRun {
public:
    /// Queries every projector. The configuration and the manager must outlive this.
    ProjectorRun(XMLConfigManager& config, DeviceFramework2::DeviceManager& devices, ProjectorNeed need,
                 const DisplayReport::Progress& progress = {});
    ~ProjectorRun();
    ProjectorRun(const ProjectorRun&) = delete;
    ProjectorRun& operator=(const ProjectorRun&) = delete;

    [[nodiscard]] const std::vector<ProjectorFinding>& findings() const { return m_devices.findings(); }
    /// True when every projector is usable.
    [[nodiscard]] bool complete() const;

    /// Makes a channel of every entry, with a virtual projector in place of each that is not usable. Throws what
    /// `ChannelManager::initialize` throws.
    void buildChannels();
    /// Call after `buildChannels`.
    [[nodiscard]] ChannelManager& channels() { return *m_channels; }
    [[nodiscard]] const CommandRecords& records() const { return m_devices.records(); }
    /// Channels with a virtual projector. Call after `buildChannels`.
    [[nodiscard]] std::size_t simulatedChannels();
    /// Sets the function that is called with each command that is sent from now on.
    void setObserver(RecordedDevice::Recorder observer) { m_devices.setObserver(std::move(observer)); }
    /// The name of the channel whose device has this UID, UTF-8; the UID itself when there is none.
    [[nodiscard]] std::string nameOf(const std::wstring& uid) const;
    /// True when the device with this UID is a virtual projector of a channel.
    [[nodiscard]] bool isSimulated(const std::wstring& uid) const;

private:
    [[nodiscard]] int indexOfDevice(const std::wstring& uid) const;

    XMLConfigManager& m_config;
    SurveyedDeviceManager m_devices;
    std::unique_ptr<ChannelManager> m_channels;  ///< dies before the devices that it gives back
};

}  // namespace Veltrani::ProjectorSession
