#pragma once

#include "KelvoControl/Configuration.h"
#include "ScreenManager/LayoutToChannelMap.h"

#include <memory>

/// A layout map together with what it refers to, which is always destroyed after it. Copies of the map need the table,
/// too.
struct LayoutMap {
    LayoutMap() = default;
    LayoutMap(std::shared_ptr<KelvoControl::Configuration> theChannelMapConfig,
              std::unique_ptr<LayoutToChannelMap> theMap);
    LayoutMap(LayoutMap&&) noexcept = default;
    LayoutMap& operator=(LayoutMap&& other) noexcept;
    ~LayoutMap() = default;

    std::shared_ptr<KelvoControl::Configuration> channelMapConfig;  ///< empty for the kinds that refer to none
    std::unique_ptr<LayoutToChannelMap> map;                        ///< null by default and after it was moved from
};

/// Makes the layout map of a display, of the kind that its target-data type requires.
///
///     const LayoutMap made = LayoutMapFactory::create(config, false);
///     Point<double, 3> layout;
///     made.map->mapChannelToLayout({0.5, 0.5}, layout, 0);
///
/// | Target-data type                | Map                                  |
/// |---------------------------------|--------------------------------------|
/// | `PlanarBasic`, `PlanarAdvanced` | `PlanarLayoutToChannelMap`           |
/// | `Spherical`                     | `SphericalLayoutToChannelMap`        |
/// | `SphericalCollimated`           | `CollimatedLayoutToChannelMap`       |
/// | `CustomPlanar`                  | `CustomPlanarLayoutToChannelMap`     |
/// | `ProjectorCentric`, `3D`        | `ProjectorCentricLayoutToChannelMap` |
class LayoutMapFactory {
public:
    LayoutMapFactory() = delete;

    /// The screen must be built first: some kinds read it when they are made.
    ///
    /// Throws `VeltraniException`, naming what is accepted, for null, without target data, for an unknown type and,
    /// where the map counts pixels (custom planar, collimated), for a channel without a size; and what the map and
    /// `KelvoControl::Configuration` throw.
    /// @param config not owned, must outlive the map
    /// @param useCache whether the collimated map remembers layout points: faster, for 24 bytes per pixel; the other
    ///     kinds have nothing to remember
    [[nodiscard]] static LayoutMap create(XMLConfigManager* config, bool useCache);
};
