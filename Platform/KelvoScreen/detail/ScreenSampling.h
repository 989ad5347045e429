#pragma once

#include "KelvoScreen/ScreenGeometry.h"

#include <vector>

/// What every kind of screen does in the same way, on top of its own ray and parameter queries.
namespace KelvoScreenDetail {

/// Samples one row at height y, see `ScreenGeometry::sampleHorizontally`. Nothing for columns <= 0. The order of
/// evaluation is part of the contract: grids built at different times must agree to the last bit.
void sampleRow(const IScreenGeometry& screen, double y, double xMin, double xMax, int columns, int row,
               ScreenGeometry::Grid& grid, bool extrapolate);

/// The outline of a channel, see `ScreenGeometry::intersectChannelBoundary`. The side is +1 when more of the rays that
/// hit have side +1 than any other; ties give -1, the rule that the collimated outline follows too.
[[nodiscard]] std::vector<Point<double, 3>> channelBoundary(const ScreenGeometry& screen,
                                                            const std::vector<Ray>& boundary,
                                                            const std::vector<Ray>& centre);

/// Moves a normalised coordinate that is up to PARAMETER_TOLERANCE outside [0, 1] onto the edge; others stay.
[[nodiscard]] double snapToEdge(double coordinate);

}  // namespace KelvoScreenDetail
