#include "DisplayReport/TargetSurvey.h"

#include <algorithm>

namespace Veltrani::DisplayReport {

namespace {

void addTargets(const ChannelTargets& channel, Extent& extent) {
    for (const GridTarget& target : channel.grid) {
        extent.add(target.point);
    }
    for (const Point<double, 3>& point : channel.boundary) {
        extent.add(point);
    }
}

}  // namespace

std::size_t TargetSurvey::placed() const {
    std::size_t count = 0;
    for (const ChannelTargets& channel : channels) {
        count += channel.grid.size() + channel.boundary.size();
    }
    return count;
}

std::size_t TargetSurvey::missed() const {
    std::size_t count = 0;
    for (const ChannelTargets& channel : channels) {
        count += channel.gridMissed + channel.boundaryMissed;
    }
    return count;
}

Extent TargetSurvey::extent() const {
    Extent extent;
    for (const ChannelTargets& channel : channels) {
        addTargets(channel, extent);
    }
    return extent;
}

bool TargetSurvey::complete() const {
    return std::all_of(channels.begin(), channels.end(),
                       [](const ChannelTargets& channel) { return channel.fault.empty(); });
}

Extent extentOf(const ChannelTargets& channel) {
    Extent extent;
    addTargets(channel, extent);
    return extent;
}

}  // namespace Veltrani::DisplayReport
