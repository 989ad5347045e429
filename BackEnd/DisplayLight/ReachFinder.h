#pragma once

#include "DisplayLight/PictureFinder.h"
#include "DisplayReport/basics/Extent.h"
#include "DisplayReport/coverage/ChannelLight.h"

#include <memory>
#include <vector>

namespace Veltrani::DisplayLight {

/// Finds places one by one, wherever on the screen they lie: by the way back from a place to the picture, which is
/// known in closed form for straight rays and for screen coordinates, and is searched for any other light.
class ReachFinder : public PictureFinder {
public:
    explicit ReachFinder(std::unique_ptr<const DisplayReport::ChannelLight> light);

    /// For places that no eye sees. Throws `VeltraniException`, naming the channel, for one without a locator.
    /// @param hasParameters whether the screen coordinates of the places are known
    [[nodiscard]] static std::unique_ptr<const ReachFinder> forPlaces(
        const XMLConfigManager& config, const DisplayExport::ChannelSight& sight,
        const std::shared_ptr<const ScreenGeometry>& surface, bool hasParameters);

    void find(const EyeGrid& grid, SeenSide side, std::vector<FoundPlace>& found) const override {
        findPlaces(grid, side, found);
    }
    /// The same for any places. Those without a side receive light from both.
    void findPlaces(const PlaceGrid& grid, SeenSide side, std::vector<FoundPlace>& found) const;

private:
    /// Far from all that the picture lands on, nothing has to be looked for.
    [[nodiscard]] bool mayBeLit(const Point<double, 3>& place) const;

    std::unique_ptr<const DisplayReport::ChannelLight> m_light;
    DisplayReport::Extent m_box;
    Point<double, 3> m_lower;
    Point<double, 3> m_upper;
};

}  // namespace Veltrani::DisplayLight
