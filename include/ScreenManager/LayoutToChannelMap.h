#pragma once

#include "Common/Point.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

class ProjectorConfig;
class XMLConfigManager;

/// The result for one of many picture points.
struct LayoutPoint {
    Point<double, 3> point;  ///< as it was where there is none
    bool isMapped = false;
};

/// Converts between the picture of a channel and the layout, the 3D space that the screen is described in; one kind of
/// map per kind of display.
///
/// Channel points are normalised, (0, 0) to (1, 1) over the whole picture. Each kind defines what a layout point means,
/// its frame and its unit. Channels are counted from 0 in the order in which the configuration lists its projectors.
///
/// A map is built from the configuration as it is at that time; a caller that changes the configuration builds a new
/// map. Copies share what they refer to. Not safe to use from two threads at once.
class LayoutToChannelMap {
public:
    /// @param config not owned, must outlive the map; without one the map has no channels. A record that the
    ///     configuration does not have is kept as null.
    explicit LayoutToChannelMap(XMLConfigManager* config);
    LayoutToChannelMap(const LayoutToChannelMap&) = default;
    LayoutToChannelMap& operator=(const LayoutToChannelMap&) = default;
    virtual ~LayoutToChannelMap();

    /// Maps a layout point to the picture of a channel.
    /// @param channel receives the picture point; untouched when there is none
    /// @param channelIndex below the number of channels; not checked
    /// @return whether the channel shows the layout point
    virtual bool mapLayoutToChannel(const Point<double, 3>& layout, Point<double, 2>& channel,
                                    std::size_t channelIndex) = 0;

    /// Maps a picture point of a channel to the layout.
    /// @param layout receives the layout point; untouched when there is none
    /// @param channelIndex below the number of channels; not checked
    /// @return whether the picture point lies anywhere in the layout
    virtual bool mapChannelToLayout(const Point<double, 2>& channel, Point<double, 3>& layout,
                                    std::size_t channelIndex) = 0;

    /// Many picture points of a channel at once, such as rows of its pixels: what `mapChannelToLayout` returns for
    /// each, to the last bit. The default body calls it point by point, in order.
    ///
    ///     std::vector<LayoutPoint> row(picturePoints.size());
    ///     map.mapChannelPointsToLayout(picturePoints, row, channelIndex);
    ///
    /// @param layout receives the results in order; throws `VeltraniException` when it is not as long as `channel`
    virtual void mapChannelPointsToLayout(std::span<const Point<double, 2>> channel, std::span<LayoutPoint> layout,
                                          std::size_t channelIndex);

protected:
    [[nodiscard]] XMLConfigManager* config() const { return m_config; }
    /// Reads the configuration anew; none without one.
    [[nodiscard]] std::vector<std::wstring> projectorIds() const;
    /// Returns the record of each channel, not owned; null where the configuration has none.
    [[nodiscard]] const std::vector<ProjectorConfig*>& projectors() const { return m_projectors; }

private:
    XMLConfigManager* m_config;
    std::vector<ProjectorConfig*> m_projectors;
};
