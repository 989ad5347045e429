#pragma once

#include "DisplayExport/RenderFrustum.h"

namespace Veltrani::DisplayExport {

class ChannelSight;

/// The tightest frustum of a view that holds everything of a channel's picture that is seen, and `margin` on each side,
/// a part of its width or height.
///
/// Throws `VeltraniException`, naming the channel, when nothing is seen, and when it would reach as far from the
/// direction of view as `widest` (radians) or further, with the inputs that do.
[[nodiscard]] RenderFrustum fittedFrustum(const ChannelSight& sight, const ViewFrame& view, double margin,
                                          double widest);

}  // namespace Veltrani::DisplayExport
