#include "ProjectorSession/ChannelListing.h"

#include "Common/Utf8.h"
#include "DeviceFramework2/Commands.h"
#include "DeviceFramework2/DeviceException.h"
#include "DeviceFramework2/DeviceSnippet.h"
#include "DeviceFramework2/DeviceTalks.h"
#include "DeviceFramework2/DeviceTypeManager.h"
#include "DeviceFramework2/ProjectorAddress.h"
#include "DisplayReport/basics/TextTable.h"
#include "ProjectorSession/ProjectorRun.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace Veltrani::ProjectorSession {

namespace {

using namespace DeviceFramework2;

const std::string NOT_TOLD = "-";

std::string textOf(PowerState power) {
    switch (power) {
        case PowerState::STANDBY:
            return "standby";
        case PowerState::ON:
            return "on";
        case PowerState::COOLING:
            return "cooling";
        case PowerState::WARMING_UP:
            return "warming up";
    }
    return NOT_TOLD;
}

/// None without a picture.
std::optional<std::string> textOf(const Point<int, 2>& resolution) {
    return resolution[0] > 0 ? std::optional(std::to_string(resolution[0]) + " x " + std::to_string(resolution[1]))
                             : std::nullopt;
}

std::optional<std::string> textOf(int number) {
    return std::to_string(number);
}

std::optional<std::string> textOf(const std::string& text) {
    return text;
}

struct Question {
    std::shared_ptr<Command> command;
    std::function<void()> use;  ///< of its result
    bool onlyAwake = false;
};

/// A question whose result goes into a cell of the table; what has no text leaves it as it is.
template <class Kind>
Question asking(std::string& cell) {
    const auto command = std::make_shared<Kind>();
    return {command, [command, &cell] { cell = textOf(command->getResult()).value_or(cell); }};
}

/// What is requested of a channel beside its state, in the order of questions and columns: the only list of them.
struct Column {
    const char* heading;
    bool onlyAwake;  ///< a projector that is not on refuses the question, and that is no fault
    Question (*ask)(std::string& cell);
};

constexpr std::array COLUMNS{
    Column{"resolution", false, asking<GetNativeResolution>},
    Column{"input", true, asking<GetActiveInputSignalIndex>},
    Column{"firmware", false, asking<GetFirmware>},
};

/// The questions that are sent to one device for its line, one after another, and those that get no reply.
class Interview {
public:
    /// @param line what is known without the device; filled as far as the device replies
    Interview(ChannelLine& line, Device& device) : m_line(line), m_device(device) {
        if (const Location* place = device.getLocation()) {
            line.device = toUtf8(place->getDescription());
        }
        line.state = "reachable";
        const auto power = std::make_shared<GetPowerState>();
        m_questions.push_back({power, [this, power] {
                                   m_line.state = textOf(power->getResult());
                                   m_awake = power->getResult() == PowerState::ON;
                               }});
        for (std::size_t i = 0; i < COLUMNS.size(); ++i) {
            m_questions.push_back(COLUMNS[i].ask(line.answers[i]));
            m_questions.back().onlyAwake = COLUMNS[i].onlyAwake;
        }
    }

    /// The next question that the device supports; null when there is none left.
    /// @param fault of the question before; null when there was none
    std::shared_ptr<Command> next(const DeviceException* fault) {
        if (m_pending != nullptr && fault == nullptr) {
            m_pending->use();
        } else if (fault != nullptr && (m_awake || fault->cause != DeviceException::Cause::NOT_NOW)) {
            m_faults.push_back({"channel " + m_line.name, toUtf8(fault->message), {}});
        }
        while (m_next < m_questions.size()) {
            m_pending = &m_questions[m_next++];
            if (m_device.supports(*m_pending->command) && (m_awake || !m_pending->onlyAwake)) {
                return m_pending->command;
            }
        }
        return nullptr;
    }

    [[nodiscard]] const std::vector<DisplayReport::Fault>& faults() const { return m_faults; }

private:
    ChannelLine& m_line;
    Device& m_device;
    std::vector<Question> m_questions;
    std::size_t m_next = 0;
    const Question* m_pending = nullptr;
    bool m_awake = true;  ///< false: what the device puts off is no fault
    std::vector<DisplayReport::Fault> m_faults;
};

/// Queries all devices at the same time, and reports the questions without a reply in the order of their lines.
/// @param devices one per line; null: nothing is sent
std::vector<DisplayReport::Fault> fill(std::vector<ChannelLine>& lines, const std::vector<Device*>& devices) {
    std::vector<std::unique_ptr<Interview>> interviews;
    DeviceTalks talks;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (devices[i] == nullptr) {
            continue;
        }
        interviews.push_back(std::make_unique<Interview>(lines[i], *devices[i]));
        talks.add(*devices[i], [interview = interviews.back().get()](const DeviceException* fault) {
            return interview->next(fault);
        });
    }
    talks.run();
    std::vector<DisplayReport::Fault> faults;
    for (const auto& interview : interviews) {
        faults.insert(faults.end(), interview->faults().begin(), interview->faults().end());
    }
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (devices[i] != nullptr && SurveyedDeviceManager::isSimulated(*devices[i])) {
            lines[i].state = "simulated";
        }
    }
    return faults;
}

ChannelLine lineOf(const std::string& name, const std::wstring& id) {
    return {name, toUtf8(id), NOT_TOLD, "missing", std::vector<std::string>(COLUMNS.size(), NOT_TOLD)};
}

/// Where the projector is according to the configuration.
std::string configuredPlace(const std::wstring& snippet) {
    try {
        const DeviceSnippet configured = DeviceSnippet::parse(snippet);
        const auto address = ProjectorAddress::of(configured);
        return address ? toUtf8(configured.type) + ' ' + address->text() : NOT_TOLD;
    } catch (const DeviceException&) {
        return NOT_TOLD;
    }
}

}  // namespace

const std::string& ChannelLine::answer(std::string_view column) const {
    const auto found = std::find_if(COLUMNS.begin(), COLUMNS.end(),
                                    [&](const Column& candidate) { return candidate.heading == column; });
    return answers.at(static_cast<std::size_t>(found - COLUMNS.begin()));
}

ChannelListing ChannelListing::ofEntries(const ProjectorRun& run) {
    ChannelListing listing;
    std::vector<Device*> devices;
    for (const ProjectorFinding& finding : run.findings()) {
        listing.lines.push_back(lineOf(finding.name, finding.id));
        listing.lines.back().device = configuredPlace(finding.snippet);
        devices.push_back(finding.device);
    }
    listing.faults = fill(listing.lines, devices);
    return listing;
}

ChannelListing ChannelListing::ofChannels(ProjectorRun& run) {
    ChannelListing listing;
    std::vector<Device*> devices;
    for (const Channel& channel : run.channels().getChannels()) {
        listing.lines.push_back(lineOf(toUtf8(channel.getName()), channel.getProjectorConfigId()));
        AbstractDevice* const device = run.channels().getAbstractDeviceRefactor(channel.getProjectorConfigId());
        devices.push_back(deprecatedDeviceFromAbstractDevice(SurveyedDeviceManager::deviceBehind(device)));
    }
    listing.faults = fill(listing.lines, devices);
    return listing;
}

void ChannelListing::print(std::ostream& out) const {
    std::vector<std::string> headings{"channel", "id", "device", "state"};
    for (const Column& column : COLUMNS) {
        headings.emplace_back(column.heading);
    }
    DisplayReport::TextTable table(headings);
    for (const ChannelLine& line : lines) {
        std::vector<std::string> cells{line.name, line.id, line.device, line.state};
        cells.insert(cells.end(), line.answers.begin(), line.answers.end());
        table.add(cells);
    }
    table.print(out);
}

}  // namespace Veltrani::ProjectorSession
