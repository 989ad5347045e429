#pragma once

#include "DisplayReport/PictureBox.h"
#include "DisplayReport/PitchHints.h"

#include <cstddef>

namespace Veltrani::DisplayReport {

class ChannelLight;

/// How large the pixels of a channel are on the screen: the side of the square that covers as much of the surface as a
/// pixel does, in native units. Measured along the surface, so a pixel that arrives at a slant is larger; on a curved
/// screen it is the size on the tangent plane.
///
/// Pixels are measured one by one: on a lattice over a rectangle of the picture that has its corners and edges in it,
/// and more closely where the least and the greatest may be, until these are right to less than a thousandth of
/// themselves. Those that miss the screen or lie across an edge of it, in part, are left out, and those across a fold
/// of it unless there are no others.
///
/// Where light grazes the surface, pixels grow beyond all bounds towards the ray that touches it, each row of the
/// picture to another last whole one: the greatest found is one of them, and a larger one may be left.
struct PixelPitch {
    double least = 0;
    double most = 0;
    std::size_t measured = 0;  ///< pixels that were; none for a picture without pixels

    /// @param width, height of the picture, pixels
    /// @param part of the picture that lands, at least
    /// @param hints where in it to look besides
    [[nodiscard]] static PixelPitch of(const ChannelLight& light, int width, int height, const PictureBox& part = {},
                                       const PitchHints& hints = {});
};

}  // namespace Veltrani::DisplayReport
