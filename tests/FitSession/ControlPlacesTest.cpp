#include "FitSession/ControlPlaces.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace {

using Veltrani::FitSession::ControlPoint;
namespace ControlPlaces = Veltrani::FitSession::ControlPlaces;
using Place3 = Point<double, 3>;

/// Where they are known; they were measured ten times as far along x.
ControlPlaces::Places placesOf(const std::vector<Place3>& places) {
    std::vector<ControlPoint> controls;
    for (const Place3& place : places) {
        controls.push_back({"", {10 * place[0], place[1], place[2]}, place, 0});
    }
    EXPECT_TRUE(places.empty() || ControlPlaces::of(controls, &ControlPoint::measured)(0, 0) == 10 * places[0][0]);
    return ControlPlaces::of(controls, &ControlPoint::known);
}

TEST(ControlPlaces, StandAsColumns) {
    const auto places = placesOf({{1, 2, 3}, {4, 5, 6}});
    ASSERT_EQ(places.cols(), 2);
    EXPECT_EQ(places(0, 1), 4);
    EXPECT_EQ(places(2, 0), 3);
    EXPECT_EQ(places(1, 1), 5);
}

// A cross of arms 3, 2 and 1 around (10, 20, 30): the mean square along each is 2 a^2 / 6.
TEST(ControlPlaces, TheirSpreadIsTheRootMeanSquareAlongEachAxis) {
    const auto cross = placesOf({{10, 23, 30}, {10, 17, 30}, {12, 20, 30}, {8, 20, 30}, {10, 20, 31}, {10, 20, 29}});
    const Eigen::Vector3d spread = ControlPlaces::spreadOf(cross);
    EXPECT_NEAR(spread[0], std::sqrt(3), 1e-13);
    EXPECT_NEAR(spread[1], std::sqrt(4 / 3.0), 1e-13);
    EXPECT_NEAR(spread[2], std::sqrt(1 / 3.0), 1e-13);
    const Eigen::Vector3d ofTwo = ControlPlaces::spreadOf(placesOf({{1, 2, 3}, {1, 2, 7}}));
    EXPECT_NEAR(ofTwo[0], 2, 1e-14);
    EXPECT_NEAR(ofTwo[1], 0, 1e-14);
    EXPECT_EQ(ofTwo[2], 0);
}

TEST(ControlPlaces, FormATriangleUnlessTheyLieOnALine) {
    EXPECT_TRUE(ControlPlaces::formTriangle(placesOf({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}})));
    EXPECT_FALSE(ControlPlaces::formTriangle(placesOf({{1, 2, 3}, {1, 2, 3}, {1, 2, 3}})));
    EXPECT_FALSE(ControlPlaces::formTriangle(placesOf({{0, 0, 0}, {1, 0, 0}})));
    // Four at the corners of a strip: its spreads are half of its sides.
    for (const double height : {0.0009, 0.0011}) {
        const auto strip = placesOf({{0, 0, 0}, {1, 0, 0}, {0, height, 0}, {1, height, 0}});
        EXPECT_EQ(ControlPlaces::formTriangle(strip), height > 0.001) << height;
    }
}

TEST(ControlPlaces, DeviationsAreWhatAMovementLeaves) {
    const auto measured = placesOf({{1, 0, 0}, {0, 2, 0}});
    const auto known = placesOf({{5, 1, 7}, {3, 0, 7}});
    Eigen::Matrix4d movement = Eigen::Matrix4d::Identity();
    // A quarter turn, then (5, 0, 7).
    movement.topLeftCorner<3, 3>() << 0, -1, 0, 1, 0, 0, 0, 0, 1;
    movement.topRightCorner<3, 1>() << 5, 0, 7;
    const auto left = ControlPlaces::deviationsAfter(movement, measured, known);
    EXPECT_LT(left.col(0).norm(), 1e-15);
    EXPECT_LT(left.col(1).norm(), 1e-15);
    movement(2, 3) = 4;
    EXPECT_NEAR(ControlPlaces::deviationsAfter(movement, measured, known)(2, 1), -3, 1e-15);
    EXPECT_NEAR(ControlPlaces::rmsOf(ControlPlaces::deviationsAfter(movement, measured, known)), 3, 1e-15);
    const auto small = placesOf({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
    const auto large = placesOf({{7, 0, 0}, {9, 0, 0}, {7, 2, 0}, {7, 0, 2}});
    EXPECT_LT(ControlPlaces::deviationsOf(small, large, true).norm(), 1e-14);
    EXPECT_GT(ControlPlaces::deviationsOf(small, large, false).norm(), 0.5);
}

TEST(ControlPlaces, LinesAreListedAndNotTooMany) {
    const auto textOf = [](const std::vector<int>& lines) {
        std::vector<ControlPoint> controls;
        for (const int line : lines) {
            controls.push_back({"", {}, {}, line});
        }
        return ControlPlaces::linesText(controls);
    };
    EXPECT_EQ(textOf({4}), "line 4");
    EXPECT_EQ(textOf({4, 9}), "lines 4 and 9");
    EXPECT_EQ(textOf({4, 5, 9}), "lines 4, 5 and 9");
    EXPECT_EQ(textOf({1, 2, 3, 4, 5, 6}), "lines 1, 2, 3, 4, 5 and 6");
    EXPECT_EQ(textOf({1, 2, 3, 4, 5, 6, 7}), "lines 1, 2, 3, 4, 5, 6 and others");
}

}  // namespace
