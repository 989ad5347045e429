#pragma once

#include "DisplayFit/FitResult.h"
#include "DisplayFit/detail/ChannelModel.h"
#include "DisplayFit/detail/FitPoints.h"
#include "DisplayFit/detail/PointShape.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace Veltrani::DisplayFitDetail {

/// Returns the median distance of places from their median place: a few that lie elsewhere change nothing.
[[nodiscard]] double sizeOf(const std::vector<Point<double, 3>>& places);

/// Returns the deviation of a typical point, native units; 0 where it is not stated.
[[nodiscard]] double typicalPointDeviation(const FitPoints& points);

/// Returns why the points of a channel cannot determine so many values wherever they lie: too few of them, or on one
/// line in space or in the picture, or with deviations that leave their places open.
/// @param shape of the points in space
[[nodiscard]] std::optional<DisplayFit::FitFinding> faultOfPlaces(const FitPoints& points, const PointShape& shape,
                                                                  std::size_t unknowns);

/// Returns what no projector can be of the values that were solved: a picture narrower than a degree, a place far
/// beyond all points.
/// @param shape of the points in space
[[nodiscard]] std::optional<DisplayFit::FitFinding> faultOfValues(const DisplayFit::ChannelFit& fit,
                                                                  const PointShape& shape);

/// Returns which unit the lengths of the points are in, where the size of what they cover differs from what the model
/// places on the screen by the ratio of two units.
[[nodiscard]] std::optional<DisplayFit::FitFinding> faultOfUnit(const ChannelModel& model, const std::string& unit);

}  // namespace Veltrani::DisplayFitDetail
