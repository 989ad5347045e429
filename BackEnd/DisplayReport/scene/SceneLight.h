#pragma once

#include "Common/Point.h"
#include "DisplayReport/basics/PngPicture.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace Veltrani::DisplayReport {

/// Light on the current screen of a scene that was added up place by place, as pictures that are spread over triangles.
struct SceneLight {
    /// What one side of the surface shows. All pictures of a light have one size.
    struct Side {
        /// +1 for the side that is seen by looking along the normal, -1 for the other one, 0 for both.
        int seen = 0;
        PngPicture shown;       ///< in the tone of the screen
        PngPicture shift;       ///< how far the content is off
        PngPicture unevenness;  ///< how uneven the light is
    };

    std::vector<Point<double, 3>> vertices;               ///< world frame, native units; finite
    std::vector<Point<double, 2>> coordinates;            ///< of each in the pictures, (0, 0) top left to (1, 1)
    std::vector<std::array<std::uint32_t, 3>> triangles;  ///< counter-clockwise seen against the normal
    std::vector<Side> sides;                              ///< of those that show light; not empty
    std::vector<std::string> facts;                       ///< how fine it is, how far it is off; UTF-8, a line each
};

}  // namespace Veltrani::DisplayReport
