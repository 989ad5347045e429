#pragma once

#include "DisplayBlend/BlendPicture.h"
#include "DisplayBlend/detail/BlendPoints.h"

#include <span>

namespace Veltrani::DisplayBlendDetail {

/// Takes a third of the light of a channel away where outlines cross, less around it, and none from one and a half
/// pixels on.
///
/// There one channel is alone on one side, another one on the other, and both share what lies between: what is read
/// between the pixels of a picture is continuous, so that where all of this meets each has all of its light, and the
/// sum is two. With two thirds of each the place itself is too bright by a third, what lies beside it too dark by a
/// third, and no pictures at all can be nearer to one on both.
/// @param weights of one channel
/// @param crossings in its picture
void dimCrossings(DisplayBlend::BlendPicture& weights, std::span<const P2> crossings);

}  // namespace Veltrani::DisplayBlendDetail
