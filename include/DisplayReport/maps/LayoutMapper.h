#pragma once

#include "Common/Point.h"
#include "DisplayReport/channels/ChannelChoice.h"
#include "DisplayReport/maps/PointMap.h"
#include "ScreenManager/LayoutMapFactory.h"

#include <span>

namespace Veltrani::DisplayReport {

/// The layout map of a display for one channel of it, checked for what such a map needs before the first point is
/// mapped.
///
/// A point whose image is not finite counts as not mapped: the maps leave some of those to their callers.
class LayoutMapper : public PointMap {
public:
    /// Build the screen first if `needsScreen`.
    ///
    /// Throws `VeltraniException`, naming the channel and what it lacks, when it has no layout rectangle, no picture
    /// size, no frustum or no usable lens although the map needs one, and what `LayoutMapFactory` throws.
    /// @param config not owned, must outlive the mapper
    /// @param useCache see `LayoutMapFactory::create`
    LayoutMapper(XMLConfigManager& config, const ChannelChoice& channel, bool useCache);

    void toLayout(std::span<const Point<double, 2>> picture, std::span<LayoutPoint> layout) override;
    bool toPicture(const Point<double, 3>& layout, Point<double, 2>& picture) override;

    /// False for displays whose layout is a plane of its own.
    [[nodiscard]] static bool needsScreen(const XMLConfigManager& config);

private:
    LayoutMap m_map;
    std::size_t m_channel;
};

}  // namespace Veltrani::DisplayReport
