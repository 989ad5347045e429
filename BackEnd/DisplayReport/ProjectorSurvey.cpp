#include "DisplayReport/ProjectorSurvey.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "DeviceFramework2/Commands.h"
#include "DeviceFramework2/DeviceException.h"
#include "DeviceFramework2/DeviceManager.h"
#include "DeviceFramework2/DeviceSnippet.h"
#include "DeviceFramework2/DeviceTypeManager.h"
#include "DeviceFramework2/ProjectorAddress.h"
#include "DisplayReport/TextTable.h"

#include <memory>
#include <optional>
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
    try {
        device.execute(question);
    } catch (const DeviceException& fault) {
        throw DeviceException(__FILE__, __LINE__,
                              fault.message + L"; check that it is on, or leave it out with --offline");
    }
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

/// Whether it can be blackened, and brought back, shows in its answer to the question whether it is black.
void requireShutter(Device& device, bool black) {
    const std::wstring remedy = black
                                    ? L"cannot show a black picture; darken it by hand and leave it out with --offline"
                                    : L"cannot be told to show its input; switch its picture mute off by hand and "
                                      L"leave it out with --offline";
    const bool able =
        black ? device.supports(Device::Drawing::RunFillBlackTo(0)) : device.supports(Device::Drawing::RunClearTo(0));
    if (!able) {
        fail(device, remedy);
    }
    const auto question = std::make_shared<GetPictureMute>();
    try {
        if (device.supports(*question)) {
            device.execute(question);
        }
    } catch (const DeviceException& fault) {
        throw DeviceException(__FILE__, __LINE__, fault.message + L": it " + remedy);
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

std::string sameAs(const ProjectorFinding& earlier, const std::string& what) {
    return printable("it has the same " + what + " as channel " + earlier.name + " (" + toUtf8(earlier.id) +
                     "); correct the Device element of one of the two, or remove one");
}

/// Two entries that mean one projector; the later one is at fault, and says which the other one is.
bool isDuplicate(ProjectorFinding& finding, const std::vector<ProjectorFinding>& earlier) {
    const std::wstring uid = createMACAddressDeviceUIDFromDeviceSnippet(finding.id, finding.snippet);
    const auto address = ProjectorAddress::ofText(finding.snippet);
    for (const ProjectorFinding& other : earlier) {
        if (uid == createMACAddressDeviceUIDFromDeviceSnippet(other.id, other.snippet)) {
            finding.fault = sameAs(other, "MAC address " + toUtf8(uid));
            finding.replaceable = false;
            return true;
        }
        if (address && ProjectorAddress::ofText(other.snippet) == address) {
            finding.fault = sameAs(other, "address " + address->text());
            return true;
        }
    }
    return false;
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
            ProjectorFinding finding{ids[i], entry->getDeviceSnippet(), toUtf8(entry->getName()), {}, nullptr};
            if (!isDuplicate(finding, findings)) {
                ask(finding, manager);
            }
            findings.push_back(std::move(finding));
        }
    }
    if (m_progress) {
        m_progress(ids.size(), ids.size());
    }
    return findings;
}

void ProjectorSurvey::ask(ProjectorFinding& finding, DeviceManager& manager) const {
    try {
        requireSnippet(finding.snippet);
        finding.device = connect(finding.snippet, manager);
        requireNeed(*finding.device);
    } catch (const VeltraniExceptionBase& fault) {
        finding.fault = printable(toUtf8(fault.message));
        manager.releaseDevice(finding.device);
        finding.device = nullptr;
    }
}

void ProjectorSurvey::requireNeed(Device& device) const {
    if (m_need == ProjectorNeed::ANSWER) {
        return;
    }
    requirePower(device);
    if (m_need != ProjectorNeed::GRAY50) {
        requireShutter(device, m_need == ProjectorNeed::BLACK);
    } else if (!device.supports(Device::Drawing::RunFill50GrayTo(0))) {
        fail(device, L"cannot show a grey picture by itself; show one through its input");
    }
}

}  // namespace Veltrani::DisplayReport
