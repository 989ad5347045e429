#pragma once

#include "KelvoScreen/detail/BorderStretches.h"

#include <cstdint>
#include <optional>

namespace KelvoScreenDetail {

/// Where a ray meets blended sheets.
struct BlendedHit {
    double tau = 0;
    Point<double, 3> normal;
};

/// The sheets of the stretches of one smooth face, blended into one surface that begins at the border.
///
/// At a point each sheet counts by its distance: those more than twice as far as the nearest do not count, those whose
/// normal is across the wanted one neither. So near the border a sheet rules its own stretch, and far from it many
/// agree on the course. What the blend leaves of a step at the border itself, such as the noise of the vertices there,
/// fades within a few triangles.
///
/// Refers to the stretches, which must stay as they are.
class BorderBlend {
public:
    /// Of the stretches first to last - 1; those whose normal is on the side of `normal` count.
    BorderBlend(const BorderStretches& border, std::uint32_t first, std::uint32_t last, const Point<double, 3>& normal)
        : m_border(border), m_first(first), m_last(last), m_normal(normal) {}

    /// Where start + tau direction meets the surface, near a start that is near it; nothing when it passes it.
    [[nodiscard]] std::optional<BlendedHit> meet(const Point<double, 3>& start,
                                                 const Point<double, 3>& direction) const;

private:
    struct Sum;

    [[nodiscard]] std::uint32_t nearestStretch(const Point<double, 3>& point) const;
    [[nodiscard]] bool approach(const BorderStretch& stretch, const Point<double, 3>& point, Point<double, 3>& nearest,
                                double& smallest) const;
    [[nodiscard]] Point<double, 3> nearestOnBorder(const Point<double, 3>& point, double& spacing) const;
    [[nodiscard]] double smallestDistance2(const Point<double, 3>& point) const;
    [[nodiscard]] Sum blendAt(const Point<double, 3>& point, const Point<double, 3>& direction) const;

    const BorderStretches& m_border;
    std::uint32_t m_first;
    std::uint32_t m_last;
    Point<double, 3> m_normal;
};

}  // namespace KelvoScreenDetail
