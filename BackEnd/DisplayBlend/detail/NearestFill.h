#pragma once

#include "DisplayBlend/BlendPicture.h"

#include <vector>

namespace Veltrani::DisplayBlendDetail {

/// Gives each pixel that has no value that of the nearest one that has, to within a few tenths of the distance. A
/// picture without any value stays as it is.
/// @param isMissing by pixel
void fillFromNearest(DisplayBlend::BlendPicture& picture, const std::vector<bool>& isMissing);

}  // namespace Veltrani::DisplayBlendDetail
