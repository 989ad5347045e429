#include "DisplayReport/check/ChannelCheck.h"

#include "Common/Utf8.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayReport/basics/TextTable.h"
#include "DisplayReport/channels/ChannelLocator.h"
#include "DisplayReport/check/DisplayDescription.h"

#include <string>

namespace Veltrani::DisplayReport {

namespace {

/// Characters of a device snippet that a table shows.
constexpr std::size_t LONGEST_DEVICE_TEXT = 60;

std::string deviceText(const ProjectorConfig& projector) {
    std::string snippet = toUtf8(projector.getDeviceSnippet());
    const auto first = snippet.find_first_not_of(" \t\r\n");
    if (first == std::string::npos) {
        return "none";
    }
    snippet = snippet.substr(first, snippet.find_last_not_of(" \t\r\n") - first + 1);
    return shortened(snippet, LONGEST_DEVICE_TEXT);
}

std::string pictureText(const ProjectorConfig& projector) {
    return std::to_string(projector.getWidth()) + " x " + std::to_string(projector.getHeight());
}

/// What `check` shows of a channel, a column each; behind them stand the values that only some displays have.
std::vector<DisplayFact> factsOf(const ProjectorConfig& projector, const LocatorSource& source) {
    return {{"picture", pictureText(projector)},
            {"targets by", source.text},
            {"device", deviceText(projector)},
            {"note", toUtf8(projector.getText(L"Note"))}};
}

}  // namespace

void ChannelCheck::run(const XMLConfigManager& config, DisplayDescription& description) {
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
    for (const std::wstring& id : ids) {
        const ProjectorConfig* projector = config.getProjectorConfig(id);
        if (projector == nullptr) {
            continue;
        }
        LocatorSource source = locatorSourceOf(config, *projector);
        description.channels.push_back({toUtf8(projector->getName()), toUtf8(id), factsOf(*projector, source)});
        for (Fault& fault : source.faults) {
            fault.where = "channel " + toUtf8(projector->getName()) + ", " + fault.where;
            description.faults.push_back(std::move(fault));
        }
    }
}

}  // namespace Veltrani::DisplayReport
