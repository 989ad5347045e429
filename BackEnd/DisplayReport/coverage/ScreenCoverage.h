#pragma once

#include "DisplayReport/basics/Progress.h"
#include "DisplayReport/coverage/ChannelLight.h"
#include "DisplayReport/coverage/LightCutter.h"
#include "DisplayReport/coverage/PitchHints.h"

#include <functional>
#include <vector>

namespace Veltrani::DisplayReport {

class ScreenSampling;

/// Which part of a screen is lit by which channels, and which part of their pictures that is. Areas in square native
/// units, along the surface.
///
/// The surface is gone through, and its pieces are carried back to the pictures: both sides fit together, however much
/// of a picture misses the screen.
struct ScreenCoverage {
    /// Receives every piece of the surface, its area along the surface, and the channels that light it.
    using Take = std::function<void(const LitTriangle& piece, double area, const LitBy& by)>;

    double area = 0;                              ///< of the screen: the sum of `byCount`
    std::vector<double> byCount;                  ///< lit by 0, 1, ... channels; one more than there are channels
    std::vector<std::vector<double>> sharedBy;    ///< by two channels: lit by both; by a channel twice: lit by it
    std::vector<std::vector<double>> partShared;  ///< the same as part of the picture (0 to 1) of the first of the two
    std::vector<PictureBox> landed;               ///< by channel: where in its picture that lies
    std::vector<PitchHints> hints;                ///< by channel

    /// @param lights at most `MOST_CHANNELS`, none null
    /// @param extents where the light of each channel is to be looked for more closely, as many as `lights`
    /// @param progress counts the triangles of the surface
    [[nodiscard]] static ScreenCoverage of(const ScreenSampling& screen, const ChannelLights& lights,
                                           const std::vector<LandingExtent>& extents, const Take& take = {},
                                           const Progress& progress = {});
};

}  // namespace Veltrani::DisplayReport
