#include "KelvoScreen/detail/SurfaceLimits.h"

#include "KelvoScreen/MeshOracle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace {

using namespace Veltrani::KelvoScreenDetail;

constexpr double PI = std::numbers::pi;

TEST(AzimuthSector, AgreesWithTheAngleForEverySpan) {
    oracle::Random random(26);
    int inside = 0;
    for (int i = 0; i < 20000; ++i) {
        const double min = random.uniform(-4, 4);
        const double span = random.uniform(0.01, 2 * PI - 0.01);
        const AzimuthSector sector(min, min + span);
        const double azimuth = random.uniform(-PI, PI);
        double beyond = std::fmod(azimuth - min, 2 * PI);
        beyond += beyond < 0 ? 2 * PI : 0;
        if (std::abs(beyond - span) > 1e-9 && beyond > 1e-9 && 2 * PI - beyond > 1e-9) {
            ASSERT_EQ(sector.contains(3 * std::sin(azimuth), 3 * std::cos(azimuth)), beyond < span)
                << azimuth << " in " << min << " + " << span;
            inside += beyond < span ? 1 : 0;
        }
    }
    EXPECT_GT(inside, 8000);
}

TEST(AzimuthSector, ANarrowOneIsNotContinuedBehindTheAxis) {
    const AzimuthSector sector(0, 1e-12);
    EXPECT_TRUE(sector.contains(0.0, 1.0));
    EXPECT_FALSE(sector.contains(0.0, -1.0));
}

TEST(AzimuthSector, TheAxisBelongsToEverySector) {
    EXPECT_TRUE(AzimuthSector(1, 2).contains(0.0, 0.0));
    EXPECT_TRUE(AzimuthSector(1, 6).contains(0.0, 0.0));
}

TEST(AzimuthSector, ATurnIsWholeToATolerance) {
    EXPECT_TRUE(AzimuthSector(-PI, PI).isWhole());
    EXPECT_TRUE(AzimuthSector(1, 1 + 2 * PI - 1e-10).isWhole());
    EXPECT_FALSE(AzimuthSector(1, 1 + 2 * PI - 1e-8).isWhole());
    EXPECT_TRUE(AzimuthSector().isWhole());
}

TEST(AzimuthSector, RangesAreFiniteAndGrowingAndAtMostATurn) {
    EXPECT_TRUE(AzimuthSector::isRange(-PI, PI));
    EXPECT_TRUE(AzimuthSector::isRange(3, 3.1));
    EXPECT_FALSE(AzimuthSector::isRange(1, 1));
    EXPECT_FALSE(AzimuthSector::isRange(1, 0));
    EXPECT_FALSE(AzimuthSector::isRange(0, 6.3));
    EXPECT_FALSE(AzimuthSector::isRange(0, std::numeric_limits<double>::quiet_NaN()));
    EXPECT_FALSE(AzimuthSector::isRange(-std::numeric_limits<double>::infinity(), 0));
}

TEST(AzimuthSector, BoundsTheDistanceFromBelowAndToTheNearestLimitExactly) {
    oracle::Random random(27);
    int beside = 0;
    for (int i = 0; i < 2000; ++i) {
        const double min = random.uniform(-4, 4);
        const double span = random.uniform(0.01, 2 * PI - 0.01);
        const AzimuthSector sector(min, min + span);
        const double outside = random.uniform(0, 2 * PI - span);
        const double radius = random.uniform(0.1, 5);
        const double azimuth = min + span + outside;
        const double bound = sector.sightOf(radius * std::sin(azimuth), radius * std::cos(azimuth)).distanceBound;
        const double nearest = std::min(outside, 2 * PI - span - outside);
        const double distance = nearest < PI / 2 ? radius * std::sin(nearest) : radius;
        EXPECT_LE(bound, distance + 1e-14) << azimuth << " beyond " << min << " + " << span;
        if (nearest < PI / 4) {
            EXPECT_NEAR(bound, distance, 1e-14);
            ++beside;
        }
        const double within = min + random.uniform(0, span);
        EXPECT_LE(sector.sightOf(radius * std::sin(within), radius * std::cos(within)).distanceBound, 1e-14);
    }
    EXPECT_GT(beside, 500);
    EXPECT_EQ(AzimuthSector().sightOf(3.0, 4.0).distanceBound, 0);
}

TEST(AzimuthSector, NamesTheNearestLimitAndItsPlane) {
    const AzimuthSector sector(0, PI / 2);
    const Point<double, 3> beyond{2.0, -0.25, 7.0};
    EXPECT_NEAR(sector.nearestLimit(beyond[0], beyond[1])[0], 1, 1e-15);
    const LimitPlane plane = sector.limitPlane(beyond, {1.0, 0.5, 9.0});
    EXPECT_NEAR(plane.distance, 0.25, 1e-15);
    EXPECT_NEAR(plane.approach, -0.5, 1e-15);
}

}  // namespace
