#pragma once

#include "DisplayFit/FitResult.h"
#include "DisplayFit/MeasuredPoint.h"
#include "DisplayFit/detail/ConfiguredLight.h"

#include <optional>
#include <span>
#include <string>

namespace Veltrani::DisplayFitDetail {

/// Returns what is said where the points of one channel and one station are of two frames, as where an instrument was
/// moved and went on: a movement brings some of them to where their light lands, and another one the others, while no
/// movement brings all of them there. Nothing where they are not. The outcome is DOUBTFUL.
/// @param given the points that the light's own ones are indices of
/// @param unit name of the native unit, UTF-8
[[nodiscard]] std::optional<DisplayFit::FitFinding> mixedFrames(const ConfiguredLight& light,
                                                                std::span<const DisplayFit::MeasuredPoint> given,
                                                                const std::string& unit);

}  // namespace Veltrani::DisplayFitDetail
