#include "KelvoControl/Frustum.h"

Frustum Frustum::of(const Viewport& viewport, const Point<double, 3>& eyePoint) {
    Frustum frustum;
    static_cast<Viewport&>(frustum) = viewport;
    frustum.origin = viewport.position - eyePoint;
    frustum.R = Veltrani::rotationZXY(viewport.orientation[0], viewport.orientation[1], viewport.orientation[2]);
    frustum.Rinv = transpose(frustum.R);
    return frustum;
}
