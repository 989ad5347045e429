#pragma once

#include "Common/Point.h"
#include "ScreenManager/LayoutToChannelMap.h"

#include <span>

namespace Veltrani::DisplayReport {

/// The two ways between places in the picture of one channel and points in space, whatever these are.
class PointMap {
public:
    virtual ~PointMap() = default;
    PointMap(const PointMap&) = delete;
    PointMap& operator=(const PointMap&) = delete;

    /// Many picture points at once.
    /// @param layout receives the points in space, as long as `picture`
    virtual void toLayout(std::span<const Point<double, 2>> picture, std::span<LayoutPoint> layout) = 0;

    /// @return whether the channel shows the point; `picture` is untouched when it does not
    virtual bool toPicture(const Point<double, 3>& layout, Point<double, 2>& picture) = 0;

protected:
    PointMap() = default;
};

}  // namespace Veltrani::DisplayReport
