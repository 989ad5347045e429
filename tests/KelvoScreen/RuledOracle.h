#pragma once

#include "KelvoScreen/IntersectionSet.h"
#include "KelvoScreen/RoundOracle.h"
#include "support/ScreenConfigDouble.h"

#include <string>
#include <vector>

/// Answers about ruled surfaces in extended precision: Newton's method on P(u, v) = from + k d from many starts, patch
/// by patch, where the library solves a quadratic.
namespace oracle {

class RuledOracle {
public:
    explicit RuledOracle(ScreenConfigDouble config);

    /// The point of patch i at (u, v).
    [[nodiscard]] Exact at(std::size_t patch, long double u, long double v) const;
    /// The unit normal (d/dv) x (d/du) there.
    [[nodiscard]] Exact normal(std::size_t patch, long double u, long double v) const;
    [[nodiscard]] std::size_t patchCount() const;

    /// The distance of a point from the nearest patch, found by descent from many starts.
    [[nodiscard]] long double distance(const Point<double, 3>& point) const;
    /// All places where the line meets a patch or comes out just beside it, nearest first.
    [[nodiscard]] std::vector<ExpectedHit> meetings(const Point<double, 3>& from, const Point<double, 3>& to) const;
    [[nodiscard]] double scale(const Point<double, 3>& from, const Point<double, 3>& to) const;

    /// Which hits are not on the surface, not on the ray, not at their t or out of order; empty when all is well.
    [[nodiscard]] std::string faultOfPlaces(const IntersectionSet& hits, const Point<double, 3>& from,
                                            const Point<double, 3>& to) const;
    /// Beyond that, which hits are missing, repeated or invented. For rays that graze nothing: where the system is
    /// nearly singular, Newton's method is no judge.
    [[nodiscard]] std::string faultOf(const IntersectionSet& hits, const Point<double, 3>& from,
                                      const Point<double, 3>& to) const;

private:
    /// Of a ball around the middle of a patch that holds it.
    [[nodiscard]] long double radius(std::size_t patch) const;

    ScreenConfigDouble m_config;
};

}  // namespace oracle
