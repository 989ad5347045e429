#pragma once

#include "DisplayReport/basics/Extent.h"

#include <array>
#include <string>
#include <vector>

namespace Veltrani::DisplayReport {

/// Scales along three edges of a box, for reading places off a picture.
struct SceneAxes {
    struct Tick {
        double value = 0;  ///< coordinate along the axis, native units
        std::string text;
    };
    struct Axis {
        std::string title;  ///< "x right [m]"
        std::vector<Tick> ticks;
    };

    /// Three edges of a box: where those of x and y meet, and where each starts and ends.
    struct Edges {
        Point<double, 3> corner;
        std::array<Point<double, 3>, 3> starts;
        std::array<Point<double, 3>, 3> ends;
        std::array<Point<double, 3>, 3> outwards;  ///< from the box, of length 1
    };

    Extent box;
    std::array<Axis, 3> axes;  ///< x, y, z

    /// The edges that a box does not hide from a camera in that direction: x in front below, y on the nearer side
    /// below, z at the left end.
    [[nodiscard]] static Edges edgesFor(const Extent& box, const Point<double, 3>& towardsCamera);

    /// Ticks at round numbers, one to about six along the longest side and equally far apart along the others.
    [[nodiscard]] static SceneAxes of(const Extent& box, const std::string& unit);
};

}  // namespace Veltrani::DisplayReport
