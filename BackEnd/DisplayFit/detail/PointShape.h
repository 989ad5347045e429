#pragma once

#include "Common/Point.h"

#include <array>
#include <cstddef>
#include <span>
#include <vector>

namespace Veltrani::DisplayFitDetail {

/// How points lie in space: along their principal axes. A few points that lie elsewhere, as wrong measurements do,
/// change nothing of what is said about the others.
struct PointShape {
    Point<double, 3> centre;
    std::array<Point<double, 3>, 3> axes;  ///< of length 1, across each other; the longest extent first
    std::array<double, 3> extents{};       ///< root of the mean square distance from the centre along each, falling
    std::vector<std::size_t> absurd;       ///< indices of points that are so far from all others that they do not count

    [[nodiscard]] static PointShape of(std::span<const Point<double, 3>> points);

    /// True where all points but a few lie on one plane, to their deviation and a thousandth of their extent.
    /// @param deviation of a point, native units; 0 where it is not known
    [[nodiscard]] bool isFlat(double deviation) const {
        return beside(m_fromPlane, allowed(deviation)) <= few(m_fromPlane.size());
    }
    /// True where half of the points lie near to one plane: noise may be all that there is of depth.
    [[nodiscard]] bool isNearlyFlat() const;
    /// True where all points but a few lie on one line, or in one place.
    [[nodiscard]] bool isStraight(double deviation) const {
        return beside(m_fromLine, allowed(deviation)) <= few(m_fromLine.size());
    }
    /// Returns, for each point, whether it lies beside the plane that most points lie on or near to: further than
    /// `isFlat` allows, and than what most of them deviate explains.
    [[nodiscard]] std::vector<bool> besidePlane(double deviation) const;

    /// Returns how many of so many points are too few to show that there is depth: as many may be wrong.
    [[nodiscard]] static std::size_t few(std::size_t points);

private:
    [[nodiscard]] double allowed(double deviation) const;
    [[nodiscard]] static std::size_t beside(const std::vector<double>& distances, double allowed);

    std::vector<double> m_fromPlane;  ///< distances of the points from a plane near to most of them
    std::vector<double> m_fromLine;   ///< and from such a line
};

}  // namespace Veltrani::DisplayFitDetail
