#pragma once

#include "KelvoScreen/ScreenGeometry.h"

#include <vector>

/// What every kind of screen does in the same way, on top of its own ray and parameter queries.
namespace Veltrani::KelvoScreenDetail {

/// Samples one row at height y, see `ScreenGeometry::sampleHorizontally`. Nothing for columns <= 0. The order of
/// evaluation is part of the contract: grids built at different times must agree to the last bit.
void sampleRow(const IScreenGeometry& screen, double y, double xMin, double xMax, int columns, int row,
               ScreenGeometry::Grid& grid, bool extrapolate);

/// Returns the outline of a channel, see `ScreenGeometry::intersectChannelBoundary`. The side is +1 when more of the
/// rays that hit have side +1 than any other; ties give -1, the rule that the collimated outline follows too.
[[nodiscard]] std::vector<Point<double, 3>> channelBoundary(const ScreenGeometry& screen,
                                                            const std::vector<Ray>& boundary,
                                                            const std::vector<Ray>& centre);

/// Moves a normalised coordinate that is up to PARAMETER_TOLERANCE outside [0, 1] onto the edge; others stay.
[[nodiscard]] double snapToEdge(double coordinate);

/// Returns true when both coordinates are in [0, 1].
[[nodiscard]] inline bool isWithinUnit(double s, double t) {
    return s >= 0 && s <= 1 && t >= 0 && t <= 1;
}

/// Stores a mapped point; false, with `out` untouched, when it is not finite.
[[nodiscard]] bool storeIfFinite(const Point<double, 3>& point, Point<double, 3>& out);

/// Returns the hits whose side, by the screen's own normal at each, is `sign`.
[[nodiscard]] IntersectionSet keepSide(const IScreenGeometry& screen, const IntersectionSet& hits,
                                       const Point<double, 3>& direction, int sign);

}  // namespace Veltrani::KelvoScreenDetail
