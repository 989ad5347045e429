#pragma once

#include "Common/Point.h"

#include <array>

namespace Veltrani::KelvoControlDetail {

/// The distortion of a fisheye lens: the angle to the axis decides how far from the centre of the picture a ray
/// arrives.
///
///     theta = atan2(sqrt(X^2 + Y^2), Z)
///     thd   = theta (1 + k1 theta^2 + k2 theta^4 + k3 theta^6 + k4 theta^8)
///
/// X to the right, Y down, Z forward. Rays to behind the lens are described as well. Where thd stops growing the
/// formula folds back and describes no lens any more: rays at and beyond that angle are refused.
class FisheyeDistortion {
public:
    /// @param coefficients k1 to k4
    explicit FisheyeDistortion(const std::array<double, 4>& coefficients);

    /// Calculates where a ray of any length arrives; returns false, with `distorted` untouched, where the lens folds,
    /// for straight behind and for no direction at all.
    bool distort(const Point<double, 3>& ray, Point<double, 2>& distorted) const;

    /// The ray, of length 1, that arrives here; false, with `ray` untouched, when there is none.
    bool undistort(const Point<double, 2>& distorted, Point<double, 3>& ray) const;

    /// Returns the angle to the axis where the lens folds, at most pi; radians.
    [[nodiscard]] double foldAngle() const { return m_foldAngle; }

private:
    [[nodiscard]] double distortedAngle(double theta) const;
    [[nodiscard]] double slope(double theta) const;

    std::array<double, 4> m_k;
    double m_foldAngle = 0;
    double m_distortedFoldAngle = 0;
};

}  // namespace Veltrani::KelvoControlDetail
