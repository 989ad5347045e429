#pragma once

#include "ScreenManager/LayoutToChannelMap.h"

#include <memory>

class CustomPlanarScreenToChannelMap;

/// The map of a display whose channels are mapped to the screen by files. A layout point carries the screen's
/// normalised 2D coordinates: (s, 0, t), s to the right and t upwards, both from 0 to 1.
///
/// The two ways check different things, which is intended: on the way to the layout the screen coordinates have to lie
/// within 0 to 1, on the way to the channel the pixel position within the picture; edges are in, and NaN is out.
///
/// The files are read, and the screen is taken, when the map is built; copies share what was read.
class CustomPlanarLayoutToChannelMap : public LayoutToChannelMap {
public:
    /// Reads the map file and the resolution of every projector.
    ///
    /// Throws `VeltraniMissingFileException` naming a channel without a map file, `VeltraniException` for a projector
    /// that the configuration lists without a record, and what `CustomPlanarScreenToChannelMap` throws for a file that
    /// is missing or bad.
    explicit CustomPlanarLayoutToChannelMap(XMLConfigManager* config);

    /// The second coordinate of the layout point does not matter.
    bool mapLayoutToChannel(const Point<double, 3>& layout, Point<double, 2>& channel,
                            std::size_t channelIndex) override;
    bool mapChannelToLayout(const Point<double, 2>& channel, Point<double, 3>& layout,
                            std::size_t channelIndex) override;

private:
    std::vector<std::shared_ptr<CustomPlanarScreenToChannelMap>> m_transforms;
    std::vector<Point<int, 2>> m_resolutions;  ///< width and height of the pictures, pixels
};
