#include "KelvoScreen/detail/TriangleMath.h"

#include "KelvoScreen/ExactOracle.h"
#include "KelvoScreen/MeshOracle.h"
#include "KelvoScreen/Meshes.h"
#include "KelvoScreen/Needles.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace Veltrani::KelvoScreenDetail;
using Vector = Point<double, 3>;

const Corners RIGHT_ANGLE{Vector{0.0, 0.0, 0.0}, Vector{2.0, 0.0, 0.0}, Vector{0.0, 3.0, 0.0}};

TEST(TriangleMath, TheAreaVectorFollowsTheWinding) {
    EXPECT_EQ(areaVector(RIGHT_ANGLE), (Vector{0.0, 0.0, 6.0}));
    EXPECT_EQ(areaVector({RIGHT_ANGLE[0], RIGHT_ANGLE[2], RIGHT_ANGLE[1]}), (Vector{0.0, 0.0, -6.0}));
    EXPECT_EQ(unitNormal(RIGHT_ANGLE), (Vector{0.0, 0.0, 1.0}));
}

TEST(TriangleMath, PointsOnALineHaveNoAreaWhateverTheirRounding) {
    oracle::Random random(21);
    for (int i = 0; i < 10000; ++i) {
        const Vector start = 100.0 * random.inCube();
        const Vector step = random.inCube();
        const Corners corners{start, start + random.uniform(-2, 2) * step, start + random.uniform(-2, 2) * step};
        ASSERT_FALSE(hasArea(corners)) << "triangle " << i;
        ASSERT_EQ(unitNormal(corners), Vector{});
    }
}

TEST(TriangleMath, ThinTrianglesThatAreMeantHaveAnArea) {
    EXPECT_TRUE(hasArea({Vector{0.0, 0.0, 0.0}, Vector{1.0, 0.0, 0.0}, Vector{0.5, 1e-9, 0.0}}));
    EXPECT_TRUE(hasArea({Vector{14000.0, 0.0, 0.0}, Vector{14001.0, 0.0, 0.0}, Vector{14000.5, 1e-9, 0.0}}));
    EXPECT_TRUE(hasArea({Vector{0.0, 0.0, 0.0}, Vector{1e-30, 0.0, 0.0}, Vector{0.0, 1e-30, 0.0}}));
    EXPECT_TRUE(hasArea({Vector{0.0, 0.0, 0.0}, Vector{1e30, 0.0, 0.0}, Vector{0.0, 1e30, 0.0}}));
}

TEST(TriangleMath, NumbersThatAreNotFiniteHaveNoArea) {
    for (const double bad : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        Corners corners = RIGHT_ANGLE;
        corners[1][0] = bad;
        EXPECT_FALSE(hasArea(corners));
        EXPECT_EQ(unitNormal(corners), Vector{});
    }
}

TEST(TriangleMath, TheClosestPointIsOnTheFaceTheEdgesOrTheCorners) {
    EXPECT_EQ(closestPoint(RIGHT_ANGLE, {0.5, 0.5, 4.0}), (Vector{0.5, 0.5, 0.0}));
    EXPECT_EQ(closestPoint(RIGHT_ANGLE, {1.0, -5.0, 1.0}), (Vector{1.0, 0.0, 0.0}));
    EXPECT_EQ(closestPoint(RIGHT_ANGLE, {-1.0, -1.0, 2.0}), (Vector{0.0, 0.0, 0.0}));
    EXPECT_EQ(closestPoint(RIGHT_ANGLE, {9.0, -1.0, 2.0}), (Vector{2.0, 0.0, 0.0}));
    EXPECT_EQ(closestPoint(RIGHT_ANGLE, {-1.0, 9.0, 2.0}), (Vector{0.0, 3.0, 0.0}));
}

TEST(TriangleMath, TheClosestPointAgreesWithTheOracle) {
    oracle::Random random(22);
    for (int i = 0; i < 20000; ++i) {
        const TriangleMesh mesh = meshes::triangle(random.inCube(), random.inCube(), random.inCube());
        const Vector point = 3.0 * random.inCube();
        const Vector closest = closestPoint({mesh.vertices[0], mesh.vertices[1], mesh.vertices[2]}, point);
        ASSERT_NEAR(norm(closest - point), oracle::distance(mesh, 0, point), 1e-12) << "triangle " << i;
        ASSERT_LE(oracle::distance(mesh, 0, closest), 1e-12) << "triangle " << i;
    }
}

TEST(TriangleMath, TheNormalOfANeedleIsRightToItsLastDigitsInEveryOrderOfItsCorners) {
    oracle::Random random(25);
    int checked = 0;
    for (int i = 0; i < 20000; ++i) {
        const Corners corners = needles::anyTriangle(needles::anyAspect(random), random).corners;
        for (const Corners& order : {corners, Corners{corners[1], corners[2], corners[0]}}) {
            if (hasArea(order)) {
                ++checked;
                ASSERT_LE(norm(unitNormal(order) - oracle::preciseNormal(order)), 2e-13) << "triangle " << i;
            }
        }
    }
    EXPECT_GT(checked, 30000);
}

TEST(TriangleMath, TheClosestPointOfANeedleLiesOnItAndNoneIsNearer) {
    oracle::Random random(26);
    int checked = 0;
    for (int i = 0; i < 40000; ++i) {
        const needles::Shape shape = needles::anyTriangle(needles::anyAspect(random), random);
        if (!hasArea(shape.corners)) {
            continue;
        }
        ++checked;
        const double height = shape.size * std::pow(10, -random.uniform(-2, 16));
        const Vector point = shape.corners[0] + random.uniform(-0.2, 1.2) * (shape.corners[1] - shape.corners[0]) +
                             random.uniform(-0.2, 1.2) * (shape.corners[2] - shape.corners[0]) +
                             height * (i % 2 == 0 ? shape.normal : random.inCube());
        const Vector closest = closestPoint(shape.corners, point);
        const double bound = 1e-14 * needles::largestCoordinate(shape.corners, point);
        ASSERT_LE(oracle::preciseDistance(shape.corners, closest), bound) << "triangle " << i;
        ASSERT_NEAR(norm(closest - point), oracle::preciseDistance(shape.corners, point), bound) << "triangle " << i;
    }
    EXPECT_GT(checked, 30000);
}

TEST(TriangleMath, BeyondTheTipOfANeedleTheTipIsTheClosestPoint) {
    oracle::Random random(29);
    int checked = 0;
    for (int i = 0; i < 40000; ++i) {
        const needles::Shape shape = needles::anyTriangle(needles::anyAspect(random), random);
        if (!hasArea(shape.corners)) {
            continue;
        }
        ++checked;
        // In line with an edge: beyond its end both edges of a sharp corner are nearer than rounding can tell.
        const Vector& start = shape.corners[random.below(3)];
        const Vector point = start + random.uniform(0, 1.5) * (shape.corners[random.below(3)] - start);
        const Vector closest = closestPoint(shape.corners, point);
        const double bound = 1e-14 * needles::largestCoordinate(shape.corners, point);
        ASSERT_LE(oracle::preciseDistance(shape.corners, closest), bound) << "triangle " << i;
        ASSERT_NEAR(norm(closest - point), oracle::preciseDistance(shape.corners, point), bound) << "triangle " << i;
    }
    EXPECT_GT(checked, 30000);
}

TEST(TriangleMath, OfATriangleWithoutAreaTheEdgesCount) {
    const Corners line{Vector{0.0, 0.0, 0.0}, Vector{1.0, 0.0, 0.0}, Vector{4.0, 0.0, 0.0}};
    EXPECT_EQ(closestPoint(line, {3.0, 2.0, 0.0}), (Vector{3.0, 0.0, 0.0}));
    const Vector place{5.0, 6.0, 7.0};
    EXPECT_EQ(closestPoint({place, place, place}, {0.0, 0.0, 0.0}), place);
}

TEST(TriangleMath, TheClosestPointOfASegmentDoesNotDependOnItsDirection) {
    oracle::Random random(23);
    for (int i = 0; i < 20000; ++i) {
        const Vector a = random.inCube();
        const Vector b = random.inCube();
        const Vector p = 2.0 * random.inCube();
        ASSERT_EQ(closestOnSegment(a, b, p), closestOnSegment(b, a, p));
    }
    EXPECT_EQ(closestOnSegment({1.0, 1.0, 1.0}, {1.0, 1.0, 1.0}, {0.0, 0.0, 0.0}), (Vector{1.0, 1.0, 1.0}));
}

TEST(TriangleMath, WeightsPlaceAPoint) {
    EXPECT_EQ(pointWithWeights(RIGHT_ANGLE, {0.5, 0.25, 0.25}), (Vector{0.5, 0.75, 0.0}));
    EXPECT_EQ(pointWithWeights(RIGHT_ANGLE, {2.0, -0.5, -0.5}), (Vector{-1.0, -1.5, 0.0}));
}

TEST(EdgeFunction, IsNegatedWhenThePointsAreExchanged) {
    oracle::Random random(24);
    for (int i = 0; i < 20000; ++i) {
        const Vector p = random.inCube();
        const Vector q = random.inCube();
        ASSERT_EQ(edgeFunction(p[0], p[1], q[0], q[1]), -edgeFunction(q[0], q[1], p[0], p[1]));
    }
}

/// p, and a point that is nearly on the line through it and the origin.
std::array<Point<double, 2>, 2> nearlyParallel(oracle::Random& random) {
    const Point<double, 2> p{random.uniform(-1, 1), random.uniform(-1, 1)};
    const double turn = std::pow(10, -random.uniform(0, 40));
    return {p, random.uniform(-3, 3) * p + turn * Point<double, 2>{-p[1], p[0]}};
}

TEST(EdgeFunction, IsAccurateToTheLastDigitsHoweverMuchCancels) {
    oracle::Random random(27);
    for (int i = 0; i < 3000; ++i) {
        const auto [p, q] = nearlyParallel(random);
        const double exact = oracle::exactArea({}, p, q);
        ASSERT_LE(std::abs(accurateEdgeFunction(p[0], p[1], q[0], q[1]) - exact), 4e-16 * std::abs(exact)) << i;
    }
}

TEST(AccurateArea, IsThatOfExactArithmeticToTwiceThePrecisionOfADouble) {
    oracle::Random random(28);
    for (int i = 0; i < 3000; ++i) {
        const auto [p, q] = nearlyParallel(random);
        const Point<double, 2> a{random.uniform(-1, 1), random.uniform(-1, 1)};
        const Point<double, 2> b = a + p;
        const Point<double, 2> c = a + q;
        const double exact = oracle::exactArea(a, b, c);
        ASSERT_LE(std::abs(accurateArea(a, b, c) - exact), 4e-16 * std::abs(exact) + 0x1p-100 * norm(p) * norm(q)) << i;
    }
}

TEST(AccurateProjection, IsThatOfExactArithmeticToTwiceThePrecisionOfADouble) {
    oracle::Random random(29);
    for (int i = 0; i < 3000; ++i) {
        const auto [p, q] = nearlyParallel(random);
        const Point<double, 2> a{random.uniform(-1, 1), random.uniform(-1, 1)};
        const Point<double, 2> b = a + p;
        const Point<double, 2> c = a + Point<double, 2>{-q[1], q[0]};
        const double exact = oracle::exactProjection(a, b, c);
        ASSERT_LE(std::abs(accurateProjection(a, b, c) - exact), 4e-16 * std::abs(exact) + 0x1p-100 * norm(p) * norm(q))
            << i;
        ASSERT_LE(std::abs(accurateProjection(a, b, b) - dot(p, p)), 4e-16 * dot(p, p)) << i;
    }
}

TEST(EdgeFunction, HasTheExactSignWhereTheProductsRoundAlike) {
    // p x q = (1 + e)(1 + e) - 1 (1 + 2 e) = e^2, far below the rounding of the products.
    const double e = 0x1p-40;
    EXPECT_EQ(edgeFunction(1 + e, 1.0, 1 + 2 * e, 1 + e), e * e);
    EXPECT_EQ(edgeFunction(1 + 2 * e, 1 + e, 1 + e, 1.0), -e * e);
    EXPECT_EQ(edgeFunction(0.1, 0.3, 0.2, 0.6), 0) << "on the line";
}

}  // namespace
