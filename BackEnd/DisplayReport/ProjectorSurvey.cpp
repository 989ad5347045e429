#include "DisplayReport/ProjectorSurvey.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "DeviceFramework2/Commands.h"
#include "DeviceFramework2/DeviceException.h"
#include "DeviceFramework2/DeviceManager.h"
#include "DeviceFramework2/DeviceSnippet.h"
#include "DisplayReport/TextTable.h"

#include <memory>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

using namespace DeviceFramework2;

constexpr const wchar_t* REMEDY =
    L"; check that it has power, that its network control is switched on, and its address and password";

[[noreturn]] void fail(const Device& device, const std::wstring& reason) {
    const Location* place = device.getLocation();
    const std::wstring where = place == nullptr ? L"" : L" (" + place->getDescription() + L")";
    throw DeviceException(__FILE__, __LINE__, L"projector " + device.getUID() + where + L" " + reason);
}

void requirePower(Device& device) {
    const auto question = std::make_shared<GetPowerState>();
    if (!device.supports(*question)) {
        return;
    }
    device.execute(question);
    switch (question->getResult()) {
        case PowerState::ON:
            return;
        case PowerState::STANDBY:
            fail(device, L"is in standby; switch it on");
        case PowerState::COOLING:
            fail(device, L"is cooling down; wait, then switch it on");
        case PowerState::WARMING_UP:
            fail(device, L"is warming up; wait until it is on");
    }
}

/// Whether it can be blackened shows in its answer to the question whether it is.
void requireShutter(Device& device) {
    if (!device.supports(Device::Drawing::RunFillBlackTo(0))) {
        fail(device, L"cannot show a black picture");
    }
    const auto question = std::make_shared<GetPictureMute>();
    if (device.supports(*question)) {
        device.execute(question);
    }
}

/// Throws when the snippet is broken, before any network is used.
void requireSnippet(const std::wstring& snippet) {
    try {
        static_cast<void>(DeviceSnippet::parse(snippet));
    } catch (const DeviceException& fault) {
        throw DeviceException(__FILE__, __LINE__, fault.message + L"; correct the Device element of the entry");
    }
}

Device* connect(const std::wstring& snippet, DeviceManager& manager) {
    try {
        return manager.connectDevice(snippet);
    } catch (const DeviceException& fault) {
        // A missing password brings its own remedy along.
        const bool complete = fault.message.ends_with(manager.settings().pjlink.passwords.remedy());
        throw DeviceException(__FILE__, __LINE__, complete ? fault.message : fault.message + REMEDY);
    }
}

}  // namespace

ProjectorSurvey::ProjectorSurvey(ProjectorNeed need, Progress progress)
    : m_need(need), m_progress(std::move(progress)) {}

std::vector<ProjectorFinding> ProjectorSurvey::run(const XMLConfigManager& config, DeviceManager& manager) const {
    std::vector<ProjectorFinding> findings;
    const auto ids = config.getProjectorConfigIds();
    for (std::size_t i = 0; i < ids.size(); ++i) {
        if (m_progress) {
            m_progress(i, ids.size());
        }
        if (const ProjectorConfig* entry = config.getProjectorConfig(ids[i])) {
            findings.push_back(ask(ids[i], *entry, manager));
        }
    }
    if (m_progress) {
        m_progress(ids.size(), ids.size());
    }
    return findings;
}

ProjectorFinding ProjectorSurvey::ask(const std::wstring& id, const ProjectorConfig& entry,
                                      DeviceManager& manager) const {
    ProjectorFinding finding{id, entry.getDeviceSnippet(), toUtf8(entry.getName()), {}, nullptr};
    try {
        requireSnippet(finding.snippet);
        finding.device = connect(finding.snippet, manager);
        requireNeed(*finding.device);
    } catch (const VeltraniExceptionBase& fault) {
        finding.fault = printable(toUtf8(fault.message));
        manager.releaseDevice(finding.device);
        finding.device = nullptr;
    }
    return finding;
}

void ProjectorSurvey::requireNeed(Device& device) const {
    if (m_need == ProjectorNeed::ANSWER) {
        return;
    }
    requirePower(device);
    if (m_need != ProjectorNeed::GRAY50) {
        requireShutter(device);
    } else if (!device.supports(Device::Drawing::RunFill50GrayTo(0))) {
        fail(device, L"cannot show a grey picture by itself; show one through its input");
    }
}

}  // namespace Veltrani::DisplayReport
