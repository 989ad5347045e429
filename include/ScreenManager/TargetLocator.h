#pragma once

#include "Common/Point.h"
#include "ScreenManager/TargetLocatorParams.h"

#include <map>
#include <utility>
#include <vector>

/// Where the calibration targets of one channel lie: on its target-location surface, which is the screen or something
/// seen on it or through it, depending on the kind of locator.
///
/// A locator is immutable once built and returned as `std::shared_ptr<const TargetLocator>`; channels and layout maps
/// share it. It reads the current screen from the `ScreenManager` at each call, so it follows a screen that is
/// replaced.
class TargetLocator {
public:
    TargetLocator() = default;
    TargetLocator(const TargetLocator&) = default;
    TargetLocator& operator=(const TargetLocator&) = default;
    virtual ~TargetLocator();

    /// Places columns x rows targets over the rectangle [uMin, uMax] x [vMin, vMax] of the channel's normalised
    /// picture. The kinds differ in where v is 0: at the top of the picture for the planar locator, at the bottom for
    /// all others; each documents where its first row is.
    /// @param grid receives the targets (world frame, native units) under (column, row); points that cannot be placed
    ///     are left out
    virtual void projectOnTargetLocationSurface(double uMin, double uMax, double vMin, double vMax, int columns,
                                                int rows, std::map<Point<int, 2>, Point<double, 3>>& grid) const = 0;

    /// What the locator was built from.
    [[nodiscard]] virtual const TargetLocatorParams& getTargetLocatorParams() const = 0;

    /// Returns the outline of the channel's area on the surface.
    /// @param samplesPerEdge number of samples on each of the four edges; no outline when it is zero or less
    virtual std::vector<Point<double, 3>> projectBoundaryOnTargetLocationSurface(int samplesPerEdge) const = 0;

    /// Intersects the ray from `from` through `to` with the surface; here: the screen.
    /// @param hit receives the nearest point; untouched on a miss
    /// @return whether there is a hit, and from which side the ray reaches the surface: 1 along its normal, -1 against
    ///     it, 0 across it. A miss, and a missing screen, is {false, 1}, not {false, 0}: callers rely on it.
    virtual std::pair<bool, int> intersectWithTargetLocationSurface(const Point<double, 3>& from,
                                                                    const Point<double, 3>& to,
                                                                    Point<double, 3>& hit) const;
};
