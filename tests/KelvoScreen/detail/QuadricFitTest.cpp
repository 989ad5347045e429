#include "KelvoScreen/detail/QuadricSheet.h"

#include "KelvoScreen/MeshOracle.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <vector>

namespace {

using namespace Veltrani::KelvoScreenDetail;
using Vector = Point<double, 3>;

constexpr double NOISE = 1e-14;

/// A half disc of points on heights over the plane z = 0, around the origin: as at the border of a mesh.
std::vector<Vector> halfDisc(double radius, const std::function<double(double x, double y)>& height) {
    std::vector<Vector> points;
    constexpr int STEPS = 12;
    for (int i = -STEPS; i <= STEPS; ++i) {
        for (int j = 0; j <= STEPS; ++j) {
            const double x = radius * i / STEPS;
            const double y = radius * j / STEPS;
            if (x * x + y * y <= radius * radius) {
                points.push_back({x, y, height(x, y)});
            }
        }
    }
    return points;
}

double sphereHeight(double radius, double x, double y) {
    return radius - std::sqrt(radius * radius - x * x - y * y);
}

TEST(QuadricFit, OfASphereIsThatSphereFarBeyondThePoints) {
    const auto points = halfDisc(1.2, [](double x, double y) { return sphereHeight(4, x, y); });
    const auto fitted = fitSheet(points, {}, {0.1, -0.1, 1.0}, 1.3, NOISE);
    ASSERT_TRUE(fitted);
    EXPECT_LE(fitted->error, 1e-11);
    for (const double angle : {0.5, 1.0, 2.0, 3.1}) {
        EXPECT_NEAR(fitted->sheet.height({0.0, -4 * std::sin(angle), 4 - 4 * std::cos(angle)}), 0, 1e-9) << angle;
    }
}

TEST(QuadricFit, OfACylinderAtAnyAngleIsThatCylinder) {
    const Vector axis{0.6, 0.8, 0.0};
    const auto points = halfDisc(1, [&](double x, double y) { return sphereHeight(3, x * 0.8 - y * 0.6, 0); });
    const auto fitted = fitSheet(points, {}, {0.0, 0.0, 1.0}, 1.1, NOISE);
    ASSERT_TRUE(fitted);
    const Vector across{0.8, -0.6, 0.0};
    for (const double angle : {-1.0, 0.5, 1.5}) {
        for (const double along : {-4.0, 0.0, 7.0}) {
            const Vector point =
                along * axis + (3 * std::sin(angle)) * across + Vector{0.0, 0.0, 3 - 3 * std::cos(angle)};
            EXPECT_NEAR(fitted->sheet.height(point), 0, 1e-9) << angle << ' ' << along;
        }
    }
}

TEST(QuadricFit, OfAPlaneIsThePlane) {
    const auto points = halfDisc(1, [](double x, double y) { return 0.25 * x - 0.5 * y + 0.125; });
    const auto fitted = fitSheet(points, {}, {0.0, 0.0, 1.0}, 1.2, NOISE);
    ASSERT_TRUE(fitted);
    EXPECT_TRUE(fitted->sheet.isPlane());
    EXPECT_NEAR(fitted->sheet.height({100.0, 40.0, 5.125}), 0, 1e-12);
    EXPECT_GT(fitted->sheet.slope[2], 0) << "on the side of the normal given";
}

TEST(QuadricFit, OfASaddleHasBothItsCurvatures) {
    const auto points = halfDisc(0.5, [](double x, double y) { return 0.1 * x * x - 0.1 * y * y + 0.05 * x * y; });
    const auto fitted = fitSheet(points, {}, {0.0, 0.0, 1.0}, 0.5, NOISE);
    ASSERT_TRUE(fitted);
    for (const double x : {-0.8, 0.3}) {
        const double y = -0.6;
        EXPECT_NEAR(fitted->sheet.height({x, y, 0.1 * x * x - 0.1 * y * y + 0.05 * x * y}), 0, 1e-3);
    }
}

TEST(QuadricFit, ItsErrorIsTheNoise) {
    oracle::Random random(41);
    const auto points =
        halfDisc(1, [&](double x, double y) { return sphereHeight(5, x, y) + random.uniform(-1e-3, 1e-3); });
    const auto fitted = fitSheet(points, {}, {0.0, 0.0, 1.0}, 1, NOISE);
    ASSERT_TRUE(fitted);
    EXPECT_NEAR(fitted->error, 1e-3 / std::sqrt(3.0), 1e-4) << "uniform within 1e-3";
    EXPECT_NEAR(fitted->sheet.height({0.0, -1.0, sphereHeight(5, 0, 1)}), 0, 3e-3) << "as far again";
}

TEST(QuadricFit, AcrossANarrowStripItIsStraight) {
    std::vector<Vector> points;
    for (int i = -6; i <= 6; ++i) {
        for (const double y : {0.0, 0.01}) {
            const double x = 0.1 * i;
            points.push_back({x, y, sphereHeight(2, x, 0) + 1e-5 * (i % 3)});
        }
    }
    const auto fitted = fitSheet(points, {}, {0.0, 0.0, 1.0}, 0.6, NOISE);
    ASSERT_TRUE(fitted);
    const double curvature = -2 * fitted->sheet.bend[3];
    EXPECT_NEAR(curvature, 0, 1e-6);
    EXPECT_NEAR(-2 * fitted->sheet.bend[0], 0.5, 0.01);
}

TEST(QuadricFit, OfTooFewPointsOrALineThereIsNone) {
    const auto points = halfDisc(1, [](double x, double y) { return x * y; });
    EXPECT_TRUE(fitSheet(std::span(points).first(FEWEST_FIT_POINTS), {}, {0.0, 0.0, 1.0}, 1, NOISE));
    EXPECT_FALSE(fitSheet(std::span(points).first(FEWEST_FIT_POINTS - 1), {}, {0.0, 0.0, 1.0}, 1, NOISE));
    std::vector<Vector> line;
    for (int i = 0; i < 20; ++i) {
        line.push_back({0.1 * i, 0.0, 0.01 * i * i});
    }
    EXPECT_FALSE(fitSheet(line, {}, {0.0, 0.0, 1.0}, 2, NOISE));
    EXPECT_FALSE(fitSheet(points, {}, {}, 1, NOISE)) << "no normal";
    EXPECT_FALSE(fitSheet(points, {}, {0.0, 0.0, 1.0}, 0, NOISE)) << "no extent";
}

TEST(QuadricFit, WhatIsNearlyFoldedHasNone) {
    const auto points = halfDisc(1, [](double x, double y) { return 3 * x * x + y; });
    EXPECT_FALSE(fitSheet(points, {}, {0.0, 0.0, 1.0}, 1, NOISE));
}

}  // namespace
