#pragma once

#include "Common/Point.h"

namespace Veltrani::DisplayReport {

/// A point of a screen's surface.
struct SurfacePoint {
    Point<double, 3> place;       ///< world frame, native units
    Point<double, 2> parameters;  ///< (s, t), the screen's normalised 2D coordinates
    bool hasParameters = false;   ///< false where the surface has none: `parameters` mean nothing then
};

}  // namespace Veltrani::DisplayReport
