#pragma once

#include "ScreenManager/FrustumRays.h"
#include "DisplayReport/coverage/RayLight.h"

namespace Veltrani::DisplayReport {

/// The light of a channel that is described like a camera without tables: rays through a frustum.
class FrustumLight : public RayLight {
public:
    FrustumLight(const SphereTargetLocatorParams& camera, std::shared_ptr<const ScreenGeometry> surface);

protected:
    bool rayOf(const Point<double, 2>& picture, Point<double, 3>& direction) const override;
    bool pictureOf(const Point<double, 3>& place, Point<double, 2>& picture) const override;

private:
    FrustumRays m_rays;
};

}  // namespace Veltrani::DisplayReport
