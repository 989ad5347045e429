#pragma once

#include "ScreenManager/LayoutToChannelMap.h"

#include <memory>

class KelvoProjector;

namespace KelvoControl {

class Configuration;

}  // namespace KelvoControl

/// The map of a display whose channels are described by their projectors: the position of each, and its projection
/// model. Layout points are positions in the world frame, native units.
///
/// A channel point becomes the ray of its pixel position and lies where that meets the screen; a layout point is
/// projected into the picture, whether it lies on the screen or not, to a whole pixel. So the way there and back
/// rounds to the nearest pixel. Nothing is clipped at the edges of the picture.
///
/// Screen and model are fetched at each call: the map follows a screen that is replaced. The positions are those of the
/// time when it was built. Without a screen, or a model, nothing maps.
class ProjectorCentricLayoutToChannelMap : public LayoutToChannelMap {
public:
    /// Reads the position of every projector, and looks it up in the table.
    ///
    /// Throws `VeltraniException` naming a projector that has no entry there, and for one that the configuration lists
    /// without a record.
    /// @param channelMapConfig owns the models: must outlive the map and its copies, which do not keep it alive
    ProjectorCentricLayoutToChannelMap(XMLConfigManager* config,
                                       std::shared_ptr<KelvoControl::Configuration> channelMapConfig);

    bool mapLayoutToChannel(const Point<double, 3>& layout, Point<double, 2>& channel,
                            std::size_t channelIndex) override;
    bool mapChannelToLayout(const Point<double, 2>& channel, Point<double, 3>& layout,
                            std::size_t channelIndex) override;

private:
    std::vector<const KelvoProjector*> m_blendOwners;
    std::vector<Point<double, 3>> m_positions;  ///< of the projectors, world frame, native units
};
