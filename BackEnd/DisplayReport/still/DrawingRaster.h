#pragma once

#include "DisplayReport/basics/PngPicture.h"

namespace Veltrani::DisplayReport {

struct Drawing;

/// The pixels of a drawing on white paper: nearer shapes hide farther ones pixel by pixel, edges are smoothed by nine
/// samples a pixel.
[[nodiscard]] PngPicture rasterised(const Drawing& drawing);

}  // namespace Veltrani::DisplayReport
