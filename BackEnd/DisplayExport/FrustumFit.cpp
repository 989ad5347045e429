#include "DisplayExport/FrustumFit.h"

#include "DisplayExport/ChannelSight.h"
#include "DisplayReport/basics/NumberText.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>
#include <vector>

namespace Veltrani::DisplayExport {

namespace {

using P2 = Point<double, 2>;

/// Steps of the lattice over the picture, and of its four edges, where a picture that is lit as a whole reaches
/// furthest.
constexpr std::size_t COLUMNS = 192;
constexpr std::size_t ROWS = 120;
constexpr std::size_t ALONG_EDGE = 1024;
/// The limit of the light between a lit place and a dark one is found to a millionth of the way.
constexpr int HALVINGS = 20;

/// Between a place that is seen and one that is not.
struct Limit {
    P2 lit, dark;
};

/// How far the tangents of what is seen reach.
class Reach {
public:
    explicit Reach(const ViewFrame& view) : m_view(view) {}

    void add(const SeenPlace& place) {
        if (!place.isSeen) {
            return;
        }
        const Point<double, 3> seen = m_view.inFrame(place.direction);
        m_widest = std::max({m_widest, std::atan2(std::abs(seen[0]), seen[1]), std::atan2(std::abs(seen[2]), seen[1])});
        if (seen[1] > 0) {
            m_left = std::min(m_left, seen[0] / seen[1]);
            m_right = std::max(m_right, seen[0] / seen[1]);
            m_bottom = std::min(m_bottom, seen[2] / seen[1]);
            m_top = std::max(m_top, seen[2] / seen[1]);
        }
    }

    /// Radians from the direction of view to the side; below zero when nothing was seen.
    [[nodiscard]] double widest() const { return m_widest; }

    [[nodiscard]] RenderFrustum withMargin(double margin) const {
        // A picture that is seen edge-on still needs a frustum with an extent.
        constexpr double LEAST = 1e-6;
        const double across = margin * (m_right - m_left) + LEAST * (m_right > m_left ? 0 : 1);
        const double upwards = margin * (m_top - m_bottom) + LEAST * (m_top > m_bottom ? 0 : 1);
        return {m_view, m_left - across, m_right + across, m_bottom - upwards, m_top + upwards};
    }

private:
    static constexpr double FARTHEST = std::numeric_limits<double>::max();

    ViewFrame m_view;
    double m_left = FARTHEST, m_right = -FARTHEST, m_bottom = FARTHEST, m_top = -FARTHEST;
    double m_widest = -1;
};

std::vector<P2> latticePlaces() {
    std::vector<P2> places;
    for (std::size_t row = 0; row <= ROWS; ++row) {
        for (std::size_t column = 0; column <= COLUMNS; ++column) {
            places.emplace_back(static_cast<double>(column) / COLUMNS, static_cast<double>(row) / ROWS);
        }
    }
    return places;
}

std::vector<P2> edgePlaces() {
    std::vector<P2> places;
    for (std::size_t i = 0; i <= ALONG_EDGE; ++i) {
        const double along = static_cast<double>(i) / ALONG_EDGE;
        places.insert(places.end(), {P2{along, 0.0}, P2{along, 1.0}, P2{0.0, along}, P2{1.0, along}});
    }
    return places;
}

std::vector<SeenPlace> seenAt(const ChannelSight& sight, const std::vector<P2>& places) {
    std::vector<SeenPlace> seen(places.size());
    sight.see(places, seen);
    return seen;
}

void addLimit(std::vector<Limit>& limits, const std::vector<P2>& places, const std::vector<SeenPlace>& seen,
              std::size_t a, std::size_t b) {
    if (seen[a].isSeen != seen[b].isSeen) {
        limits.push_back(seen[a].isSeen ? Limit{places[a], places[b]} : Limit{places[b], places[a]});
    }
}

/// Along the lines of the lattice.
std::vector<Limit> limitsIn(const std::vector<P2>& places, const std::vector<SeenPlace>& seen) {
    std::vector<Limit> limits;
    for (std::size_t row = 0; row <= ROWS; ++row) {
        for (std::size_t column = 0; column <= COLUMNS; ++column) {
            const std::size_t here = row * (COLUMNS + 1) + column;
            if (column > 0) {
                addLimit(limits, places, seen, here - 1, here);
            }
            if (row > 0) {
                addLimit(limits, places, seen, here - COLUMNS - 1, here);
            }
        }
    }
    return limits;
}

void addLimits(Reach& reach, const ChannelSight& sight, std::vector<Limit> limits) {
    std::vector<P2> middles(limits.size());
    for (int i = 0; i < HALVINGS; ++i) {
        std::transform(limits.begin(), limits.end(), middles.begin(),
                       [](const Limit& limit) { return 0.5 * (limit.lit + limit.dark); });
        const std::vector<SeenPlace> seen = seenAt(sight, middles);
        for (std::size_t k = 0; k < limits.size(); ++k) {
            reach.add(seen[k]);
            (seen[k].isSeen ? limits[k].lit : limits[k].dark) = middles[k];
        }
    }
}

double degrees(double radians) {
    return radians * 180 / std::numbers::pi;
}

void requireWithin(const ChannelSight& sight, double angle, double widest) {
    if (!(angle < widest)) {
        sight.channel().refuse("its picture reaches " + DisplayReport::roundedText(degrees(angle)) +
                               " degrees from the direction of its frustum, which must be less than " +
                               DisplayReport::roundedText(degrees(widest)) +
                               ": choose the input fisheye or cube, or state another direction");
    }
}

}  // namespace

RenderFrustum fittedFrustum(const ChannelSight& sight, const ViewFrame& view, double margin, double widest) {
    Reach reach(view);
    const std::vector<P2> lattice = latticePlaces();
    const std::vector<SeenPlace> seen = seenAt(sight, lattice);
    for (const std::vector<SeenPlace>& places : {seen, seenAt(sight, edgePlaces())}) {
        std::for_each(places.begin(), places.end(), [&reach](const SeenPlace& place) { reach.add(place); });
    }
    addLimits(reach, sight, limitsIn(lattice, seen));
    if (reach.widest() < 0) {
        sight.channel().refuse(
            "nothing of its picture arrives on the screen: check its position, orientation and frustum, or its map, "
            "against the screen");
    }
    requireWithin(sight, reach.widest(), widest);
    const RenderFrustum frustum = reach.withMargin(margin);
    requireWithin(sight, std::atan(std::max({-frustum.left, frustum.right, -frustum.bottom, frustum.top})), widest);
    return frustum;
}

}  // namespace Veltrani::DisplayExport
