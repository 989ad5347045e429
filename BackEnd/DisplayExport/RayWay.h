#pragma once

#include "DisplayExport/PictureWay.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/FrustumRays.h"

#include <vector>

class CollimatedTargetLocator;
class ProjectionModel;
class SphereTargetLocator;

namespace Veltrani::DisplayExport {

/// A picture that leaves a point in space as straight rays.
class RayWay : public PictureWay {
public:
    void follow(std::span<const Point<double, 2>> picture, std::span<Arrival> arrivals) const override;
    [[nodiscard]] Arrival continued(const Point<double, 2>& picture) const override;

protected:
    RayWay(const Point<double, 3>& origin, std::shared_ptr<const ScreenGeometry> surface);

    /// The direction of the ray of a picture point; false when it has none.
    virtual bool directionOf(const Point<double, 2>& picture, Point<double, 3>& direction) const = 0;

    /// Where rays from the origin meet the screen; writes every hit.
    virtual void cast(std::span<const Ray> rays, std::span<SurfaceHit> hits) const;
    /// Where one meets the screen or its continuation from one side; false when it does not.
    virtual bool castBeyond(const Ray& ray, int side, Point<double, 3>& hit) const;

    [[nodiscard]] const Point<double, 3>& origin() const { return m_origin; }
    [[nodiscard]] const ScreenGeometry& surface() const { return *m_surface; }

private:
    /// The side of the screen that more of the picture reaches.
    [[nodiscard]] int side() const;

    Point<double, 3> m_origin;
    std::shared_ptr<const ScreenGeometry> m_surface;
    mutable std::optional<int> m_side;  ///< once it was needed
    mutable std::vector<Ray> m_rays;    ///< room that is used again, as is the following
    mutable std::vector<SurfaceHit> m_hits;
};

/// Rays of a channel that is described like a camera, its headings bent by tables where it has some.
class FrustumWay : public RayWay {
public:
    /// @param locator not null
    FrustumWay(std::shared_ptr<const SphereTargetLocator> locator, std::shared_ptr<const ScreenGeometry> surface);

protected:
    bool directionOf(const Point<double, 2>& picture, Point<double, 3>& direction) const override;

private:
    std::shared_ptr<const SphereTargetLocator> m_locator;
    FrustumRays m_rays;
    bool m_isBent;
};

/// Such rays by way of a mirror.
class MirrorWay : public FrustumWay {
public:
    /// @param locator not null
    MirrorWay(std::shared_ptr<const CollimatedTargetLocator> locator, std::shared_ptr<const ScreenGeometry> surface);

    [[nodiscard]] std::optional<Point<double, 3>> eyeOfMirror() const override;
    /// The rays start beside the mirror, in its frame.
    [[nodiscard]] Point<double, 3> directionInMirror(const Arrival& arrival) const override;

protected:
    void cast(std::span<const Ray> rays, std::span<SurfaceHit> hits) const override;
    bool castBeyond(const Ray& ray, int side, Point<double, 3>& hit) const override;

private:
    std::shared_ptr<const CollimatedTargetLocator> m_mirror;
};

/// Rays of a projector with a projection model.
class LensWay : public RayWay {
public:
    /// Without a model nothing arrives.
    LensWay(std::shared_ptr<const ProjectionModel> model, std::shared_ptr<const ScreenGeometry> surface);

protected:
    bool directionOf(const Point<double, 2>& picture, Point<double, 3>& direction) const override;

private:
    std::shared_ptr<const ProjectionModel> m_model;
};

/// Rays whose way only the locator knows.
class FollowedWay : public PictureWay {
public:
    /// @param locator not null
    explicit FollowedWay(std::shared_ptr<const SphereTargetLocator> locator);

    void follow(std::span<const Point<double, 2>> picture, std::span<Arrival> arrivals) const override;
    /// Nothing: the locator knows no continuation.
    [[nodiscard]] Arrival continued(const Point<double, 2>& picture) const override;

private:
    std::shared_ptr<const SphereTargetLocator> m_locator;
};

}  // namespace Veltrani::DisplayExport
