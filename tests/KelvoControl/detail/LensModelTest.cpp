#include "KelvoControl/detail/LensModel.h"

#include "Common/Matrix.h"
#include "KelvoControl/Blend.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

/// (u, v) -> (u - 0.5, 1, v - 0.5), straight on.
Viewport straight() {
    Viewport viewport;
    viewport.ox = -0.5;
    viewport.oy = -0.5;
    viewport.width = 1920;
    viewport.height = 1200;
    return viewport;
}

std::shared_ptr<ProjectionModel> rectilinear(const Viewport& viewport) {
    return Blend::createProjectionModel(viewport, L"Rectilinear", L"");
}

TEST(LensModel, APixelIsThePictureTimesItsSize) {
    const auto model = rectilinear(straight());
    P3 byPixel;
    P3 byPart;
    ASSERT_TRUE(model->unprojectPixel({480.0, 900.0}, byPixel));
    ASSERT_TRUE(model->unproject({0.25, 0.75}, byPart));
    EXPECT_EQ(byPixel, byPart);
    EXPECT_EQ(byPixel, P3(-0.25, 1.0, 0.25));
}

TEST(LensModel, PixelsAreRoundedToTheNearestHalvesUpwards) {
    const auto model = rectilinear(straight());
    const auto pixelOf = [&](double x, double y) {
        Point<int, 2> pixel;
        EXPECT_TRUE(model->project({x / 1920 - 0.5, 1.0, y / 1200 - 0.5}, pixel));
        return pixel;
    };
    EXPECT_EQ(pixelOf(0.25, 100.75), (Point<int, 2>{0, 101}));
    EXPECT_EQ(pixelOf(960.5, 600.5), (Point<int, 2>{961, 601})) << "halves go up";
    EXPECT_EQ(pixelOf(-0.75, 10.0), (Point<int, 2>{-1, 10})) << "outside of the picture as well";
    EXPECT_EQ(pixelOf(-3.0, 10.0), (Point<int, 2>{-3, 10}));
}

TEST(LensModel, HalvesLeftOfThePictureGoUpToo) {
    Viewport viewport = straight();
    viewport.width = 1024;  // a power of two: the halves are exact
    viewport.height = 512;
    Point<int, 2> pixel;
    ASSERT_TRUE(rectilinear(viewport)->project({-2.5 / 1024 - 0.5, 1.0, -0.5 / 512 - 0.5}, pixel));
    EXPECT_EQ(pixel, (Point<int, 2>{-2, 0})) << "not away from zero";
}

TEST(LensModel, APixelThatDoesNotFitIsRefused) {
    const auto model = rectilinear(straight());
    Point<int, 2> pixel{-7, -8};
    EXPECT_TRUE(model->project({1e6, 1.0, 0.0}, pixel));
    pixel = {-7, -8};
    EXPECT_FALSE(model->project({1.2e6, 1.0, 0.0}, pixel)) << "beyond 2^31 pixels";
    EXPECT_FALSE(model->project({0.0, 1.0, -1e300}, pixel));
    EXPECT_EQ(pixel, (Point<int, 2>{-7, -8}));
}

TEST(LensModel, LayoutPointsAreSeenFromThePositionAndThroughTheOrientation) {
    Viewport viewport = straight();
    viewport.position = {3.0, -2.0, 1.0};
    viewport.orientation = {0.6, -0.3, 0.2};
    const auto model = rectilinear(viewport);
    const Matrix<double, 3> turn = Veltrani::rotationZXY(0.6, -0.3, 0.2);
    P3 direction;
    ASSERT_TRUE(model->unproject({0.2, 0.9}, direction));
    const P3 expected = turn * P3{-0.3, 1.0, 0.4};
    EXPECT_NEAR(norm(direction - expected), 0, 1e-15);
    P2 back;
    ASSERT_TRUE(model->projectNormalised(viewport.position + expected * 12.5, back));
    EXPECT_NEAR(back[0], 0.2, 1e-14);
    EXPECT_NEAR(back[1], 0.9, 1e-14);
}

TEST(LensModel, APositiveZTurnsToTheRight) {
    Viewport viewport = straight();
    viewport.orientation = {0.5, 0.0, 0.0};
    P3 direction;
    ASSERT_TRUE(rectilinear(viewport)->unproject({0.5, 0.5}, direction));
    EXPECT_GT(direction[0], 0.4);
}

TEST(LensModel, WhatIsNoNumberIsRefusedAndTheResultLeftAlone) {
    const auto model = rectilinear(straight());
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinite = std::numeric_limits<double>::infinity();
    P3 direction{-7.0, -7.0, -7.0};
    EXPECT_FALSE(model->unproject({nan, 0.5}, direction));
    EXPECT_FALSE(model->unproject({0.5, infinite}, direction));
    EXPECT_FALSE(model->unprojectPixel({0.5, nan}, direction));
    EXPECT_EQ(direction, P3(-7.0, -7.0, -7.0));
    Point<int, 2> pixel{-7, -7};
    P2 normalised{-7.0, -7.0};
    for (const P3& point : {P3{nan, 1.0, 0.0}, P3{0.0, 1.0, nan}, P3{infinite, 1.0, 0.0}, P3{0.0, infinite, 0.0}}) {
        EXPECT_FALSE(model->project(point, pixel));
        EXPECT_FALSE(model->projectNormalised(point, normalised));
    }
    EXPECT_EQ(pixel, (Point<int, 2>{-7, -7}));
    EXPECT_EQ(normalised, P2(-7.0, -7.0));
}

}  // namespace
