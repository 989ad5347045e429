#include "DisplayReport/scene/SceneCamera.h"

#include "Scenes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace {

using namespace Veltrani::DisplayReport;
using scenes::moved;
using scenes::wall;
using P3 = Point<double, 3>;

constexpr double WIDTH = 800;
constexpr double HEIGHT = 500;

TEST(SceneCamera, EveryViewHoldsTheWholeFrame) {
    const DisplayScene scene = wall();
    for (const std::string& view : SceneCamera::views()) {
        const SceneCamera camera(scene, view, WIDTH, HEIGHT);
        for (const double x : {-2.0, 2.0}) {
            for (const double y : {0.0, 5.0}) {
                for (const double z : {-1.0, 1.0}) {
                    const auto place = camera.place({x, y, z});
                    ASSERT_TRUE(place.has_value()) << view;
                    EXPECT_GE((*place)[0], 0) << view;
                    EXPECT_LE((*place)[0], WIDTH) << view;
                    EXPECT_GE((*place)[1], 0) << view;
                    EXPECT_LE((*place)[1], HEIGHT) << view;
                }
            }
        }
    }
}

TEST(SceneCamera, RightIsRightAndUpIsUp) {
    const DisplayScene scene = wall();
    const SceneCamera front(scene, "front", WIDTH, HEIGHT);
    EXPECT_LT(front.place({-2, 5, 0})->operator[](0), front.place({2, 5, 0})->operator[](0));
    EXPECT_LT(front.place({0, 5, 1})->operator[](1), front.place({0, 5, -1})->operator[](1));
    EXPECT_GT(front.place({0, 0, 0})->operator[](2), front.place({0, 5, 0})->operator[](2)) << "nearer";
    const SceneCamera top(scene, "top", WIDTH, HEIGHT);
    EXPECT_LT(top.place({0, 5, 0})->operator[](1), top.place({0, 0, 0})->operator[](1)) << "forward is up";
    EXPECT_LT(top.place({-2, 5, 0})->operator[](0), top.place({2, 5, 0})->operator[](0)) << "right is right";
    const SceneCamera side(scene, "side", WIDTH, HEIGHT);
    EXPECT_LT(side.place({0, 0, 0})->operator[](0), side.place({0, 5, 0})->operator[](0)) << "from the right side";
}

TEST(SceneCamera, WhatStandsBehindHasNoPlace) {
    EXPECT_FALSE(SceneCamera(wall(), "front", WIDTH, HEIGHT).place({0, -1000, 0}).has_value());
}

// By hand: from the front, a point lies as far from the middle of the picture as its offset from the camera over its
// distance ahead tells, times the focal length of a field of 32 degrees.
TEST(SceneCamera, APointIsWhereTheIntersectionOfItsRayWithThePictureIs) {
    const SceneCamera camera(wall(), "front", WIDTH, HEIGHT);
    const P3 from = camera.position();
    EXPECT_NEAR(from[0], 0, 1e-9) << "the scene is symmetric";
    const double focus = HEIGHT / 2 / std::tan(16 * std::numbers::pi / 180);
    for (const P3& point : {P3{-2, 5, 1}, P3{1.25, 5, -0.5}, P3{0.5, 2, 0.75}}) {
        const double ahead = point[1] - from[1];
        const auto place = camera.place(point);
        ASSERT_TRUE(place.has_value());
        EXPECT_NEAR((*place)[0], WIDTH / 2 + focus * (point[0] - from[0]) / ahead, 1e-9);
        EXPECT_NEAR((*place)[1], HEIGHT / 2 - focus * (point[2] - from[2]) / ahead, 1e-9);
        EXPECT_NEAR((*place)[2], 1 / ahead, 1e-12);
    }
}

// From the front the camera looks along y: where the line comes to the least distance ahead is read off its y.
TEST(SceneCamera, ALineThatRunsBehindTheCameraEndsBeforeIt) {
    const SceneCamera camera(wall(), "front", WIDTH, HEIGHT);
    const P3 position = camera.position();
    const P3 ahead{1.5, 4, 0.75};
    const P3 behind = position + P3{-0.5, -3, 0.25};
    const double share = (position[1] + camera.nearest() - ahead[1]) / (behind[1] - ahead[1]);
    const P3 cut = ahead + (behind - ahead) * share;
    const double focus = HEIGHT / 2 / std::tan(16 * std::numbers::pi / 180);
    const P3 end{WIDTH / 2 + focus * (cut[0] - position[0]) / camera.nearest(),
                 HEIGHT / 2 - focus * (cut[2] - position[2]) / camera.nearest(), 1 / camera.nearest()};
    const auto forwards = camera.placeLine(ahead, behind);
    const auto backwards = camera.placeLine(behind, ahead);
    ASSERT_TRUE(forwards.has_value() && backwards.has_value());
    EXPECT_EQ(forwards->first, *camera.place(ahead));
    EXPECT_EQ(backwards->second, *camera.place(ahead));
    EXPECT_LE(norm(forwards->second - end), 1e-9 * norm(end));
    EXPECT_LE(norm(backwards->first - end), 1e-9 * norm(end));
    EXPECT_FALSE(camera.placeLine(behind, behind - P3{1, 1, 1}).has_value());
    const P3 other{-2, 5, 1};
    EXPECT_EQ(camera.placeLine(ahead, other), std::pair(*camera.place(ahead), *camera.place(other)));
}

TEST(SceneCamera, TheSceneFillsThePictureUpToItsMargin) {
    const DisplayScene scene = wall();
    const SceneCamera camera(scene, "front", WIDTH, HEIGHT);
    // From the front, the nearest edges of the box are those around the eye, the scale of x at the bottom among them.
    const double left = camera.place({-2, 0, -1})->operator[](0);
    const double right = camera.place({2, 0, -1})->operator[](0);
    EXPECT_NEAR(right - left, 0.88 * WIDTH, 0.01 * WIDTH);
}

TEST(SceneCamera, HomeStandsOnTheSideOfTheEyeAndAboveIt) {
    DisplayScene scene = wall();
    const SceneCamera camera(scene, "home", WIDTH, HEIGHT);
    EXPECT_LT(camera.position()[1], 5);
    EXPECT_GT(camera.position()[2], 1);
    EXPECT_GT(camera.position()[0], 0) << "to the right of the audience";
    scene.eyes[0].point = {0, 10, 0};
    const SceneCamera behind(scene, "home", WIDTH, HEIGHT);
    EXPECT_GT(behind.position()[1], 5);
    EXPECT_LT(behind.position()[0], 0) << "their right is the other side";
}

TEST(SceneCamera, AnEyeOnTheScreenTellsNoSide) {
    DisplayScene scene = wall();
    scene.eyes[0].point = {0, 5.01, 0};
    EXPECT_LT(SceneCamera::directionOf("home", scene)[1], 0);
    scene.eyes.clear();
    EXPECT_LT(SceneCamera::directionOf("home", scene)[1], 0);
}

TEST(SceneCamera, FarFromTheOriginThePictureIsTheSame) {
    const P3 far{1e9, -1e9, 1e9};
    for (const std::string& view : SceneCamera::views()) {
        const SceneCamera here(wall(), view, WIDTH, HEIGHT);
        const SceneCamera there(moved(wall(), far), view, WIDTH, HEIGHT);
        for (const P3& point : {P3{-2, 5, 1}, P3{2, 5, -1}, P3()}) {
            // What is left of a double at 1e9, a ten millionth, is less than this in a picture of a few metres.
            constexpr double PIXELS = 0.01;
            EXPECT_LE(norm(*here.place(point) - *there.place(point + far)), PIXELS) << view;
        }
    }
}

TEST(SceneCamera, ASceneWithoutASizeHasACameraToo) {
    DisplayScene scene;
    scene.eyes = {{"eye point", {1, 2, 3}}};
    for (const std::string& view : SceneCamera::views()) {
        const SceneCamera camera(scene, view, WIDTH, HEIGHT);
        const auto place = camera.place({1, 2, 3});
        ASSERT_TRUE(place.has_value()) << view;
        EXPECT_NEAR((*place)[0], WIDTH / 2, 1e-9);
        EXPECT_NEAR((*place)[1], HEIGHT / 2, 1e-9);
        EXPECT_TRUE(std::isfinite(camera.magnification())) << view;
    }
}

}  // namespace
