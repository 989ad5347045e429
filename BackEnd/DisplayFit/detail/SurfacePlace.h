#pragma once

#include "Common/Point.h"

#include <array>
#include <optional>

class ScreenGeometry;

namespace Veltrani::DisplayFitDetail {

/// The place of a surface that is nearest to a point.
struct SurfacePlace {
    Point<double, 2> parameters;               ///< (s, t) of the screen
    Point<double, 3> point;                    ///< there, native units
    std::array<Point<double, 3>, 2> tangents;  ///< by s and by t

    /// Searches from a place where it is expected, and from all over the surface and around it. Nothing where the
    /// surface has no 2D parameters.
    [[nodiscard]] static std::optional<SurfacePlace> nearest(const ScreenGeometry& screen,
                                                             const Point<double, 3>& point,
                                                             const Point<double, 2>& expected);

    /// The surface at a place; false where there is none.
    static bool at(const ScreenGeometry& screen, const Point<double, 2>& parameters, SurfacePlace& place);
};

}  // namespace Veltrani::DisplayFitDetail
