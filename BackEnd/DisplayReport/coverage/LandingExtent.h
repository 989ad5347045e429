#pragma once

#include "DisplayReport/basics/Extent.h"

namespace Veltrani::DisplayReport {

class ChannelLight;

/// What a lattice over the picture of a channel lands on: where its light is to be looked for closely, and how closely.
struct LandingExtent {
    Extent box;         ///< empty when no point lands, which happens when the picture is much larger than the screen
    double narrow = 0;  ///< native units: the width of the picture on the screen or its height, whichever is less; 0
                        ///< when too little lands to tell

    /// Throws what `ChannelLight::land` throws.
    [[nodiscard]] static LandingExtent of(const ChannelLight& light);
};

}  // namespace Veltrani::DisplayReport
