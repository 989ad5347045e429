#pragma once

#include "DisplayReport/still/Drawing.h"

#include <cstddef>

namespace Veltrani::DisplayReport {

struct DisplayScene;

/// Draws the residuals of one channel in its own picture, upright, with its pixels along its edges: of every measured
/// point the stated place, and from there towards the place whose light lands where it was measured. Beside it all
/// channels with what is left of their points.
class ChannelPicturePainter {
public:
    /// @param width, height of the drawing, pixels, above zero
    ChannelPicturePainter(int width, int height) : m_width(width), m_height(height) {}

    /// @param scene with residuals
    /// @param number of the channel in it
    [[nodiscard]] Drawing paint(const DisplayScene& scene, std::size_t number) const;

private:
    int m_width;
    int m_height;
};

}  // namespace Veltrani::DisplayReport
