#pragma once

#include "Common/Point.h"

#include <array>
#include <span>

namespace Veltrani::DisplayFitDetail {

/// How points lie in space: along their principal axes.
struct PointShape {
    Point<double, 3> centre;
    std::array<Point<double, 3>, 3> axes;  ///< of length 1, across each other; the longest extent first
    std::array<double, 3> extents{};       ///< root of the mean square distance from the centre along each, falling

    [[nodiscard]] static PointShape of(std::span<const Point<double, 3>> points);

    /// True where the points lie on one plane, but for their deviation and a thousandth of their extent.
    /// @param deviation of a point, native units; 0 where it is not known
    [[nodiscard]] bool isFlat(double deviation) const { return !(extents[2] > allowed(deviation)); }
    /// True where they lie on one line, or in one place.
    [[nodiscard]] bool isStraight(double deviation) const { return !(extents[1] > allowed(deviation)); }

private:
    [[nodiscard]] double allowed(double deviation) const;
};

}  // namespace Veltrani::DisplayFitDetail
