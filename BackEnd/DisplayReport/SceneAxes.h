#pragma once

#include "DisplayReport/Extent.h"

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

    Extent box;
    std::array<Axis, 3> axes;  ///< x, y, z

    /// Ticks at round numbers, one to about six along the longest side and equally far apart along the others.
    [[nodiscard]] static SceneAxes of(const Extent& box, const std::string& unit);
};

}  // namespace Veltrani::DisplayReport
