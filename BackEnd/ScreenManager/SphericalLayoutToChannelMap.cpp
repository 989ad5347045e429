#include "ScreenManager/SphericalLayoutToChannelMap.h"

#include "KelvoControl/Frustum.h"
#include "ScreenManager/detail/ChannelEntries.h"
#include "ScreenManager/detail/EyeRays.h"

#include <typeinfo>

using Veltrani::ScreenManagerDetail::EyeRays;

namespace {

/// The least distance along the direction of view, in native units: nearer points, and those behind, are not seen.
constexpr double NEAREST = 1e-6;
/// How far rounding may move a point on an edge of the picture, as a part of the picture's size.
constexpr double EDGE_TOLERANCE = 1e-6;

/// @param fromEye a point relative to the eye point
bool projectThrough(const Frustum& frustum, const Point<double, 3>& fromEye, Point<double, 2>& channel) {
    const Point<double, 3> ahead = frustum.Rinv * (fromEye - frustum.origin);
    // Compared in this form so that a NaN passes: the result is then NaN, which lies in no picture and is refused by
    // the caller.
    if (ahead[1] <= NEAREST) {
        return false;
    }
    channel = {(ahead[0] / ahead[1] - frustum.ox) / frustum.sx, (ahead[2] / ahead[1] - frustum.oy) / frustum.sy};
    return true;
}

bool isInside(double coordinate) {
    return coordinate >= -EDGE_TOLERANCE && coordinate - 1.0 <= EDGE_TOLERANCE;
}

}  // namespace

// Passed by value, as the callers' interface has it.
// NOLINTBEGIN(performance-unnecessary-value-param)
SphericalLayoutToChannelMap::SphericalLayoutToChannelMap(XMLConfigManager* config,
                                                         std::shared_ptr<KelvoControl::Configuration> channelMapConfig)
    : LayoutToChannelMap(config) {
    // NOLINTEND(performance-unnecessary-value-param)
    m_eyePoint = Veltrani::ScreenManagerDetail::eyePointOf(config);
    m_blendOwners = Veltrani::ScreenManagerDetail::blendOwners(config, channelMapConfig.get());
    m_locators = Veltrani::ScreenManagerDetail::targetLocators(config, projectors());
}

bool SphericalLayoutToChannelMap::mapLayoutToChannel(const Point<double, 3>& layout, Point<double, 2>& channel,
                                                     std::size_t channelIndex) {
    const EyeRays rays(*m_blendOwners[channelIndex], m_locators[channelIndex].get(), m_eyePoint);
    const Point<double, 3> fromEye = layout - m_eyePoint;
    Point<double, 2> candidate;
    if (!projectThrough(rays.frustum(), fromEye, candidate) || !isInside(candidate[0]) || !isInside(candidate[1])) {
        return false;
    }
    // The frustum is fetched again, and the result of this second projection counts.
    projectThrough(rays.frustum(), fromEye, channel);
    return true;
}

bool SphericalLayoutToChannelMap::mapChannelToLayout(const Point<double, 2>& channel, Point<double, 3>& layout,
                                                     std::size_t channelIndex) {
    return EyeRays(*m_blendOwners[channelIndex], m_locators[channelIndex].get(), m_eyePoint)
        .mapToLayout(channel, layout);
}

void SphericalLayoutToChannelMap::mapChannelPointsToLayout(std::span<const Point<double, 2>> channel,
                                                           std::span<LayoutPoint> layout, std::size_t channelIndex) {
    const bool isThisKind = typeid(*this) == typeid(SphericalLayoutToChannelMap);
    if (!isThisKind || channel.empty() || channel.size() != layout.size() ||
        !EyeRays(*m_blendOwners[channelIndex], m_locators[channelIndex].get(), m_eyePoint)
             .mapToLayoutAtOnce(channel, layout)) {
        LayoutToChannelMap::mapChannelPointsToLayout(channel, layout, channelIndex);
    }
}
