#pragma once

#include "support/ScreenGeometryDouble.h"

#include <functional>
#include <vector>

/// A screen that answers each ray by a function and keeps the rays.
class RayScreen : public ScreenGeometryDouble {
public:
    using ScreenGeometryDouble::ScreenGeometryDouble;

    using Vector = Point<double, 3>;

    /// At first every ray meets it at its second point.
    std::function<IntersectionSet(const Vector& from, const Vector& to)> surface =
        [](const Vector&, const Vector& to) -> IntersectionSet {
        return {{to, 1.0}};
    };
    std::function<Vector(const Vector& point)> normalAt = [](const Vector&) -> Vector { return {0.0, 1.0, 0.0}; };

    mutable std::vector<Ray> rays;
    mutable std::vector<Ray> boundary;
    mutable std::vector<Ray> centre;

    IntersectionSet intersect(const Vector& from, const Vector& to) const override {
        rays.emplace_back(from, to);
        ScreenGeometryDouble::intersect(from, to);
        return surface(from, to);
    }
    Vector getScreenNormal(const Vector& point) const override {
        ScreenGeometryDouble::getScreenNormal(point);
        return normalAt(point);
    }
    std::vector<Vector> intersectChannelBoundary(const std::vector<Ray>& boundaryRays,
                                                 const std::vector<Ray>& centreRays) const override {
        boundary = boundaryRays;
        centre = centreRays;
        return ScreenGeometryDouble::intersectChannelBoundary(boundaryRays, centreRays);
    }
};
