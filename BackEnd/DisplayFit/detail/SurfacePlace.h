#pragma once

#include "Common/Point.h"

#include <array>
#include <optional>
#include <vector>

class ScreenGeometry;

namespace Veltrani::DisplayFitDetail {

/// The place of a surface that is nearest to a point.
struct SurfacePlace {
    Point<double, 2> parameters;               ///< (s, t) of the screen
    Point<double, 3> point;                    ///< there, native units
    std::array<Point<double, 3>, 2> tangents;  ///< by s and by t

    /// The surface at a place; false where there is none.
    static bool at(const ScreenGeometry& screen, const Point<double, 2>& parameters, SurfacePlace& place);
};

/// Searches a surface with 2D parameters.
class SurfaceSearch {
public:
    /// Samples the surface and what is around it once.
    /// @param screen must outlive the search
    explicit SurfaceSearch(const ScreenGeometry& screen);

    /// Searches from a place where it is expected, and from the sample that is nearest where that leads astray.
    [[nodiscard]] std::optional<SurfacePlace> nearest(const Point<double, 3>& point,
                                                      const Point<double, 2>& expected) const;

private:
    struct Sample {
        Point<double, 2> parameters;
        Point<double, 3> point;
    };

    const ScreenGeometry& m_screen;
    std::vector<Sample> m_samples;
};

}  // namespace Veltrani::DisplayFitDetail
