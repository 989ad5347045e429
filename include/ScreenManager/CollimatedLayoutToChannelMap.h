#pragma once

#include "ScreenManager/LayoutToChannelMap.h"

#include <memory>

class KelvoProjector;
class TargetLocator;
struct Viewport;

namespace KelvoControl {

class Configuration;

}  // namespace KelvoControl

/// The map of a collimated display, whose picture is seen in a mirror: layout points are points in the world frame.
///
/// A picture point becomes a ray from the eye point as in `SphericalLayoutToChannelMap`. The heading tables of the
/// target locator bend the rays of targets, not these: with tables, a target lies beside the layout point of its place
/// in the picture. The mirror leaves no formula for the way back: the pixels of the channel's frustum, width x height,
/// are searched from coarse to fine for the one whose layout point is nearest. The result is a whole pixel (x, y) as (x
/// / width, y / height); there is none when the nearest pixel found is further than 0.0005 units away. Pixels of the
/// far edges, x = width and y = height, are found where they are samples on the way to the last window, and else lost.
///
/// A search evaluates a few hundred layout points. A map that was built with a cache keeps every one that it
/// calculates, 24 bytes for each of (width + 1) x (height + 1) places per channel, all taken at construction; searches
/// are then tens of times as fast. The cache has rows of `width` places: the column x = width of a row shares its
/// places with the column x = 0 of the next one, and whichever is calculated first stands for both. This is intended:
/// recorded calibrations rely on it.
///
/// Without a cache a pixel whose ray misses the surface counts as if it lay at the origin, on which recorded
/// calibrations rely, too; with one it is excluded from the search, and calculated again the next time.
///
/// The cache is as large as the frustum was at construction; a frustum that grows afterwards is searched without it.
///
/// Nothing empties the cache: a map that is built before a screen changes continues to return points of the old one.
/// Copies share it. Not safe to use from two threads at once.
class CollimatedLayoutToChannelMap : public LayoutToChannelMap {
public:
    /// @param config not owned, must outlive the map
    /// @param channelMapConfig the table of the channel maps; its entries must outlive the map
    /// @param useCache see the class
    ///
    /// Throws `VeltraniException` naming the first projector of the configuration that has no entry in the table, and
    /// `std::bad_alloc` without memory for the cache. What the configuration and the `TargetLocatorManager` throw
    /// passes through. A channel without a target locator has no layout points.
    CollimatedLayoutToChannelMap(XMLConfigManager* config,
                                 std::shared_ptr<KelvoControl::Configuration> channelMapConfig, bool useCache);

    /// Searches as described for the class. Calls this object's own `mapChannelToLayout`, also where a derived class
    /// replaces it.
    bool mapLayoutToChannel(const Point<double, 3>& layout, Point<double, 2>& channel,
                            std::size_t channelIndex) override;

    /// Picture points outside of [0, 1] have rays, too. False when the ray misses the surface. Neither reads nor fills
    /// the cache.
    bool mapChannelToLayout(const Point<double, 2>& channel, Point<double, 3>& layout,
                            std::size_t channelIndex) override;

    /// Behaves as in `SphericalLayoutToChannelMap`; the cache is not used either.
    void mapChannelPointsToLayout(std::span<const Point<double, 2>> channel, std::span<LayoutPoint> layout,
                                  std::size_t channelIndex) override;

private:
    struct Cache {
        std::shared_ptr<Point<double, 3>[]> places;
        std::size_t count = 0;
    };

    [[nodiscard]] static Cache emptyCache(const Viewport& picture);

    std::vector<const KelvoProjector*> m_blendOwners;
    std::vector<std::shared_ptr<const TargetLocator>> m_locators;
    /// One array per channel, or none at all; see the class for its places.
    std::vector<Cache> m_caches;
    Point<double, 3> m_eyePoint;
};
