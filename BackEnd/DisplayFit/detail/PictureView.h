#pragma once

#include "Common/Matrix.h"
#include "Common/Point.h"
#include "DisplayFit/ChannelValues.h"
#include "DisplayFit/detail/LensFormula.h"

namespace Veltrani::DisplayFitDetail {

/// A projector, or the eye of a spherical display, with its picture: (u, v) = (widthFactor a + shift, ...) of the place
/// (a, b) that the lens shows a ray at.
struct PictureView {
    Matrix<double, 3> world_from_projector;
    Point<double, 3> position;
    Point<double, 2> factor{1, 1};     ///< of a and b, in widths and heights of the picture
    Point<double, 2> shift{0.5, 0.5};  ///< (u, v) of the axis
    LensFormula lens;
    Point<double, 2> pixels{1, 1};  ///< size of the picture, the unit of the residuals

    /// Of a channel as its values state it.
    /// @param kind of a lens without a calibration; not used where there is one
    [[nodiscard]] static PictureView of(const DisplayFit::ChannelValues& values, LensFormula::Kind kind,
                                        const Point<int, 2>& pixels);
};

}  // namespace Veltrani::DisplayFitDetail
