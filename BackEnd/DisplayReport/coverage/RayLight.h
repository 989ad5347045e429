#pragma once

#include "DisplayReport/coverage/ChannelLight.h"

namespace Veltrani::DisplayReport {

/// The light of a channel whose picture leaves a point in space as straight rays.
class RayLight : public ChannelLight {
public:
    void land(std::span<const Point<double, 2>> picture, std::span<Landing> landings) const override;
    /// A point behind another part of the surface is not lit.
    [[nodiscard]] bool lights(const SurfacePoint& point) const override;
    bool findPicture(const SurfacePoint& point, Point<double, 2>& picture) const override;

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

}  // namespace Veltrani::DisplayReport
