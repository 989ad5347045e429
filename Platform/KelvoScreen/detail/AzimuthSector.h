#pragma once

#include "Common/Point.h"
#include "KelvoScreen/detail/LimitSearch.h"

#include <algorithm>

namespace KelvoScreenDetail {

/// Up to this far (radians) beyond a pole or a whole turn counts as the pole or the whole turn. Sums of angles in
/// degrees miss them by some 1e-14; this is generous, and still a gap of no more than a tenth of a micrometre in a dome
/// of 100 m. Files are read with less tolerance, so that every range of azimuths that is read is one here too.
inline constexpr double ANGLE_TOLERANCE = 1e-9;

/// A range of azimuths, limits included; azimuth = atan2(x, y). Asked without any trigonometry.
class AzimuthSector {
public:
    /// The whole turn.
    AzimuthSector() = default;
    /// From `min`, growing, to `max` (radians). See `isRange`.
    AzimuthSector(double min, double max);

    /// True when these limits make a sector: finite, growing, no more than one turn.
    [[nodiscard]] static bool isRange(double min, double max);

    [[nodiscard]] bool isWhole() const { return m_isWhole; }

    /// True for every point when the sector is whole, and for x = y = 0 always.
    [[nodiscard]] bool contains(double x, double y) const {
        if (m_isWhole) {
            return true;
        }
        // The distances from the two limiting half-planes, positive inwards.
        const double fromMin = x * m_min[1] - y * m_min[0];
        const double fromMax = y * m_max[0] - x * m_max[1];
        return m_isWide ? fromMin >= 0 || fromMax >= 0
                        : fromMin >= 0 && fromMax >= 0 && x * m_middle[0] + y * m_middle[1] >= 0;
    }

    /// A lower bound of the distance of (x, y) from the sector.
    [[nodiscard]] double distanceBound(double x, double y) const {
        if (m_isWhole) {
            return 0;
        }
        const double beyondMin = y * m_min[0] - x * m_min[1];
        const double beyondMax = x * m_max[1] - y * m_max[0];
        return m_isWide ? std::min(beyondMin, beyondMax) : std::max(beyondMin, beyondMax);
    }

    /// The half-plane of the nearest limit, seen from a place beyond it.
    [[nodiscard]] LimitPlane limitPlane(const Point<double, 3>& place, const Point<double, 3>& direction) const;

    /// The limit nearest to the direction (x, y), as a unit vector.
    [[nodiscard]] const Point<double, 2>& nearestLimit(double x, double y) const;

private:
    Point<double, 2> m_min, m_middle, m_max;  ///< unit vectors (sin, cos)
    bool m_isWhole = true;
    bool m_isWide = true;  ///< more than half a turn
};

}  // namespace KelvoScreenDetail
