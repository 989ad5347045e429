#pragma once

#include "DisplayFit/detail/FitPoints.h"
#include "DisplayFit/detail/PictureModel.h"

#include <optional>

namespace Veltrani::DisplayFitDetail {

/// What a direct linear transform makes of the points of a channel.
struct LinearView {
    PictureView view;
    bool isMirrored = false;  ///< the points are those of the mirror image of a picture; `view` is then as given
};

/// Finds a view near to that of the points, wherever the given one is, from no more than their homogeneous linear
/// equations. What deviates most is left out step by step, so that some outliers do no harm. Nothing where the points
/// do not determine one: fewer than six, four from a known position or on a plane.
/// @param given its lens brings the picture to tangents; its values that are held stay
[[nodiscard]] std::optional<LinearView> linearStart(const FitPoints& points, const PictureView& given,
                                                    const PictureModel::Held& held);

}  // namespace Veltrani::DisplayFitDetail
