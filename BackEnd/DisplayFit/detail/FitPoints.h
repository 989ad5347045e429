#pragma once

#include "Common/Matrix.h"
#include "Common/Point.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <vector>

namespace Veltrani::DisplayFitDetail {

/// A symmetric matrix of 2 x 2: (xx, xy, yy).
using Spread = Point<double, 3>;

/// The points of one channel, each kind of number by itself: the solver reads them many times.
struct FitPoints {
    std::vector<Point<double, 2>> picture;           ///< normalised, (0, 0) bottom left
    std::vector<Point<double, 3>> world;             ///< native units
    std::vector<Matrix<double, 3>> covariance;       ///< of `world`; empty where not stated
    std::vector<Point<double, 2>> pictureDeviation;  ///< normalised; empty where exact
    std::vector<std::size_t> given;                  ///< index among the points that the caller gave
    std::vector<std::size_t> rows;                   ///< lines of the file that they were read from; 0 for none
    std::function<void()> pulse;                     ///< called now and then; what it throws ends the fit; may be empty

    [[nodiscard]] std::size_t size() const { return picture.size(); }
    [[nodiscard]] bool hasDeviations() const { return !covariance.empty() || !pictureDeviation.empty(); }

    /// Loops over the points call it for each: every so many of them it calls `pulse`.
    void pulseAt(std::size_t point) const {
        constexpr std::size_t POINTS = 1024;
        if (point % POINTS == 0 && pulse) {
            pulse();
        }
    }

    /// At most so many of them, spread over all: their places, and where they are from if that is known.
    [[nodiscard]] FitPoints someOf(std::size_t most) const {
        FitPoints some;
        const std::size_t count = std::min(size(), most);
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t from = i * size() / count;
            some.picture.push_back(picture[from]);
            some.world.push_back(world[from]);
            if (!given.empty()) {
                some.given.push_back(given[from]);
            }
            if (!rows.empty()) {
                some.rows.push_back(rows[from]);
            }
        }
        return some;
    }
};

}  // namespace Veltrani::DisplayFitDetail
