#pragma once

#include "DisplayFit/FitResult.h"
#include "DisplayFit/MeasuredPoint.h"
#include "DisplayFit/detail/ChannelSetup.h"
#include "DisplayFit/detail/FitPoints.h"

#include <cstddef>
#include <map>
#include <span>

namespace Veltrani::DisplayFitDetail {

/// Names what was done wrong to the points of a display: channels that are exchanged, u or v reversed or both columns
/// exchanged, axes of space mirrored or exchanged, and a frame that is not that of the display.
///
/// Mirrored points can be fitted as well by a mirrored picture, and points in a frame of their own by projectors in
/// other places. So the configured values, which are near to the truth, decide: the mistake is the one without which
/// the points lie where the configured light lands. A channel with a name for its mistake has no finding that
/// only follows from it.
void nameMistakes(const std::map<std::size_t, ChannelSetup>& setups, const std::map<std::size_t, FitPoints>& points,
                  std::span<const DisplayFit::MeasuredPoint> given, DisplayFit::DisplayFitResult& result);

}  // namespace Veltrani::DisplayFitDetail
