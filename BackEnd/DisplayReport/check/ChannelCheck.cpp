#include "DisplayReport/check/ChannelCheck.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "DeviceFramework2/DeviceSnippet.h"
#include "DeviceFramework2/ProjectorAddress.h"
#include "DisplayReport/basics/NumberText.h"
#include "DisplayReport/channels/ChannelLocator.h"
#include "DisplayReport/check/DisplayDescription.h"
#include "DisplayReport/check/DisplayFacts.h"
#include "DisplayReport/check/RuleText.h"

#include <cmath>
#include <numbers>
#include <string>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

using DeviceFramework2::DeviceSnippet;
using DeviceFramework2::ProjectorAddress;

/// "PJLink 192.0.2.11:4352"; its MAC address where it states no other.
std::string placeOf(const std::wstring& snippet) {
    const DeviceSnippet device = DeviceSnippet::parse(snippet);
    const auto address = ProjectorAddress::of(device);
    return toUtf8(device.type) + " " + (address ? address->text() : toUtf8(device.mac.text()));
}

/// What can be known of the place of a device; its XML is not shown, whole or cut.
std::string deviceText(const ProjectorConfig& projector) {
    const std::wstring snippet = projector.getDeviceSnippet();
    if (snippet.find_first_not_of(L" \t\r\n") == std::wstring::npos) {
        return "none";
    }
    try {
        return placeOf(snippet);
    } catch (const VeltraniException&) {
        const auto mac = DeviceSnippet::macAddressIn(snippet);
        return mac ? "another, " + toUtf8(mac->text()) : "another";
    }
}

std::string pictureText(const ProjectorConfig& projector) {
    return std::to_string(projector.getWidth()) + " x " + std::to_string(projector.getHeight());
}

std::string positionText(const ChannelView& view, const std::string& unit) {
    return roundedText(view.from[0]) + ", " + roundedText(view.from[1]) + ", " + roundedText(view.from[2]) +
           (unit.empty() ? "" : " " + unit);
}

/// "right and up", "behind, to the left"; "ahead" within ten degrees. What is "left" or "right" lies there, and not ten
/// degrees and more behind the side.
std::string headingInWords(const Heading& heading) {
    constexpr double CLOSE = 10.0 * std::numbers::pi / 180.0;
    const double aside = std::abs(heading.azimuth);
    const std::string side = heading.azimuth < 0 ? "left" : "right";
    std::string words;
    if (aside >= std::numbers::pi - CLOSE) {
        words = "behind";
    } else if (aside >= std::numbers::pi / 2 + CLOSE) {
        words = "behind, to the " + side;
    } else if (aside > CLOSE) {
        words = side;
    }
    if (std::abs(heading.elevation) > CLOSE) {
        words += std::string(words.empty() ? "" : " and ") + (heading.elevation < 0 ? "down" : "up");
    }
    return words.empty() ? "ahead" : words;
}

std::string viewText(const ChannelView& view) {
    return headingInWords(view.heading) + ": azimuth " + degreesText(view.heading.azimuth) + " elevation " +
           degreesText(view.heading.elevation) + " roll " + degreesText(view.roll) + " deg";
}

std::string fieldText(const ChannelView& view) {
    return degreesText(view.wide) + " x " + degreesText(view.high) + " deg";
}

std::string landedText(const ChannelFacts& channel, const DisplayFacts& display) {
    if (!display.isMeasured) {
        return "not measured";
    }
    return channel.light() == nullptr ? "not known" : percentText(channel.landed());
}

/// Only a projector has a throw that can be measured; what is not measured is not missing from the file.
std::string throwText(const ChannelFacts& channel, const DisplayFacts& display) {
    if (channel.throwDistance() > 0) {
        return lengthText(channel.throwDistance(), display.unit);
    }
    if (!channel.statesProjector()) {
        return "not stated";
    }
    if (!display.isMeasured) {
        return "not measured";
    }
    return channel.light() == nullptr ? "not known" : "middle misses";
}

/// What `check` shows of a channel, a column each; behind them stand the values that only some displays have.
std::vector<DisplayFact> factsOf(const ChannelFacts& channel, const DisplayFacts& display,
                                 const LocatorSource& source) {
    const ProjectorConfig& projector = channel.projector();
    const ChannelView* const view = channel.view();
    return {{"picture", pictureText(projector)},
            {"targets by", source.text},
            {"position", view == nullptr ? "" : positionText(*view, display.unit)},
            {"looks", view == nullptr ? "" : viewText(*view)},
            {"field of view", view == nullptr ? "" : fieldText(*view)},
            {"throw", throwText(channel, display)},
            {"on screen", landedText(channel, display)},
            {"device", deviceText(projector)},
            {"note", toUtf8(projector.getText(L"Note"))}};
}

}  // namespace

void ChannelCheck::run(const XMLConfigManager& config, const DisplayFacts& facts, DisplayDescription& description) {
    const std::wstring type = targetDataTypeOf(config);
    description.facts.push_back({"target data", type.empty() ? "not configured" : toUtf8(type)});
    if (type.empty()) {
        description.faults.push_back(
            {"target data", "the configuration names no kind of target data: add a TargetData element", {}});
    }
    const auto ids = config.getProjectorConfigIds();
    description.facts.push_back({"channels", std::to_string(ids.size())});
    if (ids.empty()) {
        description.faults.push_back({"channels", "the configuration has no projectors: add a Projectors element", {}});
    }
    for (const ChannelFacts& channel : facts.channels) {
        LocatorSource source = locatorSourceOf(config, channel.projector());
        description.channels.push_back(
            {channel.name(), toUtf8(channel.projector().getIdentity()), factsOf(channel, facts, source)});
        for (Fault& fault : source.faults) {
            fault.where = channel.where() + ", " + fault.where;
            description.faults.push_back(std::move(fault));
        }
    }
}

}  // namespace Veltrani::DisplayReport
