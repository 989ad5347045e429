#pragma once

#include "DisplayReport/basics/PngPicture.h"
#include "DisplayReport/still/Drawing.h"

#include <vector>

namespace Veltrani::DisplayReport {

/// How near the opaque triangles of a drawing are at each pixel: shows which shapes are hidden, for formats that have
/// no depth of their own.
class NearnessMap {
public:
    explicit NearnessMap(const Drawing& drawing);

    /// False for a place that opaque triangles hide, all around it: what lies on a surface, or at the edge of one, is
    /// not hidden by it. True outside of the picture.
    [[nodiscard]] bool shows(const Drawing::Place& place) const;

private:
    void add(const Drawing::Triangle& triangle);

    int m_width;
    int m_height;
    std::vector<float> m_nearness;  ///< row by row from the top left pixel; 0 where there is nothing
};

struct Drawing;

/// The pixels of a drawing on white paper: nearer shapes hide farther ones pixel by pixel, edges are smoothed by nine
/// samples a pixel.
[[nodiscard]] PngPicture rasterised(const Drawing& drawing);

}  // namespace Veltrani::DisplayReport
