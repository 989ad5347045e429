#include "DisplayReport/ChannelListing.h"

#include "Common/Utf8.h"
#include "DeviceFramework2/Commands.h"
#include "DeviceFramework2/DeviceException.h"
#include "DeviceFramework2/DeviceSnippet.h"
#include "DeviceFramework2/DeviceTypeManager.h"
#include "DeviceFramework2/PJLinkProjector.h"
#include "DeviceFramework2/ProjectorAddress.h"
#include "DisplayReport/ProjectorRun.h"
#include "DisplayReport/TextTable.h"

#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

namespace Veltrani::DisplayReport {

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

std::string textOf(const Point<int, 2>& resolution) {
    return std::to_string(resolution[0]) + " x " + std::to_string(resolution[1]);
}

/// Asks one device, and notes what it does not answer.
class Interview {
public:
    Interview(std::string channel, Device& device, std::vector<Fault>& faults)
        : m_channel(std::move(channel)), m_device(device), m_faults(faults) {}

    /// Nothing when the device does not support the question or does not answer it, which is a fault.
    template <class Question>
    auto answer() -> std::optional<std::decay_t<decltype(std::declval<Question>().getResult())>> {
        const auto question = std::make_shared<Question>();
        try {
            if (m_device.supports(*question)) {
                m_device.execute(question);
                return question->getResult();
            }
        } catch (const DeviceException& fault) {
            if (m_awake || !PJLinkProjector::isNotNow(fault)) {
                m_faults.push_back({"channel " + m_channel, toUtf8(fault.message), {}});
            }
        }
        return std::nullopt;
    }

    /// From now on questions that the projector puts off are no faults.
    void fallAsleep() { m_awake = false; }

private:
    std::string m_channel;
    bool m_awake = true;
    Device& m_device;
    std::vector<Fault>& m_faults;
};

void fill(ChannelLine& line, Device& device, std::vector<Fault>& faults) {
    Interview interview(line.name, device, faults);
    if (const Location* place = device.getLocation()) {
        line.device = toUtf8(place->getDescription());
    }
    const auto power = interview.answer<GetPowerState>();
    line.state = power ? textOf(*power) : "reachable";
    if (SurveyedDeviceManager::isSimulated(device)) {
        line.state = "simulated";
    }
    // A projector that is not on refuses to tell its input, and that is no fault.
    const bool awake = !power || *power == PowerState::ON;
    if (!awake) {
        interview.fallAsleep();
    }
    if (const auto resolution = interview.answer<GetNativeResolution>(); resolution && (*resolution)[0] > 0) {
        line.resolution = textOf(*resolution);
    }
    if (const auto input = awake ? interview.answer<GetActiveInputSignalIndex>() : std::nullopt) {
        line.input = std::to_string(*input);
    }
    if (const auto firmware = interview.answer<GetFirmware>()) {
        line.firmware = *firmware;
    }
}

ChannelLine lineOf(const std::string& name, const std::wstring& id) {
    return {name, toUtf8(id), NOT_TOLD, "missing", NOT_TOLD, NOT_TOLD, NOT_TOLD};
}

/// Where the configuration says that the projector is.
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

ChannelListing ChannelListing::ofEntries(const ProjectorRun& run) {
    ChannelListing listing;
    for (const ProjectorFinding& finding : run.findings()) {
        listing.lines.push_back(lineOf(finding.name, finding.id));
        listing.lines.back().device = configuredPlace(finding.snippet);
        if (finding.device != nullptr) {
            fill(listing.lines.back(), *finding.device, listing.faults);
        }
    }
    return listing;
}

ChannelListing ChannelListing::ofChannels(ProjectorRun& run) {
    ChannelListing listing;
    for (const Channel& channel : run.channels().getChannels()) {
        listing.lines.push_back(lineOf(toUtf8(channel.getName()), channel.getProjectorConfigId()));
        AbstractDevice* const device = run.channels().getAbstractDeviceRefactor(channel.getProjectorConfigId());
        if (Device* const whole = deprecatedDeviceFromAbstractDevice(device)) {
            fill(listing.lines.back(), *whole, listing.faults);
        }
    }
    return listing;
}

void ChannelListing::print(std::ostream& out) const {
    TextTable table({"channel", "id", "device", "state", "resolution", "input", "firmware"});
    for (const ChannelLine& line : lines) {
        table.add({line.name, line.id, line.device, line.state, line.resolution, line.input, line.firmware});
    }
    table.print(out);
}

}  // namespace Veltrani::DisplayReport
