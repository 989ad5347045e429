#include "DisplayReport/coverage/PointIndex.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace {

using Veltrani::DisplayReport::PointIndex;
using P3 = Point<double, 3>;

std::vector<P3> scattered(std::size_t count, const P3& middle, unsigned seed) {
    std::mt19937 random(seed);
    std::normal_distribution<double> spread;
    std::vector<P3> points;
    for (std::size_t i = 0; i < count; ++i) {
        points.push_back(middle + P3{spread(random), spread(random), 0.1 * spread(random)});
    }
    return points;
}

/// The distance to the nearest of all, one by one.
double leastDistance(const std::vector<P3>& points, const P3& place) {
    double least = std::numeric_limits<double>::infinity();
    for (const P3& point : points) {
        least = std::min(least, norm(point - place));
    }
    return least;
}

TEST(PointIndex, FindsTheNearestOfMany) {
    for (const P3& middle : {P3{0, 0, 0}, P3{1e9, -1e9, 1e9}}) {
        const std::vector<P3> points = scattered(1519, middle, 1);
        const PointIndex index(points);
        for (const P3& place : scattered(500, middle, 2)) {
            const auto found = index.nearest(place);
            ASSERT_TRUE(found);
            EXPECT_EQ(norm(index[*found] - place), leastDistance(points, place));
            EXPECT_EQ(index[*found], points[*found]);
        }
    }
}

TEST(PointIndex, FindsAmongPointsInOnePlaceAndFromFarAway) {
    const PointIndex same(std::vector<P3>(100, P3{1, 2, 3}));
    EXPECT_TRUE(same.nearest({-1e12, 0, 0}));
    EXPECT_EQ(PointIndex({{0, 0, 0}, {5, 0, 0}}).nearest({1e6, 0, 0}), 1U);
}

TEST(PointIndex, FindsNothingWithoutPointsOrForWhatIsNoPlace) {
    EXPECT_FALSE(PointIndex({}).nearest({0, 0, 0}));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_FALSE(PointIndex({{0, 0, 0}}).nearest({0, nan, 0}));
    EXPECT_FALSE(PointIndex({{0, 0, 0}}).nearest({0, 0, infinity}));
}

}  // namespace
