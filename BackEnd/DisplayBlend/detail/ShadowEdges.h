#pragma once

#include "Common/Point.h"
#include "DisplayBlend/detail/EdgeField.h"
#include "DisplayBlend/detail/PlaceSampler.h"

#include <cstddef>

namespace Veltrani::DisplayBlendDetail {

/// Finds where a shadow or a horizon ends the light of a channel on a part of the screen that another channel lights on
/// both sides of that border.
///
/// The picture is gone through in cells of eight pixels; a shadow that is narrower may be overlooked.
/// @param pixels width and height of the picture
/// @param field receives the borders
void addShadows(const PlaceSampler& sampler, std::size_t channel, const Point<int, 2>& pixels, EdgeField& field);

}  // namespace Veltrani::DisplayBlendDetail
