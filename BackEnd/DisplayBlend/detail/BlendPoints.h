#pragma once

#include "Common/Point.h"
#include "DisplayReport/coverage/ChannelLight.h"

namespace Veltrani::DisplayBlendDetail {

/// In a picture, (0, 0) to (1, 1), unless stated otherwise.
using P2 = Point<double, 2>;
/// World frame, native units.
using P3 = Point<double, 3>;
using DisplayReport::ChannelLight;

}  // namespace Veltrani::DisplayBlendDetail
