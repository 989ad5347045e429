#pragma once

#include "Common/Point.h"

#include <array>

namespace Veltrani::DisplayFitDetail {

/// The plane that the current screen of the `ScreenManager` follows near a point; across the direction of view where
/// there is no screen, or it is seen from its edge.
class ScreenPlane {
public:
    /// @param point,viewer world frame, native units
    [[nodiscard]] static ScreenPlane at(const Point<double, 3>& point, const Point<double, 3>& viewer);
    /// Across a direction of any length.
    [[nodiscard]] static ScreenPlane across(const Point<double, 3>& point, const Point<double, 3>& direction);

    [[nodiscard]] Point<double, 3> at(const Point<double, 2>& along) const {
        return m_origin + m_first * along[0] + m_second * along[1];
    }
    [[nodiscard]] const Point<double, 3>& first() const { return m_first; }
    [[nodiscard]] const Point<double, 3>& second() const { return m_second; }

    /// Returns the step along the plane that changes two values by `wanted`.
    /// @param gradients of the values, by the place in space
    [[nodiscard]] Point<double, 2> solve(const std::array<Point<double, 3>, 2>& gradients,
                                         const Point<double, 2>& wanted) const;

    /// Calculates where a line meets the plane; false where it runs along it.
    bool meet(const Point<double, 3>& origin, const Point<double, 3>& direction, Point<double, 2>& along) const;

private:
    ScreenPlane(const Point<double, 3>& origin, const Point<double, 3>& normal);

    Point<double, 3> m_origin;
    Point<double, 3> m_first;  ///< unit vectors along the plane
    Point<double, 3> m_second;
};

}  // namespace Veltrani::DisplayFitDetail
