#pragma once

#include "DisplayFit/FitResult.h"
#include "DisplayFit/detail/ChannelModel.h"
#include "DisplayFit/detail/FitPoints.h"

#include <cstddef>
#include <optional>
#include <string>

namespace Veltrani::DisplayFitDetail {

/// Returns the deviation of a typical point, native units; 0 where it is not stated.
[[nodiscard]] double typicalPointDeviation(const FitPoints& points);

/// Returns why the points of a channel cannot determine so many values wherever they lie: too few of them, or on one
/// line in space or in the picture.
[[nodiscard]] std::optional<DisplayFit::FitFinding> faultOfPlaces(const FitPoints& points, std::size_t unknowns);

/// Returns which unit the lengths of the points are in, where the size of what they cover differs from what the model
/// places on the screen by the ratio of two units.
[[nodiscard]] std::optional<DisplayFit::FitFinding> faultOfUnit(const ChannelModel& model, const std::string& unit);

}  // namespace Veltrani::DisplayFitDetail
