#include "KelvoControl/Viewport.h"

#include "Configuration/ProjectorConfig.h"

#include <cmath>

Viewport Viewport::fromFrustumAngles(double left, double right, double bottom, double top) {
    Viewport viewport;
    viewport.ox = std::tan(left);
    viewport.oy = std::tan(bottom);
    viewport.sx = std::tan(right) - viewport.ox;
    viewport.sy = std::tan(top) - viewport.oy;
    return viewport;
}

Viewport Viewport::of(const ProjectorConfig& projector) {
    const Point<double, 3> orientation{projector.getOrientationZ(), projector.getOrientationX(),
                                       projector.getOrientationY()};
    const double top = projector.getFrustumTop();
    const double bottom = projector.getFrustumBottom();
    const double left = projector.getFrustumLeft();
    const double right = projector.getFrustumRight();
    Viewport viewport = fromFrustumAngles(left, right, bottom, top);
    viewport.orientation = orientation;
    viewport.position = projector.getPosition();
    return viewport;
}
