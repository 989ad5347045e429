#pragma once

#include "DisplayFit/MeasuredPoint.h"

#include <cstddef>
#include <functional>
#include <span>

namespace Veltrani::DisplayFitDetail {

/// Throws `VeltraniException` for the first point that no fit can use: of a channel that there is not, with a number
/// that is not finite, a covariance that is none, deviations that leave its place exact, or deviations where others
/// have none.
/// @param pulse called now and then; may be empty
void requireSound(std::span<const DisplayFit::MeasuredPoint> points, std::size_t channels,
                  const std::function<void()>& pulse);

}  // namespace Veltrani::DisplayFitDetail
