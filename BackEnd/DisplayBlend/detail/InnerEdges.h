#pragma once

#include "DisplayBlend/detail/BlendPoints.h"
#include "DisplayBlend/detail/EdgeField.h"
#include "DisplayBlend/detail/PlaceSampler.h"

#include <cstddef>
#include <vector>

namespace Veltrani::DisplayBlendDetail {

/// Finds the parts of the edge of a channel's picture that lie inside another picture.
///
/// The edge is gone along in steps of eight pixels and its parts are bounded by bisection; a part that is shorter than
/// a step may be overlooked.
/// @param pixels width and height of the picture
/// @param field receives the parts
/// @return the crossings: where such a part begins or ends, in the picture, and the picture goes on beside it on its
/// outer edge
std::vector<P2> addInnerSides(const PlaceSampler& sampler, std::size_t channel, const Point<int, 2>& pixels,
                              EdgeField& field);

}  // namespace Veltrani::DisplayBlendDetail
