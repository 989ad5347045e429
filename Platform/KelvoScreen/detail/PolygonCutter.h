#pragma once

#include "Common/Point.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Veltrani::KelvoScreenDetail {

/// Cuts polygons, concave ones included, into triangles.
///
/// A polygon is seen along the coordinate axis that its normal (Newell's) is nearest to, and its ears are clipped: a
/// corner that bulges outwards and whose triangle holds no other corner. A quadrilateral is cut along the diagonal from
/// its first corner unless only the other one lies inside.
///
/// n corners always give n - 2 triangles with the winding of the polygon, and equal polygons equal triangles. For a
/// polygon that crosses itself or has no area there is no correct result: it is cut into some n - 2 triangles of its
/// corners.
///
/// The time is proportional to the number of corners times the number of those that do not bulge outwards. The steps
/// of all polygons together are limited, so that a hostile file cannot keep the caller waiting.
class PolygonCutter {
public:
    /// Corner numbers of the polygon, 0 is the first.
    using Triangle = std::array<std::uint32_t, 3>;

    /// Less than a second of work; a polygon of 10,000 corners, every second one hollow, stays below it.
    static constexpr std::size_t DEFAULT_MAX_STEPS = 100'000'000;

    /// @param maxSteps corner tests for all polygons together
    explicit PolygonCutter(std::size_t maxSteps = DEFAULT_MAX_STEPS) : m_stepsLeft(maxSteps) {}

    /// Returns the triangles of a polygon of three corners or more, valid until the next call. Empty when the steps are
    /// used up.
    [[nodiscard]] std::span<const Triangle> cut(std::span<const Point<double, 3>> corners);

private:
    /// A polygon without a single ear is not a simple one. This often, every corner gets a second chance once a corner
    /// without area is gone; after that corners go in turn.
    static constexpr int MAX_RECOVERIES = 8;
    static constexpr std::uint32_t NOWHERE = UINT32_MAX;

    /// A corner that does not bulge outwards, with its coordinates at hand: every test of an ear goes through them all.
    struct Hollow {
        Point<double, 2> place;
        std::uint32_t corner = 0;
    };

    void flatten(std::span<const Point<double, 3>> corners);
    void linkCorners();
    void listAllCandidates();
    void addCandidate(std::uint32_t corner);
    [[nodiscard]] bool clipEars();
    [[nodiscard]] std::uint32_t findFlatCorner();
    void clip(std::uint32_t corner);
    [[nodiscard]] bool isEar(std::uint32_t corner);
    void classify(std::uint32_t corner);
    void forgetHollow(std::uint32_t corner);
    [[nodiscard]] double bulge(std::uint32_t corner) const;
    void spend(std::size_t steps) { m_stepsLeft -= steps < m_stepsLeft ? steps : m_stepsLeft; }

    std::size_t m_stepsLeft;
    std::vector<Triangle> m_triangles;
    std::vector<Point<double, 2>> m_corners;  ///< seen along the main axis, counter-clockwise
    std::vector<std::uint32_t> m_previous;
    std::vector<std::uint32_t> m_next;         ///< nowhere once the corner is clipped
    std::vector<Hollow> m_hollow;              ///< those left, in no order
    std::vector<std::uint32_t> m_hollowPlace;  ///< of a corner in `m_hollow`, or nowhere
    std::vector<std::uint32_t> m_candidates;   ///< corners to be tested, first in first out
    std::vector<std::size_t> m_turn;           ///< of a corner in `m_candidates`; the largest number once it is clipped
    std::uint32_t m_current = 0;               ///< some corner that is left
    std::size_t m_cornersLeft = 0;
};

}  // namespace Veltrani::KelvoScreenDetail
