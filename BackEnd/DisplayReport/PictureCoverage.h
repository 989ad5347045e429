#pragma once

#include "DisplayReport/ChannelLight.h"
#include "DisplayReport/Extent.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace Veltrani::DisplayReport {

/// What becomes of the picture of one channel, as parts of the picture (0 to 1).
struct PictureCoverage {
    using Lights = std::vector<std::unique_ptr<ChannelLight>>;

    double landed = 0;               ///< on the screen; the rest misses it
    std::vector<double> sharedWith;  ///< by channel: where that one lights the screen, too; for itself what has landed
    Extent extent;                   ///< of what lands on the screen

    /// Throws what `ChannelLight::land` throws.
    /// @param lights of all channels, none null; at most `MOST_CHANNELS`
    /// @param channel whose picture it is
    /// @param progress told after each row of `ROWS`
    [[nodiscard]] static PictureCoverage of(const Lights& lights, std::size_t channel,
                                            const std::function<void()>& progress = {});

    /// Rows of the lattice over the picture that the light is first looked for on.
    static constexpr std::size_t ROWS = 80;
};

}  // namespace Veltrani::DisplayReport
