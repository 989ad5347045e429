#include "ScreenManager/TargetLocator.h"

#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/ScreenManager.h"

#include <memory>

TargetLocator::~TargetLocator() = default;

std::pair<bool, int> TargetLocator::intersectWithTargetLocationSurface(const Point<double, 3>& from,
                                                                       const Point<double, 3>& to,
                                                                       Point<double, 3>& hit) const {
    constexpr std::pair<bool, int> MISS{false, 1};
    const std::shared_ptr<ScreenGeometry> screen = ScreenManager::getInstance()->getScreenGeometry();
    if (!screen) {
        return MISS;
    }
    const IntersectionSet intersections = screen->intersect(from, to);
    if (intersections.empty()) {
        return MISS;
    }
    hit = intersections.first().point;
    return {true, sideOfSurface(to - from, screen->getScreenNormal(hit))};
}
