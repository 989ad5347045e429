#include "DisplayReport/ChannelCheck.h"

#include "Common/RegularFile.h"
#include "Common/Utf8.h"
#include "Configuration/BaseConfig.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/TargetLocatorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayReport/DisplayDescription.h"
#include "DisplayReport/NumberText.h"
#include "DisplayReport/ScreenArea.h"
#include "DisplayReport/TextTable.h"

#include <array>
#include <numbers>
#include <string>

namespace Veltrani::DisplayReport {

namespace {

/// What a locator kind is built from, in words, and what is missing for it.
struct LocatorSource {
    std::string text;
    std::vector<Fault> faults;
};

using Describe = LocatorSource (*)(const XMLConfigManager&, const ProjectorConfig&);

std::string degrees(double radians) {
    return roundedText(radians * 180.0 / std::numbers::pi);
}

/// A file that a channel needs must be there and be a file.
void requireFile(const std::wstring& file, const std::string& what, std::vector<Fault>& faults) {
    try {
        const RegularFile present(toUtf8(file));
    } catch (...) {
        faults.push_back(faultOf(what, std::current_exception()));
    }
}

LocatorSource planar(const XMLConfigManager&, const ProjectorConfig& projector) {
    const ScreenArea area = screenAreaOf(projector);
    LocatorSource source{(area.complete() ? "screen area " : "") + area.describe(), {}};
    if (const std::string fault = area.fault(); !fault.empty()) {
        source.faults.push_back({"screen area", fault, {}});
    }
    return source;
}

LocatorSource frustum(const XMLConfigManager&, const ProjectorConfig& projector) {
    LocatorSource source{"frustum left " + degrees(projector.getFrustumLeft()) + " right " +
                             degrees(projector.getFrustumRight()) + " bottom " + degrees(projector.getFrustumBottom()) +
                             " top " + degrees(projector.getFrustumTop()) + " deg",
                         {}};
    const bool narrow = projector.getFrustumLeft() == projector.getFrustumRight() ||
                        projector.getFrustumBottom() == projector.getFrustumTop();
    if (narrow) {
        source.faults.push_back({"frustum", "it has no width or no height: give the channel a Frustum", {}});
    }
    return source;
}

LocatorSource collimated(const XMLConfigManager& config, const ProjectorConfig& projector) {
    LocatorSource source = frustum(config, projector);
    const TargetLocatorConfig* targets = config.getTargetLocatorConfig();
    source.text += " via the mirror";
    if (targets == nullptr || !(targets->getMirrorRadius() > 0.0)) {
        source.faults.push_back({"mirror", "it has no radius: give the target data a Mirror", {}});
    }
    return source;
}

LocatorSource customPlanar(const XMLConfigManager& config, const ProjectorConfig& projector) {
    const std::wstring name = projector.getCustomPlanarFile();
    LocatorSource source{"map " + toUtf8(name), {}};
    if (name.empty()) {
        source.text = "no map";
        source.faults.push_back({"map", "no custom planar map file is given", {}});
    } else {
        requireFile(config.processPath(name), "map", source.faults);
    }
    return source;
}

LocatorSource projectorCentric(const XMLConfigManager& config, const ProjectorConfig& projector) {
    const std::wstring model = projector.getProjectionModelName();
    if (model.empty()) {
        return frustum(config, projector);
    }
    LocatorSource source{"model " + toUtf8(model), {}};
    const auto colon = model.find(L':');
    if (colon != std::wstring::npos && colon + 1 < model.size()) {
        requireFile(model.substr(colon + 1), "projection model", source.faults);
    }
    return source;
}

struct LocatorKind {
    const std::wstring& type;
    Describe describe;
};

const std::array<LocatorKind, 7>& locatorKinds() {
    static const std::array<LocatorKind, 7> KINDS{{{BaseConfig::TARGET_DATA_PLANAR_BASIC, planar},
                                                   {BaseConfig::TARGET_DATA_PLANAR_ADVANCED, planar},
                                                   {BaseConfig::TARGET_DATA_SPHERICAL, frustum},
                                                   {BaseConfig::TARGET_DATA_SPHERICAL_COLLIMATED, collimated},
                                                   {BaseConfig::TARGET_DATA_CUSTOM_PLANAR, customPlanar},
                                                   {BaseConfig::TARGET_DATA_PROJECTOR_CENTRIC, projectorCentric},
                                                   {BaseConfig::TARGET_DATA_3D, projectorCentric}}};
    return KINDS;
}

LocatorSource sourceOf(const std::wstring& type, const XMLConfigManager& config, const ProjectorConfig& projector) {
    for (const LocatorKind& kind : locatorKinds()) {
        if (kind.type == type) {
            return kind.describe(config, projector);
        }
    }
    return {"nothing", {}};
}

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

}  // namespace

void ChannelCheck::run(const XMLConfigManager& config, DisplayDescription& description) {
    const TargetLocatorConfig* targets = config.getTargetLocatorConfig();
    const std::wstring type = targets == nullptr ? std::wstring() : targets->getTargetDataType();
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
        LocatorSource source = sourceOf(type, config, *projector);
        description.channels.push_back(
            {toUtf8(projector->getName()), toUtf8(id),
             std::to_string(projector->getWidth()) + " x " + std::to_string(projector->getHeight()), source.text,
             deviceText(*projector)});
        for (Fault& fault : source.faults) {
            fault.where = "channel " + toUtf8(projector->getName()) + ", " + fault.where;
            description.faults.push_back(std::move(fault));
        }
    }
}

}  // namespace Veltrani::DisplayReport
