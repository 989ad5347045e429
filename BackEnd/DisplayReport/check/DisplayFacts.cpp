#include "DisplayReport/check/DisplayFacts.h"

#include "Common/Utf8.h"
#include "Configuration/IScreenConfig.h"
#include "Configuration/IUnitsConfig.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/TargetLocatorConfig.h"
#include "Configuration/UnitConversionTable.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayReport/basics/GeometryText.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/DisplayKinds.h"
#include "ScreenManager/MirrorFrame.h"
#include "ScreenManager/ScreenManager.h"

#include <algorithm>

namespace Veltrani::DisplayReport {

namespace {

void addUnit(const XMLConfigManager& config, DisplayFacts& facts) {
    if (const IUnitsConfig* units = config.getNativeUnitsConfig()) {
        facts.unit = toUtf8(units->getUnitName());
        facts.metres =
            UnitConversionTable::metresPer(UnitConversionTable::getUnitSubTypeFromName(units->getUnitName()));
    }
}

/// The eye of a display with a mirror is given beside the mirror.
void addEye(const XMLConfigManager& config, DisplayFacts& facts) {
    const TargetLocatorConfig* const targets = config.getTargetLocatorConfig();
    const bool isSeenFromTargetPosition =
        targets != nullptr && facts.kind != nullptr && facts.kind->addressedBy == DisplayKind::Addressing::EYE;
    if (isSeenFromTargetPosition) {
        facts.eye = targets->getTargetPosition();
    } else if (facts.screen != nullptr) {
        facts.eye = facts.screen->getEyePoint();
    }
    facts.isEyeStated = !(facts.eye == Point<double, 3>());
    if (isSeenFromTargetPosition && facts.kind->hasMirror()) {
        facts.eye = MirrorFrame(*targets).toWorld(facts.eye);
    }
}

void addSurface(DisplayFacts& facts) {
    ScreenManager& manager = *ScreenManager::getInstance();
    facts.content = manager.getContentModelScreenGeometry();
    facts.measured = manager.getMeasuredScreenGeometry();
    const std::shared_ptr<const ScreenGeometry> surface = manager.getScreenGeometry();
    if (!surface || !surface->isValid()) {
        return;
    }
    facts.surface = surface;
    facts.box = extentOf(*surface);
    const Point<double, 3> size = facts.box.size();
    facts.size = std::max({size[0], size[1], size[2]});
}

}  // namespace

DisplayFacts DisplayFacts::of(const XMLConfigManager& config, bool quick) {
    DisplayFacts facts;
    facts.config = &config;
    facts.screen = config.getScreenConfig();
    facts.kind = DisplayKind::of(config);
    addUnit(config, facts);
    addEye(config, facts);
    if (facts.screen != nullptr) {
        facts.allowed = toUtf8(facts.screen->getAllowed());
        addSurface(facts);
    }
    facts.isMeasured = !quick && facts.surface != nullptr;
    for (const std::wstring& id : config.getProjectorConfigIds()) {
        if (const ProjectorConfig* projector = config.getProjectorConfig(id)) {
            facts.channels.emplace_back(config, facts.kind, *projector);
            if (facts.isMeasured) {
                facts.channels.back().measure(facts.surface);
            }
        }
    }
    return facts;
}

}  // namespace Veltrani::DisplayReport
