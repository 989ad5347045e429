#include "DisplayReport/LocatorSource.h"

#include "Common/Utf8.h"
#include "Configuration/BaseConfig.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/TargetLocatorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayReport/NumberText.h"
#include "DisplayReport/ScreenArea.h"
#include "KelvoControl/CustomPlanarScreenToChannelMap.h"
#include "ScreenManager/TargetLocatorManager.h"

#include <array>
#include <cmath>
#include <numbers>

namespace Veltrani::DisplayReport {

namespace {

using Describe = LocatorSource (*)(const XMLConfigManager&, const ProjectorConfig&);

std::string degrees(double radians) {
    return roundedText(radians * 180.0 / std::numbers::pi);
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
        try {
            // Found as the locator finds it.
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
        return frustum(config, projector);
    }
    LocatorSource source{"model " + toUtf8(model), {}};
    try {
        static_cast<void>(TargetLocatorManager::getInstance()->getTargetLocator(&config, &projector));
    } catch (...) {
        source.faults.push_back(faultOf("projection model", std::current_exception()));
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

}  // namespace

std::wstring targetDataTypeOf(const XMLConfigManager& config) {
    const TargetLocatorConfig* targets = config.getTargetLocatorConfig();
    return targets == nullptr ? std::wstring() : targets->getTargetDataType();
}

bool isPlanarDisplay(const XMLConfigManager& config) {
    const std::wstring type = targetDataTypeOf(config);
    return type == BaseConfig::TARGET_DATA_PLANAR_BASIC || type == BaseConfig::TARGET_DATA_PLANAR_ADVANCED;
}

LocatorSource locatorSourceOf(const XMLConfigManager& config, const ProjectorConfig& projector) {
    const std::wstring type = targetDataTypeOf(config);
    for (const LocatorKind& kind : locatorKinds()) {
        if (kind.type == type) {
            return kind.describe(config, projector);
        }
    }
    return {"nothing", {}};
}

}  // namespace Veltrani::DisplayReport
