#include "DisplayReport/ScreenArea.h"

#include "Configuration/ProjectorConfig.h"
#include "DisplayReport/NumberText.h"

#include <array>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

std::array<std::pair<const char*, double>, 4> bounds(const ScreenArea& area) {
    return {{{"left", area.left}, {"right", area.right}, {"bottom", area.bottom}, {"top", area.top}}};
}

bool configured(double bound) {
    return bound != ProjectorConfig::SCREEN_BOUND_NOT_CONFIGURED;
}

}  // namespace

bool ScreenArea::complete() const {
    return configured(left) && configured(right) && configured(bottom) && configured(top);
}

std::string ScreenArea::describe() const {
    std::string given;
    std::string missing;
    for (const auto& [name, bound] : bounds(*this)) {
        if (configured(bound)) {
            given += (given.empty() ? "" : " ") + std::string(name) + " " + roundedText(bound);
        } else {
            missing += (missing.empty() ? "" : ", ") + std::string(name);
        }
    }
    if (given.empty()) {
        return "no screen area";
    }
    return missing.empty() ? given : "screen area without " + missing;
}

ScreenArea screenAreaOf(const ProjectorConfig& projector) {
    return {projector.getScreenLeft(), projector.getScreenRight(), projector.getScreenBottom(),
            projector.getScreenTop()};
}

}  // namespace Veltrani::DisplayReport
