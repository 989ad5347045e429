#include "DisplayReport/channels/ChannelLocator.h"

#include "Common/QuotedText.h"
#include "Common/Utf8.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/TargetLocatorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayReport/basics/Fault.h"
#include "DisplayReport/basics/NumberText.h"
#include "DisplayReport/channels/ScreenArea.h"
#include "KelvoControl/CustomPlanarScreenToChannelMap.h"
#include "ScreenManager/DisplayKinds.h"
#include "ScreenManager/TargetLocator.h"
#include "ScreenManager/TargetLocatorManager.h"

#include <cmath>
#include <numbers>

namespace Veltrani::DisplayReport {

namespace {

std::string degrees(double radians) {
    return roundedText(radians * 180.0 / std::numbers::pi);
}

LocatorSource planar(const ProjectorConfig& projector) {
    const ScreenArea area = screenAreaOf(projector);
    LocatorSource source{(area.complete() ? "screen area " : "") + area.describe(), {}};
    if (const std::string fault = area.fault(); !fault.empty()) {
        source.faults.push_back({"screen area", fault, {}});
    }
    return source;
}

LocatorSource frustum(const ProjectorConfig& projector) {
    LocatorSource source{"frustum left " + degrees(projector.getFrustumLeft()) + " right " +
                             degrees(projector.getFrustumRight()) + " bottom " + degrees(projector.getFrustumBottom()) +
                             " top " + degrees(projector.getFrustumTop()) + " deg",
                         {}};
    const bool narrow = projector.getFrustumLeft() == projector.getFrustumRight() ||
                        projector.getFrustumBottom() == projector.getFrustumTop();
    if (narrow) {
        source.faults.push_back({"frustum", "it has no width or no height: give the channel a Frustum", {}});
    }
    for (const double angle : {projector.getFrustumLeft(), projector.getFrustumRight(), projector.getFrustumBottom(),
                               projector.getFrustumTop()}) {
        if (!(std::abs(angle) < std::numbers::pi / 2)) {
            source.faults.push_back(
                {"frustum", "an edge is at " + degrees(angle) + " deg: give less than 90 to either side", {}});
        }
    }
    return source;
}

LocatorSource collimated(const XMLConfigManager& config, const ProjectorConfig& projector) {
    LocatorSource source = frustum(projector);
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
        try {
            // The file is found as the locator finds it.
            const std::wstring file = config.processPath(L"").empty() ? name : config.processPath(name);
            const CustomPlanarScreenToChannelMap map(file, nullptr);
        } catch (...) {
            source.faults.push_back(faultOf("map", std::current_exception()));
        }
    }
    return source;
}

LocatorSource projectorCentric(const XMLConfigManager& config, const ProjectorConfig& projector) {
    const std::wstring model = projector.getProjectionModelName();
    if (model.empty()) {
        return frustum(projector);
    }
    LocatorSource source{"model " + toUtf8(model), {}};
    try {
        static_cast<void>(TargetLocatorManager::getInstance()->getTargetLocator(&config, &projector));
    } catch (...) {
        source.faults.push_back(faultOf("projection model", std::current_exception()));
    }
    return source;
}

LocatorSource describe(DisplayKind::Source source, const XMLConfigManager& config, const ProjectorConfig& projector) {
    switch (source) {
        case DisplayKind::Source::SCREEN_AREA:
            return planar(projector);
        case DisplayKind::Source::FRUSTUM:
            return frustum(projector);
        case DisplayKind::Source::FRUSTUM_AND_MIRROR:
            return collimated(config, projector);
        case DisplayKind::Source::MAP_FILE:
            return customPlanar(config, projector);
        case DisplayKind::Source::MODEL_OR_FRUSTUM:
            return projectorCentric(config, projector);
    }
    return {"nothing", {}};
}

/// What the configuration lacks for a locator; empty when nothing is known to be wrong.
std::string whyThereIsNoLocator(const XMLConfigManager& config, const ProjectorConfig& projector) {
    if (targetDataTypeOf(config).empty()) {
        return "the configuration names no kind of target data: add a TargetData element";
    }
    const LocatorSource source = locatorSourceOf(config, projector);
    return source.faults.empty() ? std::string() : sentenceOf(source.faults.front());
}

}  // namespace

std::wstring targetDataTypeOf(const XMLConfigManager& config) {
    const TargetLocatorConfig* targets = config.getTargetLocatorConfig();
    return targets == nullptr ? std::wstring() : targets->getTargetDataType();
}

bool isPlanarDisplay(const XMLConfigManager& config) {
    const DisplayKind* const kind = DisplayKind::of(config);
    return kind != nullptr && kind->layout == DisplayKind::Layout::PLANE;
}

LocatorSource locatorSourceOf(const XMLConfigManager& config, const ProjectorConfig& projector) {
    if (const DisplayKind* const kind = DisplayKind::of(config)) {
        return describe(kind->source, config, projector);
    }
    LocatorSource source{"nothing", {}};
    if (const std::string type = toUtf8(targetDataTypeOf(config)); !type.empty()) {
        source.faults.push_back({"target data", "no target locator is known for the type " + inQuotes(type), {}});
    }
    return source;
}

ChannelLocator ChannelLocator::of(const XMLConfigManager& config, const ProjectorConfig& projector) {
    ChannelLocator channel;
    try {
        channel.locator = TargetLocatorManager::getInstance()->getTargetLocator(&config, &projector);
    } catch (...) {
        channel.fault = sentenceOf(faultOf({}, std::current_exception()));
        return channel;
    }
    if (!channel.locator) {
        const std::string reason = whyThereIsNoLocator(config, projector);
        channel.fault = reason.empty() ? "no target locator can be built for it" : reason;
    }
    return channel;
}

}  // namespace Veltrani::DisplayReport
