#pragma once

#include "ScreenManager/LayoutToChannelMap.h"

#include <memory>

namespace KelvoControl {

class Configuration;

}  // namespace KelvoControl

/// The part of the layout plane that a channel shows, native units. Mirrored where a minimum is above its maximum.
struct ChannelLayoutRect {
    double xMin = 0;
    double yMin = 0;
    double xMax = 0;
    double yMax = 0;
};

/// The map of a display whose channels show rectangles of one plane: layout points lie at z = 0, in native units.
///
///     PlanarLayoutToChannelMap map(config, nullptr);
///     Point<double, 3> layout;
///     map.mapChannelToLayout({0.5, 0.5}, layout, 0);   // the middle of the first channel's rectangle
///
/// Both ways include the edges and clamp nothing. They compare as written, which callers rely on: NaN is outside of
/// nothing and comes out as NaN, with true; a mirrored rectangle accepts channel points, but no layout point; one
/// without width or height yields a number that is not finite for a layout point on it, with true.
class PlanarLayoutToChannelMap : public LayoutToChannelMap {
public:
    /// Reads the rectangle of every projector (`ProjectorConfig::getLayoutXMin` and so on).
    ///
    /// Throws `VeltraniException` for a projector that the configuration lists without a record.
    /// @param channelMapConfig not needed by this kind; may be empty
    PlanarLayoutToChannelMap(XMLConfigManager* config, std::shared_ptr<KelvoControl::Configuration> channelMapConfig);

    /// The height of the layout point above the plane does not matter.
    bool mapLayoutToChannel(const Point<double, 3>& layout, Point<double, 2>& channel,
                            std::size_t channelIndex) override;
    bool mapChannelToLayout(const Point<double, 2>& channel, Point<double, 3>& layout,
                            std::size_t channelIndex) override;

private:
    std::vector<ChannelLayoutRect> m_rects;
};
