#pragma once

#include "Common/Matrix.h"
#include "Common/Point.h"

#include <cstddef>
#include <optional>
#include <string>

namespace Veltrani::DisplayFit {

/// Where the light of one point of a channel's picture was measured in space.
struct MeasuredPoint {
    std::size_t channel = 0;   ///< in the order of the configuration
    Point<double, 2> picture;  ///< normalised: (0, 0) bottom left, (1, 1) top right; may lie outside
    Point<double, 3> world;    ///< the frame of the display, native units
    /// Of `world`, native units squared, symmetric and not negative. All points of a fit state it, or none: the points
    /// then weigh alike, and their deviation is estimated from the residuals.
    std::optional<Matrix<double, 3>> covariance;
    /// Standard deviations of u and v, normalised; zero for a place in the picture that is exact. Stated with
    /// `covariance` or alone, by all points of a fit or by none.
    std::optional<Point<double, 2>> pictureDeviation;
    std::size_t row = 0;  ///< line of the file that it was read from, from 1; 0 for none
    std::string set;      ///< name of the station that measured it, UTF-8; the fit does not read it
};

}  // namespace Veltrani::DisplayFit
