#include "DisplayReport/channels/ScreenArea.h"

#include "Configuration/ProjectorConfig.h"
#include "DisplayReport/basics/NumberText.h"

#include <algorithm>
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

/// True when no part of the range lies on the screen; either end may come first.
bool outside(double from, double to) {
    return std::max(from, to) < 0.0 || std::min(from, to) > 1.0;
}

}  // namespace

bool ScreenArea::complete() const {
    return configured(left) && configured(right) && configured(bottom) && configured(top);
}

std::string ScreenArea::fault() const {
    if (!complete()) {
        return describe() + ": give the channel a ScreenArea with left, right, bottom and top";
    }
    if (left == right || bottom == top) {
        return describe() + ": it has no " + (left == right ? "width" : "height");
    }
    if (outside(left, right) || outside(bottom, top)) {
        return describe() + ": it lies outside the screen, which reaches from 0 to 1";
    }
    return {};
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
