#pragma once

#include "DisplayFit/FitResult.h"
#include "DisplayFit/detail/ChannelModel.h"

namespace Veltrani::DisplayFitDetail {

/// Notes the residuals of a model before the fit, and prepares those after it: the same, until they are noted.
void noteBefore(const ChannelModel& model, DisplayFit::ChannelFit& fit);
/// Notes those after it.
void noteAfter(const ChannelModel& model, DisplayFit::ChannelFit& fit);

/// Returns the median size of the residuals in the picture, as a part of its larger side; infinite where half of the
/// points have none.
[[nodiscard]] double medianMiss(const ChannelModel& model, const Point<double, 2>& pixels);
/// The same of those that are noted after the fit.
[[nodiscard]] double medianMiss(const DisplayFit::ChannelFit& fit, const Point<double, 2>& pixels);

}  // namespace Veltrani::DisplayFitDetail
