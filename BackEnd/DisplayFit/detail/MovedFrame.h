#pragma once

#include "DisplayFit/FitResult.h"
#include "DisplayFit/MeasuredPoint.h"
#include "DisplayFit/detail/ConfiguredLight.h"

#include <cstddef>
#include <map>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace Veltrani::DisplayFitDetail {

/// The stations whose points, of all channels, lie where the configured light lands once they are moved by one rotation
/// and translation that is too large for projectors that were displaced.
struct MovedFrames {
    std::vector<DisplayFit::FitFinding> findings;  ///< one for each station
    std::set<std::string> sets;                    ///< their names
    double miss = 0;  ///< the largest median distance that a movement leaves, in widths of the picture

    /// @param unit name of the native unit, UTF-8
    [[nodiscard]] static MovedFrames of(const std::map<std::size_t, ConfiguredLight>& lights,
                                        std::span<const DisplayFit::MeasuredPoint> given, const std::string& unit);
};

}  // namespace Veltrani::DisplayFitDetail
