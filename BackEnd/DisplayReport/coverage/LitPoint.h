#pragma once

#include "Common/Point.h"
#include "DisplayReport/coverage/SurfacePoint.h"

#include <array>
#include <bitset>
#include <cstddef>

namespace Veltrani::DisplayReport {

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
