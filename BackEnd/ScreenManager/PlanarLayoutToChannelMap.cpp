#include "ScreenManager/PlanarLayoutToChannelMap.h"

#include "Configuration/ProjectorConfig.h"
#include "ScreenManager/detail/ChannelEntries.h"

namespace {

/// Reads in the order of the entry.
ChannelLayoutRect rectOf(const ProjectorConfig& projector) {
    ChannelLayoutRect rect;
    rect.xMin = projector.getLayoutXMin();
    rect.xMax = projector.getLayoutXMax();
    rect.yMin = projector.getLayoutYMin();
    rect.yMax = projector.getLayoutYMax();
    return rect;
}

}  // namespace

// The table is taken as every kind takes it, by value, and let go again.
// NOLINTBEGIN(performance-unnecessary-value-param)
PlanarLayoutToChannelMap::PlanarLayoutToChannelMap(XMLConfigManager* config,
                                                   std::shared_ptr<KelvoControl::Configuration> /*channelMapConfig*/)
    : LayoutToChannelMap(config) {
    // NOLINTEND(performance-unnecessary-value-param)
    const std::size_t channels = projectorIds().size();
    for (std::size_t i = 0; i < channels; ++i) {
        m_rects.push_back(rectOf(
            Veltrani::ScreenManagerDetail::requireRecord(i < projectors().size() ? projectors()[i] : nullptr, i)));
    }
}

bool PlanarLayoutToChannelMap::mapLayoutToChannel(const Point<double, 3>& layout, Point<double, 2>& channel,
                                                  std::size_t channelIndex) {
    const ChannelLayoutRect& rect = m_rects[channelIndex];
    const double x = layout[0];
    const double y = layout[1];
    if (rect.xMin > x || x > rect.xMax || rect.yMin > y || y > rect.yMax) {
        return false;
    }
    channel = {(x - rect.xMin) / (rect.xMax - rect.xMin), (y - rect.yMin) / (rect.yMax - rect.yMin)};
    return true;
}

bool PlanarLayoutToChannelMap::mapChannelToLayout(const Point<double, 2>& channel, Point<double, 3>& layout,
                                                  std::size_t channelIndex) {
    const ChannelLayoutRect& rect = m_rects[channelIndex];
    const double u = channel[0];
    const double v = channel[1];
    if (u < 0.0 || u > 1.0 || v < 0.0 || v > 1.0) {
        return false;
    }
    layout = {(rect.xMax - rect.xMin) * u + rect.xMin, (rect.yMax - rect.yMin) * v + rect.yMin, 0.0};
    return true;
}
