#include "DisplayReport/coverage/LineOfSight.h"

#include "KelvoScreen/ScreenGeometry.h"

#include <cmath>

namespace Veltrani::DisplayReport {

namespace {

/// Of the way to the point: far above rounding, and a few micrometres on the way across a room.
constexpr double SAME_PLACE = 1e-6;

}  // namespace

bool isInSight(const ScreenGeometry& surface, const Point<double, 3>& from, const Point<double, 3>& onSurface) {
    if (!std::isfinite(norm(onSurface - from))) {
        return false;
    }
    const IntersectionSet met = surface.intersect(from, onSurface);
    return met.empty() || met.first().t >= 1.0 - SAME_PLACE;
}

}  // namespace Veltrani::DisplayReport
