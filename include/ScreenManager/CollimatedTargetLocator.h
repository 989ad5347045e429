#pragma once

#include "KelvoScreen/SphericalScreen.h"
#include "ScreenManager/MirrorFrame.h"
#include "ScreenManager/SphereTargetLocator.h"

#include <cstddef>
#include <span>
#include <utility>
#include <vector>

#pragma GCC diagnostic push
// No virtual destructor in this family: see TargetLocatorParams.
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// A channel that is seen in a spherical mirror. Angles in radians, lengths in native units.
struct CollimatedTargetLocatorParams : SphereTargetLocatorParams {
    /// All zero, tables empty.
    CollimatedTargetLocatorParams() = default;
    CollimatedTargetLocatorParams(const Point<double, 3>& eye, double left, double right, double bottom, double top,
                                  double z, double x, double y, const Point<double, 3>& orientationOfMirror,
                                  const Point<double, 3>& positionOfMirror, double radiusOfMirror, HeadingTable pitches,
                                  HeadingTable yaws);

    Point<double, 3> mirrorOrientation;  ///< the three angles (z, x, y) of `Veltrani::rotationZXY`
    Point<double, 3> mirrorPosition;     ///< added to points of the mirror before they are turned
    double mirrorRadius = 0.0;

protected:
    [[nodiscard]] bool equals(const TargetLocatorParams& other) const override;
};

#pragma GCC diagnostic pop

/// Targets on the screen as they are seen in a spherical mirror: each ray from the eye is reflected first.
///
/// The ray meets the sphere of the mirror placed around the origin. The point found there is moved by the mirror's
/// position and then turned by its orientation; the ray is turned before it is reflected, and turned once more
/// afterwards. The two turns are intended: the tables and orientations of calibrated displays belong to them. The
/// heading tables bend the rays of grids and outlines before that; `intersectWithTargetLocationSurface`, which layout
/// maps call, uses a ray as it is given.
///
/// A ray that misses the mirror, whose reflection misses the screen, or that has no screen to meet, is a miss.
class CollimatedTargetLocator : public SphereTargetLocator {
public:
    explicit CollimatedTargetLocator(const CollimatedTargetLocatorParams& params);

    [[nodiscard]] const TargetLocatorParams& getTargetLocatorParams() const override;

    /// Intersects the reflection with the screen, and returns from which side it reaches it; {false, 1} and `hit`
    /// untouched on a miss.
    std::pair<bool, int> intersectWithTargetLocationSurface(const Point<double, 3>& from, const Point<double, 3>& to,
                                                            Point<double, 3>& hit) const override;

    /// Intersects the reflection with the screen or its continuation from the side `normalSign`; returns false and
    /// leaves `hit` untouched on a miss.
    virtual bool intersectWithTargetLocationSurfaceExtrapolated(const Point<double, 3>& from,
                                                                const Point<double, 3>& to, Point<double, 3>& hit,
                                                                int normalSign) const;

    /// Reflects a ray in the mirror: the reflected ray starts where `ray` meets the mirror, and passes through the next
    /// point along the reflection. Returns false, and leaves `reflected` untouched, when `ray` misses the mirror.
    [[nodiscard]] bool reflect(const Ray& ray, Ray& reflected) const;

    /// Reflects many rays, with the same results: the reflections of those that meet the mirror are added to
    /// `reflected`, in their order, and the places of these rays among the given ones to `places`.
    void reflect(std::span<const Ray> rays, std::vector<Ray>& reflected, std::vector<std::size_t>& places) const;

    /// Returns the outline of a channel: with the side that most boundary rays reach (the centre rays when none of
    /// those hits; the back on a tie, and side 0 counts as back), where the reflection of every boundary ray meets the
    /// screen or its continuation. Rays without such a point are dropped; empty when nothing is hit at all.
    [[nodiscard]] std::vector<Point<double, 3>> intersectChannelBoundary(const std::vector<Ray>& boundary,
                                                                         const std::vector<Ray>& centre) const;

    /// Returns the place of its mirror.
    [[nodiscard]] const MirrorFrame& mirrorFrame() const { return m_mirrorFrame; }

protected:
    [[nodiscard]] std::vector<Point<double, 3>> calculateBoundaryPoints(Point<double, 3> a, Point<double, 3> b,
                                                                        Point<double, 3> c, Point<double, 3> d,
                                                                        int samplesPerEdge) const override;

private:
    friend struct ScreenManagerTestAccess;

    /// False, and the outputs untouched, when the ray misses the mirror.
    bool GetRefDirectionAndMirrorIntersection(const Point<double, 3>& from, const Point<double, 3>& to,
                                              Point<double, 3>& mirrorPoint,
                                              Point<double, 3>& reflectedDirection) const;
    /// Returns the direction of the reflection of a ray at a point of the mirror.
    [[nodiscard]] Point<double, 3> directionOfReflection(const Ray& ray, const Point<double, 3>& outwardNormal) const;

    MirrorFrame m_mirrorFrame;
    SphericalScreen m_mirror;
    CollimatedTargetLocatorParams m_collimatedParams;
};
