#include "DisplayReport/maps/LayoutMapper.h"

#include "Common/Finite.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayReport/basics/NumberText.h"
#include "DisplayReport/channels/ChannelLocator.h"
#include "ScreenManager/DisplayKinds.h"

#include <cmath>

namespace Veltrani::DisplayReport {

namespace {

void requireRectangle(const ChannelChoice& channel) {
    const ProjectorConfig& projector = *channel.projector;
    const bool hasExtent =
        projector.getLayoutXMax() > projector.getLayoutXMin() && projector.getLayoutYMax() > projector.getLayoutYMin();
    if (!hasExtent) {
        channel.refuse("its layout rectangle has no extent, x " + exactText(projector.getLayoutXMin()) + " to " +
                       exactText(projector.getLayoutXMax()) + ", y " + exactText(projector.getLayoutYMin()) + " to " +
                       exactText(projector.getLayoutYMax()) +
                       ": give the channel a Layout with xMin below xMax and yMin below yMax");
    }
}

/// Refuses what the map would return nothing but misses for, and what it reports less clearly.
void requireSource(const XMLConfigManager& config, const ChannelChoice& channel) {
    const DisplayKind* const kind = DisplayKind::of(config);
    if (kind != nullptr && kind->layout == DisplayKind::Layout::PLANE) {
        requireRectangle(channel);
        return;
    }
    if (kind != nullptr && kind->countsPixels) {
        static_cast<void>(channel.pictureSize());
    }
    // The map reads its file by itself, and reports what is wrong with it.
    if (kind != nullptr && kind->source == DisplayKind::Source::MAP_FILE) {
        return;
    }
    const LocatorSource source = locatorSourceOf(config, *channel.projector);
    if (!source.faults.empty()) {
        channel.refuse(source.faults.front().where + ": " + sentenceOf(source.faults.front()));
    }
}

}  // namespace

LayoutMapper::LayoutMapper(XMLConfigManager& config, const ChannelChoice& channel, bool useCache)
    : m_channel(channel.index) {
    requireSource(config, channel);
    m_map = LayoutMapFactory::create(&config, useCache);
}

void LayoutMapper::toLayout(std::span<const Point<double, 2>> picture, std::span<LayoutPoint> layout) {
    m_map.map->mapChannelPointsToLayout(picture, layout, m_channel);
    for (LayoutPoint& answer : layout) {
        if (answer.isMapped) {
            answer.isMapped = isFinite(answer.point);
        } else {
            answer.point = {};
        }
    }
}

bool LayoutMapper::toPicture(const Point<double, 3>& layout, Point<double, 2>& picture) {
    Point<double, 2> place;
    if (!m_map.map->mapLayoutToChannel(layout, place, m_channel) || !isFinite(place)) {
        return false;
    }
    picture = place;
    return true;
}

bool LayoutMapper::needsScreen(const XMLConfigManager& config) {
    return !isPlanarDisplay(config);
}

}  // namespace Veltrani::DisplayReport
