#pragma once

#include "Common/Point.h"

namespace KelvoScreenDetail {

/// The direction of a ray, of a length whose square neither overflows nor vanishes.
struct RayAim {
    RayAim(const Point<double, 3>& from, const Point<double, 3>& to)
        : direction(to - from), length2(dot(direction, direction)) {
        if (!(length2 >= SMALLEST_SQUARE && length2 <= LARGEST_SQUARE)) {
            *this = rescaled(direction);
        }
    }

    /// False for a ray of length zero and for one that is not finite.
    [[nodiscard]] bool isUsable() const { return length2 > 0; }

    /// The position on the ray of a t in units of `direction`; not finite where a double cannot hold it. The start is 0
    /// for every ray.
    [[nodiscard]] double positionOf(double t) const { return t == 0 ? 0.0 : t * scale; }

    /// `to - from`, scaled when that is extremely short or long.
    Point<double, 3> direction;
    /// The square of the length of `direction`; zero when the ray is not usable.
    double length2;
    /// Positions along the ray, in units of `to - from`, per unit of `direction`.
    double scale = 1;

private:
    /// Outside these bounds the square of a length loses digits or leaves the range of a double.
    static constexpr double SMALLEST_SQUARE = 1e-200;
    static constexpr double LARGEST_SQUARE = 1e200;

    explicit RayAim(const Point<double, 3>& unscaled) : direction(unscaled), length2(0) {}

    /// By value: an object that a function elsewhere may change does not stay in registers.
    [[nodiscard]] static RayAim rescaled(Point<double, 3> direction);
};

}  // namespace KelvoScreenDetail
