#pragma once

#include "DisplayReport/channels/ChannelChoice.h"
#include "DisplayReport/maps/PointMap.h"

#include <memory>

class ScreenGeometry;
class XMLConfigManager;

namespace Veltrani::DisplayReport {

class ChannelLight;

/// Where the light of one channel arrives on the screen, in the world frame and native units: the places at which its
/// targets stand, its outline, and what `coverage` measures.
///
/// It follows the target locator, bends of heading tables included, and has fractions of pixels on the way back, where
/// the layout map of the kind of display has another frame or whole pixels. A place that stands beside the screen by
/// less than a ten thousandth of its size, as one of few digits does, counts as the nearest one on it; a place that is
/// further off, or that the light does not reach, is none of the picture.
class ScreenMapper : public PointMap {
public:
    /// Build the screen first. Throws `VeltraniException`, naming the channel and what it lacks, without a screen and
    /// without a target locator whose light is known.
    ScreenMapper(const XMLConfigManager& config, const ChannelChoice& channel);
    ~ScreenMapper() override;

    /// @param layout receives the places on the screen
    void toLayout(std::span<const Point<double, 2>> picture, std::span<LayoutPoint> layout) override;
    /// @param layout a place on the screen
    bool toPicture(const Point<double, 3>& layout, Point<double, 2>& picture) override;

private:
    [[nodiscard]] Point<double, 3> onScreen(const Point<double, 3>& place) const;
    [[nodiscard]] bool arrives(const Point<double, 2>& picture, const Point<double, 3>& place) const;

    std::shared_ptr<const ScreenGeometry> m_surface;
    std::unique_ptr<ChannelLight> m_light;
    std::unique_ptr<ChannelLight> m_back;  ///< for the way back, where the light itself has none; else null
    double m_near = 0;                     ///< native units: what is no further off is the same place
};

}  // namespace Veltrani::DisplayReport
