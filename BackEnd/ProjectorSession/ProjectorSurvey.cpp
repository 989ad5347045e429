#include "ProjectorSession/ProjectorSurvey.h"

#include "Common/QuotedText.h"
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

#include <memory>
#include <optional>
#include <utility>

namespace Veltrani::ProjectorSession {

namespace {

using namespace DeviceFramework2;

[[noreturn]] void fail(const Device& device, const std::wstring& reason) {
    const Location* place = device.getLocation();
    const std::wstring where = place == nullptr ? L"" : L" (" + place->getDescription() + L")";
    throw DeviceException(__FILE__, __LINE__, L"projector " + device.getUID() + where + L" " + reason);
}

void requireOn(const Device& device, PowerState power) {
    switch (power) {
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

/// Throws when the snippet is broken, before any network is used.
void requireSnippet(const std::wstring& snippet) {
    try {
        static_cast<void>(DeviceSnippet::parse(snippet));
    } catch (const DeviceException& fault) {
        throw DeviceException(__FILE__, __LINE__, fault.message + L"; correct the Device element of the entry");
    }
}

/// The questions that the survey sends to one projector, one after another.
class Inquiry {
public:
    Inquiry(ProjectorFinding& finding, ProjectorNeed need) : m_finding(finding), m_need(need) {}

    /// The next question; null when there is none left or none is worth sending any more.
    /// @param fault of the contact or of the question before; null when there was none
    std::shared_ptr<Command> next(Device* device, const DeviceException* fault) {
        try {
            if (fault != nullptr) {
                throw DeviceException(__FILE__, __LINE__, fault->message + remedyFor(*fault));
            }
            m_finding.device = device;
            return following(*device);
        } catch (const VeltraniExceptionBase& reason) {
            m_finding.fault = onOneLine(toUtf8(reason.message));
            return nullptr;
        }
    }

private:
    enum class Stage { CONTACT, POWER, ABILITY };

    [[nodiscard]] std::wstring remedyFor(const DeviceException& fault) const {
        if (fault.cause == DeviceException::Cause::THIS_MACHINE) {
            return {};  // it brings its own remedy along
        }
        switch (m_stage) {
            case Stage::CONTACT:
                return L"; check that it has power, that its network control is switched on, and its address and "
                       L"password";
            case Stage::POWER:
                return L"; check that it is on, or leave it out with --offline";
            case Stage::ABILITY:
                return L": it " + shutterRemedy();
        }
        return {};
    }

    std::shared_ptr<Command> following(const Device& device) {
        if (m_need == ProjectorNeed::ANSWER) {
            return nullptr;
        }
        if (m_stage == Stage::CONTACT) {
            m_stage = Stage::POWER;
            if (device.supports(*m_power)) {
                return m_power;
            }
        } else if (m_stage == Stage::POWER) {
            requireOn(device, m_power->getResult());
        } else {
            return nullptr;
        }
        m_stage = Stage::ABILITY;
        return abilityOf(device);
    }

    /// Whether it can be blackened, and brought back, shows in its reply to the question whether it is black.
    [[nodiscard]] std::shared_ptr<Command> abilityOf(const Device& device) const {
        if (m_need == ProjectorNeed::GRAY50) {
            if (!device.supports(Device::Drawing::RunFill50GrayTo(0))) {
                fail(device, L"cannot show a grey picture by itself; show one through its input");
            }
            return nullptr;
        }
        const bool able = m_need == ProjectorNeed::BLACK ? device.supports(Device::Drawing::RunFillBlackTo(0))
                                                         : device.supports(Device::Drawing::RunClearTo(0));
        if (!able) {
            fail(device, shutterRemedy());
        }
        auto question = std::make_shared<GetPictureMute>();
        return device.supports(*question) ? question : nullptr;
    }

    [[nodiscard]] std::wstring shutterRemedy() const {
        return m_need == ProjectorNeed::BLACK
                   ? L"cannot show a black picture; darken it by hand and leave it out with --offline"
                   : L"cannot be made to show its input; switch its picture mute off by hand and leave it out with "
                     L"--offline";
    }

    ProjectorFinding& m_finding;
    ProjectorNeed m_need;
    Stage m_stage = Stage::CONTACT;
    std::shared_ptr<GetPowerState> m_power = std::make_shared<GetPowerState>();
};

std::string sameAs(const ProjectorFinding& earlier, const std::string& what) {
    return onOneLine("it has the same " + what + " as channel " + earlier.name + " (" + toUtf8(earlier.id) +
                     "); correct the Device element of one of the two, or remove one");
}

/// Two entries that mean one projector; the later one is at fault, and names the other one.
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

/// One finding per entry, with the faults that are found without contacting a projector.
std::vector<ProjectorFinding> entriesOf(const XMLConfigManager& config) {
    std::vector<ProjectorFinding> findings;
    for (const std::wstring& id : config.getProjectorConfigIds()) {
        const ProjectorConfig* entry = config.getProjectorConfig(id);
        if (entry == nullptr) {
            continue;
        }
        ProjectorFinding finding{id, entry->getDeviceSnippet(), toUtf8(entry->getName()), {}, nullptr};
        try {
            if (!isDuplicate(finding, findings)) {
                requireSnippet(finding.snippet);
            }
        } catch (const VeltraniExceptionBase& fault) {
            finding.fault = onOneLine(toUtf8(fault.message));
        }
        findings.push_back(std::move(finding));
    }
    return findings;
}

}  // namespace

ProjectorSurvey::ProjectorSurvey(ProjectorNeed need, DisplayReport::Progress progress)
    : m_need(need), m_progress(std::move(progress)) {}

std::vector<ProjectorFinding> ProjectorSurvey::run(const XMLConfigManager& config, DeviceManager& manager) const {
    std::vector<ProjectorFinding> findings = entriesOf(config);
    std::vector<ProjectorFinding*> asked;
    for (ProjectorFinding& finding : findings) {
        if (finding.usable()) {
            asked.push_back(&finding);
        }
    }
    std::size_t done = 0;
    const auto report = [&] {
        if (m_progress) {
            m_progress(done, findings.size());
        }
    };
    report();
    while (done < findings.size() - asked.size()) {
        ++done;
        report();
    }
    std::vector<DeviceManager::Connecting> talks;
    for (ProjectorFinding* finding : asked) {
        const auto inquiry = std::make_shared<Inquiry>(*finding, m_need);
        talks.push_back({finding->snippet, [inquiry, &done, &report](Device* device, const DeviceException* fault) {
                             auto question = inquiry->next(device, fault);
                             if (!question) {
                                 ++done;
                                 report();
                             }
                             return question;
                         }});
    }
    manager.connectDevices(talks);
    for (ProjectorFinding* finding : asked) {
        if (!finding->usable()) {
            manager.releaseDevice(std::exchange(finding->device, nullptr));
        }
    }
    return findings;
}

}  // namespace Veltrani::ProjectorSession
