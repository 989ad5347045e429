#pragma once

#include "DisplayReport/coverage/CoverageReport.h"
#include "DisplayReport/coverage/PitchHints.h"

namespace Veltrani::DisplayReport {

class ChannelLight;

/// Measures how large the pixels of a channel are on the screen.
///
/// Pixels are measured one by one: on a lattice over a rectangle of the picture that has its corners and edges in it,
/// and more closely where the least and the greatest may be, until these are right to less than a thousandth of
/// themselves.
/// @param width, height of the picture, pixels
/// @param part of the picture that lands, at least
/// @param hints where in it to look besides
[[nodiscard]] PixelPitch measuredPitch(const ChannelLight& light, int width, int height, const PictureBox& part = {},
                                       const PitchHints& hints = {});

}  // namespace Veltrani::DisplayReport
