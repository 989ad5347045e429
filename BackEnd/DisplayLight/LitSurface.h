#pragma once

#include "DisplayLight/LitPicture.h"
#include "DisplayLight/SurfaceChart.h"
#include "DisplayReport/scene/SceneLight.h"

#include <map>
#include <span>
#include <vector>

namespace Veltrani::DisplayLight {

/// The light of a whole surface that shows an export, wherever it is seen from.
struct LitSurface : LitDisplay {
    SurfaceChart chart;
    /// By the side that shows them, as `SurfaceHit::side` of a ray that looks at it: as many places as the chart has.
    /// Under 0 what both sides show; a side without an entry shows nothing.
    std::map<int, std::vector<LitPlace>> sides;

    /// The places of a side, without light at first.
    [[nodiscard]] std::vector<LitPlace>& side(int seen);
    /// Adds what both sides show to each of them, where they are not alike.
    void mergeSides();

    /// For a page. Facts are in words, of all sides together.
    /// @param unit name of the native unit, UTF-8
    [[nodiscard]] DisplayReport::SceneLight scene(const std::string& unit) const;
};

}  // namespace Veltrani::DisplayLight
