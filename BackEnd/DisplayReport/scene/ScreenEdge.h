#pragma once

#include "Common/Point.h"

class ScreenGeometry;

namespace Veltrani::DisplayReport {

/// Distinguishes the points of a screen from those of its continuation past its edges, where an outline may lie though
/// no light arrives: the lower half of a sphere below a dome, the plane beside a wall.
class ScreenEdge {
public:
    /// @param surface must outlive the edge
    explicit ScreenEdge(const ScreenGeometry& surface);

    /// True for a point of the surface or of its continuation that the surface itself reaches, to a ten thousandth of
    /// its size: its edges count as its own.
    [[nodiscard]] bool isWithin(const Point<double, 3>& point) const;

private:
    /// Whether the surface passes near a point, in the direction of its normal.
    [[nodiscard]] bool passes(const Point<double, 3>& point, const Point<double, 3>& normal) const;

    const ScreenGeometry& m_surface;
    double m_size;  ///< native units
};

}  // namespace Veltrani::DisplayReport
