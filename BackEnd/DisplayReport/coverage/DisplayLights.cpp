#include "DisplayReport/coverage/DisplayLights.h"

#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayReport/basics/Fault.h"
#include "DisplayReport/channels/ChannelLocator.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/TargetLocator.h"

#include <exception>
#include <utility>

namespace Veltrani::DisplayReport {

DisplayLights DisplayLights::of(const XMLConfigManager& config, const std::shared_ptr<const ScreenGeometry>& surface) {
    DisplayLights display;
    for (const std::wstring& id : config.getProjectorConfigIds()) {
        if (const ProjectorConfig* projector = config.getProjectorConfig(id)) {
            display.add(config, *projector, surface);
        }
    }
    return display;
}

void DisplayLights::add(const XMLConfigManager& config, const ProjectorConfig& projector,
                        const std::shared_ptr<const ScreenGeometry>& surface) {
    const std::size_t place = faults.size();
    faults.emplace_back();
    if (lights.size() == MOST_CHANNELS) {
        faults.back() = "only " + std::to_string(MOST_CHANNELS) + " channels are measured";
        return;
    }
    const auto [locator, missing] = ChannelLocator::of(config, projector);
    if (!locator) {
        faults.back() = missing;
        return;
    }
    try {
        auto light = ChannelLight::of(locator, surface);
        // A surface without 2D coordinates reports that at the first point.
        static_cast<void>(light->landingOf({0.5, 0.5}));
        lights.push_back(std::move(light));
        places.push_back(place);
    } catch (...) {
        faults.back() = sentenceOf(faultOf({}, std::current_exception()));
    }
}

}  // namespace Veltrani::DisplayReport
