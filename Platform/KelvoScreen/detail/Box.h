#pragma once

#include "Common/Point.h"

#include <algorithm>
#include <cstddef>
#include <limits>

namespace Veltrani::KelvoScreenDetail {

/// An axis-aligned box; empty until a point is added.
struct Box {
    static constexpr double INFINITE = std::numeric_limits<double>::infinity();

    Point<double, 3> lower{INFINITE, INFINITE, INFINITE};
    Point<double, 3> upper{-INFINITE, -INFINITE, -INFINITE};

    [[nodiscard]] bool isEmpty() const { return !(lower[0] <= upper[0]); }

    void add(const Point<double, 3>& point) {
        for (std::size_t i = 0; i < 3; ++i) {
            lower[i] = std::min(lower[i], point[i]);
            upper[i] = std::max(upper[i], point[i]);
        }
    }
    void add(const Box& box) {
        add(box.lower);
        add(box.upper);
    }
    /// Returns true inside and on the surface. False for a point that is not a number.
    [[nodiscard]] bool contains(const Point<double, 3>& point) const {
        bool inside = true;
        for (std::size_t i = 0; i < 3; ++i) {
            inside = inside && point[i] >= lower[i] && point[i] <= upper[i];
        }
        return inside;
    }
    [[nodiscard]] Point<double, 3> centre() const;
    /// Half of the longest side.
    [[nodiscard]] double halfSize() const {
        return std::max(std::max(upper[0] - lower[0], upper[1] - lower[1]), upper[2] - lower[2]) / 2;
    }
    /// Half of the surface: the chance of a random ray to pass the box is proportional to it.
    [[nodiscard]] double halfSurface() const {
        const Point<double, 3> size = upper - lower;
        return size[0] * size[1] + size[1] * size[2] + size[2] * size[0];
    }
    /// Returns the largest absolute coordinate.
    [[nodiscard]] double largestCoordinate() const;

    /// The part of a ray inside the box enlarged by `margin` on all sides: from t = first >= 0 to second. False when
    /// there is none, and when the ray is not finite or has no length.
    [[nodiscard]] bool clip(const Point<double, 3>& from, const Point<double, 3>& direction, double margin,
                            double& first, double& second) const;
};

}  // namespace Veltrani::KelvoScreenDetail
