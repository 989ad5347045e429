#pragma once

#include "Common/Point.h"

#include <array>
#include <bitset>
#include <cstddef>

namespace Veltrani::DisplayReport {

/// A point of a screen's surface.
struct SurfacePoint {
    Point<double, 3> place;       ///< world frame, native units
    Point<double, 2> parameters;  ///< (s, t), the screen's normalised 2D coordinates
    bool hasParameters = false;   ///< false where the surface has none: `parameters` mean nothing then
};

/// More channels than any display has.
constexpr std::size_t MOST_CHANNELS = 256;

/// Which channels light a point, by their place in a list of channels.
using LitBy = std::bitset<MOST_CHANNELS>;

/// A point of the screen with the light on it.
struct LitPoint {
    SurfacePoint on;
    LitBy by;
};

using LitTriangle = std::array<LitPoint, 3>;

}  // namespace Veltrani::DisplayReport
