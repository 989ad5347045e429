#include "KelvoControl/Viewport.h"

#include <cmath>

Viewport Viewport::fromFrustumAngles(double left, double right, double bottom, double top) {
    Viewport viewport;
    viewport.ox = std::tan(left);
    viewport.oy = std::tan(bottom);
    viewport.sx = std::tan(right) - viewport.ox;
    viewport.sy = std::tan(top) - viewport.oy;
    return viewport;
}
