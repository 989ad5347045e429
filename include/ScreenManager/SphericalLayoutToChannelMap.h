#pragma once

#include "ScreenManager/LayoutToChannelMap.h"

#include <memory>

class KelvoProjector;
class TargetLocator;

namespace KelvoControl {

class Configuration;

}  // namespace KelvoControl

/// The map of a dome that is seen from an eye point: layout points are points in the world frame.
///
/// A picture point becomes a ray from the eye point through the channel's frustum; its layout point is where the ray
/// meets the channel's target-location surface. The way back projects a layout point through the frustum, whatever
/// surface it lies on.
///
///     const auto table = std::make_shared<KelvoControl::Configuration>(config);
///     SphericalLayoutToChannelMap map(config, table);
///     Point<double, 3> onTheDome;
///     if (map.mapChannelToLayout({0.5, 0.5}, onTheDome, 0)) { ... }
///
/// The eye point is subtracted from a layout point, and then the origin of the frustum, too: intended, the frusta of
/// calibrated displays are made for it. So the two ways are inverse to each other only where that origin is zero.
///
/// The target locators are those of the time when the map was built. They follow a screen that is replaced, and stay
/// when the `TargetLocatorManager` forgets them. Copies share them, and the table's entries.
class SphericalLayoutToChannelMap : public LayoutToChannelMap {
public:
    /// @param config not owned, must outlive the map
    /// @param channelMapConfig the table of the channel maps; its entries must outlive the map
    ///
    /// Throws `VeltraniException` naming the first projector of the configuration that has no entry in the table. What
    /// the configuration and the `TargetLocatorManager` throw passes through. A channel without a target locator has no
    /// layout points.
    SphericalLayoutToChannelMap(XMLConfigManager* config,
                                std::shared_ptr<KelvoControl::Configuration> channelMapConfig);

    /// Returns false for a point behind the eye or beside the picture. Up to 1e-6 beside it is still inside: the result
    /// is then up to that much outside of [0, 1], and is not clamped.
    bool mapLayoutToChannel(const Point<double, 3>& layout, Point<double, 2>& channel,
                            std::size_t channelIndex) override;

    /// Picture points outside of [0, 1] have rays, too. False when the ray misses the surface.
    bool mapChannelToLayout(const Point<double, 2>& channel, Point<double, 3>& layout,
                            std::size_t channelIndex) override;

    /// Several times as fast as point by point on a mesh when neighbouring points follow each other, and to the last
    /// bit the same. For a class derived from this one, `mapChannelToLayout` is called point by point.
    void mapChannelPointsToLayout(std::span<const Point<double, 2>> channel, std::span<LayoutPoint> layout,
                                  std::size_t channelIndex) override;

private:
    std::vector<const KelvoProjector*> m_blendOwners;
    std::vector<std::shared_ptr<const TargetLocator>> m_locators;
    Point<double, 3> m_eyePoint;
};
