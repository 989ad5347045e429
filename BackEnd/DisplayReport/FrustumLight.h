#pragma once

#include "Common/Matrix.h"
#include "DisplayReport/RayLight.h"
#include "ScreenManager/SphereTargetLocator.h"

namespace Veltrani::DisplayReport {

/// The light of a channel that is described like a camera without tables: rays through a frustum.
class FrustumLight : public RayLight {
public:
    FrustumLight(const SphereTargetLocatorParams& camera, std::shared_ptr<const ScreenGeometry> surface);

protected:
    bool rayOf(const Point<double, 2>& picture, Point<double, 3>& direction) const override;
    /// False behind the camera, and everywhere for a frustum without width or height.
    bool pictureOf(const Point<double, 3>& place, Point<double, 2>& picture) const override;

private:
    Matrix<double, 3> m_rotation;  ///< from the camera's frame to world axes
    Matrix<double, 3> m_inverse;   ///< back
    Point<double, 2> m_start;      ///< tangents at (u, v) = (0, 0)
    Point<double, 2> m_size;       ///< from there to (1, 1)
};

}  // namespace Veltrani::DisplayReport
