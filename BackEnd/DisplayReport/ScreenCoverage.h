#pragma once

#include "DisplayReport/Extent.h"
#include "DisplayReport/LightCutter.h"
#include "DisplayReport/PictureCoverage.h"

#include <cstddef>
#include <functional>
#include <vector>

namespace Veltrani::DisplayReport {

class ScreenSampling;

/// Which part of a screen is lit by which channels. Areas in square native units, along the surface.
struct ScreenCoverage {
    /// Receives every piece of the surface and the channels that light it.
    using Take = LightCutter::Take;
    /// Told how many of how many triangles are done.
    using Progress = std::function<void(std::size_t done, std::size_t total)>;

    double area = 0;                            ///< of the screen: the sum of `byCount`
    std::vector<double> byCount;                ///< lit by 0, 1, ... channels; one more than there are channels
    std::vector<std::vector<double>> sharedBy;  ///< by two channels: lit by both; by a channel twice: lit by it

    /// @param pictures where the light of each channel is to be looked for more closely, as many as `lights`
    [[nodiscard]] static ScreenCoverage of(const ScreenSampling& screen, const PictureCoverage::Lights& lights,
                                           const std::vector<Extent>& pictures, const Take& take = {},
                                           const Progress& progress = {});
};

}  // namespace Veltrani::DisplayReport
