#pragma once

#include "DisplayReport/Extent.h"

namespace Veltrani::DisplayReport {

class ChannelLight;

/// The box around what a lattice over the picture of a channel lands on: where its light is to be looked for closely.
/// Empty when no point of the lattice lands, which a picture may do that is much larger than the screen.
///
/// Throws what `ChannelLight::land` throws.
[[nodiscard]] Extent landingExtentOf(const ChannelLight& light);

}  // namespace Veltrani::DisplayReport
