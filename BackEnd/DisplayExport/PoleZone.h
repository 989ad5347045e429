#pragma once

#include "Common/Point.h"

#include <vector>

namespace Veltrani::DisplayExport {

class ChannelSight;
class ContentInput;
struct WarpCell;

/// The directions around which an input turns, as far as the picture of a channel shows what lies around them.
class PoleZone {
public:
    /// Looks at places all over the picture where the input has poles.
    PoleZone(const ChannelSight& sight, const ContentInput& input);

    /// World axes, of length one.
    [[nodiscard]] const std::vector<Point<double, 3>>& poles() const { return m_poles; }

    /// Whether a cell lies in the zone around a pole in which cells are divided instead of having more nodes
    /// everywhere. The zone has at most a fifth of what is lit, so that no picture is left to division as a whole.
    [[nodiscard]] bool holds(const WarpCell& cell) const;

    /// Whether contents turn around a pole within a cell, so that dividing it brings them nearer to what belongs there.
    [[nodiscard]] bool turnsIn(const WarpCell& cell) const;

    /// The width and height of parts that are divided no further, as parts of those of the picture: a fraction of a
    /// pixel of the channel.
    [[nodiscard]] const Point<double, 2>& least() const { return m_least; }

private:
    std::vector<Point<double, 3>> m_poles;
    double m_radius = 0;  ///< a chord, as long as the angle in radians but for a little
    Point<double, 2> m_least;
};

}  // namespace Veltrani::DisplayExport
