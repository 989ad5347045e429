#pragma once

#include "Common/Point.h"
#include "DisplayReport/coverage/ChannelLight.h"
#include "ScreenManager/FrustumRays.h"

class ScreenGeometry;
class ProjectionModel;

namespace Veltrani::DisplayReport {

/// Whether light from `from` reaches a point of the surface before it meets another part of the surface.
///
/// A surface is not hidden by itself: what is met less than a millionth of the way before the point is the point, and
/// so is a ray that passes an edge by rounding and meets nothing at all. False for a NaN.
[[nodiscard]] bool isInSight(const ScreenGeometry& surface, const Point<double, 3>& from,
                             const Point<double, 3>& onSurface);

/// The light of a channel whose picture leaves a point in space as straight rays.
class RayLight : public ChannelLight {
public:
    void land(std::span<const Point<double, 2>> picture, std::span<Landing> landings) const override;
    /// A point behind another part of the surface is not lit.
    [[nodiscard]] bool lights(const SurfacePoint& point) const override;
    bool findPicture(const SurfacePoint& point, Point<double, 2>& picture) const override;
    void reach(std::span<const SurfacePoint> points, std::span<Reach> reaches) const override;

protected:
    RayLight(const Point<double, 3>& origin, std::shared_ptr<const ScreenGeometry> surface);

    /// The direction of the ray of a picture point; false when it has none.
    virtual bool rayOf(const Point<double, 2>& picture, Point<double, 3>& direction) const = 0;
    /// The picture point whose ray goes to a point in space, perhaps outside of the picture; false when none does.
    virtual bool pictureOf(const Point<double, 3>& place, Point<double, 2>& picture) const = 0;

    [[nodiscard]] const Point<double, 3>& origin() const { return m_origin; }

private:
    Point<double, 3> m_origin;  ///< world frame
    std::shared_ptr<const ScreenGeometry> m_surface;
};

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

/// The light of a projector with a projection model: rays from its position through its lens.
class LensLight : public RayLight {
public:
    /// Without a model nothing is lit.
    LensLight(std::shared_ptr<const ProjectionModel> model, std::shared_ptr<const ScreenGeometry> surface);

protected:
    bool rayOf(const Point<double, 2>& picture, Point<double, 3>& direction) const override;
    bool pictureOf(const Point<double, 3>& place, Point<double, 2>& picture) const override;

private:
    std::shared_ptr<const ProjectionModel> m_model;
};

}  // namespace Veltrani::DisplayReport
