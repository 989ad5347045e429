#include "KelvoScreen/detail/QuadricSheet.h"

#include "KelvoScreen/MeshOracle.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace Veltrani::KelvoScreenDetail;
using Vector = Point<double, 3>;

/// The sphere around the origin, positive outside: (|p|^2 - r^2) / (2 r) seen from its lowest point.
QuadricSheet sphere(double radius) {
    QuadricSheet sheet;
    sheet.origin = {0.0, 0.0, -radius};
    sheet.slope = {0.0, 0.0, -1.0};
    sheet.bend = {0.5 / radius, 0, 0, 0.5 / radius, 0, 0.5 / radius};
    return sheet;
}

TEST(QuadricSheet, HeightsOfASphereAreThoseOfItsEquation) {
    const QuadricSheet sheet = sphere(3);
    EXPECT_FALSE(sheet.isPlane());
    oracle::Random random(31);
    for (int i = 0; i < 100; ++i) {
        const Vector point = 5.0 * random.inCube();
        EXPECT_NEAR(sheet.height(point), (dot(point, point) - 9) / 6, 1e-13);
        EXPECT_LE(norm(sheet.gradient(point) - point * (1.0 / 3)), 1e-14);
    }
}

TEST(QuadricSheet, AlongARayItsHeightsAreAPolynomial) {
    QuadricSheet sheet;
    sheet.origin = {1.0, -2.0, 0.5};
    sheet.offset = 0.25;
    sheet.slope = {0.1, 0.9, -0.3};
    sheet.bend = {0.3, -0.2, 0.1, 0.5, 0.7, -0.4};
    const Vector from{2.0, 1.0, -1.0};
    const Vector direction{0.5, -2.0, 1.5};
    const AlongRay along = sheet.alongRay(from, direction);
    for (const double tau : {-2.0, 0.0, 0.7, 3.0}) {
        EXPECT_NEAR(sheet.height(from + tau * direction), along.value + tau * (along.slope + tau * along.bend), 1e-12);
    }
}

TEST(QuadricSheet, IsAPlaneWithoutABend) {
    QuadricSheet sheet;
    sheet.slope = {0.0, 1.0, 0.0};
    EXPECT_TRUE(sheet.isPlane());
    EXPECT_EQ(sheet.height({3.0, 2.0, 7.0}), 2);
}

TEST(Zeros, AreThoseOfAParabolaTheNearerFirst) {
    const Zeros both({6, -5, 1});
    ASSERT_EQ(both.count, 2U);
    EXPECT_EQ(both.tau[0], 2);
    EXPECT_EQ(both.tau[1], 3);
    const Zeros touching({1, -2, 1});
    ASSERT_GE(touching.count, 1U);
    EXPECT_EQ(touching.tau[0], 1);
    EXPECT_EQ(Zeros({1, 0, 1}).count, 0U);
}

TEST(Zeros, LoseNoDigitsWhereTheBendIsSlight) {
    const Zeros zeros({-1e-9, 1, 1e-9});
    ASSERT_EQ(zeros.count, 2U);
    EXPECT_NEAR(zeros.tau[0], 1e-9, 1e-24);
    const Zeros line({-4, 2, 0});
    ASSERT_EQ(line.count, 1U);
    EXPECT_EQ(line.tau[0], 2);
}

TEST(Zeros, OfWhatIsNoParabolaThereAreNone) {
    const double broken = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(Zeros({broken, 1, 1}).count, 0U);
    EXPECT_EQ(Zeros({1, broken, 1}).count, 0U);
    EXPECT_EQ(Zeros({1, 0, 0}).count, 0U) << "never zero";
    EXPECT_EQ(Zeros({0, 0, 0}).count, 0U) << "zero everywhere";
}

}  // namespace
