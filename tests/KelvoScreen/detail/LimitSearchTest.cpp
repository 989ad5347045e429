#include "KelvoScreen/detail/SurfaceLimits.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

using namespace Veltrani::KelvoScreenDetail;
using Vector = Point<double, 3>;

constexpr double TOLERANCE = 1e-14;

/// The part x <= 1 of the plane z = 0.
Vector moveWithinHalfPlane(const Vector& place) {
    return {std::min(place[0], 1.0), place[1], 0.0};
}

/// A hit of a ray beyond the limit x = 1 of the half-plane, moved or not.
bool move(const Vector& direction, OwnHit& hit) {
    const LimitSearch search(direction, dot(direction, direction), {0.0, 0.0, 1.0}, TOLERANCE);
    const std::array planes{LimitPlane{hit.place[0] - 1, direction[0]}, LimitPlane{}};
    return search.move(planes, moveWithinHalfPlane, hit);
}

TEST(LimitSearch, MovesAHitThatIsBeyondTheLimitByLessThanTheTolerance) {
    OwnHit hit{{1 + 5e-15, 2.0, 0.0}, 3};
    ASSERT_TRUE(move({0.0, 0.0, 2.0}, hit));
    EXPECT_EQ(hit.place, (Vector{1.0, 2.0, 0.0}));
    EXPECT_NEAR(hit.t, 3, 1e-14);
}

TEST(LimitSearch, LeavesAHitThatIsFurtherBeyond) {
    const OwnHit before{{1 + 3e-14, 2.0, 0.0}, 3};
    OwnHit hit = before;
    EXPECT_FALSE(move({0.0, 0.0, 2.0}, hit));
    EXPECT_EQ(hit.place, before.place);
    EXPECT_EQ(hit.t, before.t);
}

TEST(LimitSearch, AGrazingHitSlidesBackAlongItsRayAtAnyAngleToTheLimit) {
    for (const double angle : {0.0, 0.7, 1.2, 1.5}) {
        const Vector direction{std::cos(angle), std::sin(angle), 1e-6};
        // Known to 1e-14 across, the hit is uncertain by 1e-8 along the ray.
        OwnHit hit{{1 + 0.9e-8 * std::cos(angle), 2 + 0.9e-8 * std::sin(angle), 0.0}, 3};
        ASSERT_TRUE(move(direction, hit)) << angle;
        EXPECT_NEAR(hit.place[0], 1, 1e-15) << angle;
        EXPECT_NEAR(hit.place[1], 2, 1e-14) << angle;
        EXPECT_NEAR(hit.t, 3 - 0.9e-8, 1e-14) << angle;
        OwnHit far{{1 + 1e-7 * std::cos(angle), 2 + 1e-7 * std::sin(angle), 0.0}, 3};
        EXPECT_FALSE(move(direction, far)) << angle;
    }
}

TEST(LimitSearch, ItsFarthestReachHoldsForEveryRay) {
    for (const double rise : {1e-12, 1e-8, 1e-4, 1.0}) {
        const Vector direction{1.0, 0.0, rise};
        OwnHit far{{1 + 1.001 * LimitSearch::farthestReach(TOLERANCE), 2.0, 0.0}, 3};
        EXPECT_FALSE(move(direction, far)) << rise;
    }
    OwnHit near{{1 + 0.999 * LimitSearch::farthestReach(TOLERANCE), 2.0, 0.0}, 3};
    EXPECT_TRUE(move({1.0, 0.0, 1e-12}, near)) << "no larger than need be";
}

TEST(LimitSearch, NeverMovesAHitBehindTheStartOfTheRay) {
    OwnHit hit{{1 + 0.9e-8, 2.0, 0.0}, 0};
    ASSERT_TRUE(move({1.0, 0.0, 1e-6}, hit));
    EXPECT_EQ(hit.t, 0);
}

TEST(LimitSearch, UncertaintyAlongTheRayGrowsWithItsSlantUpToABound) {
    EXPECT_EQ(uncertaintyAlong(1e-14, 1), 1e-14);
    EXPECT_DOUBLE_EQ(uncertaintyAlong(1e-14, -1e-3), 1e-11);
    EXPECT_EQ(uncertaintyAlong(1e-14, 0), uncertaintyAlong(1e-14, 1e-12));
    EXPECT_LT(uncertaintyAlong(1e-14, 0), 1e-6);
}

}  // namespace
