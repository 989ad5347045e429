#include "DisplayReport/coverage/ParameterLight.h"

#include "KelvoScreen/FlatScreen.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using Veltrani::DisplayReport::AreaLight;
using Veltrani::DisplayReport::SurfacePoint;

SurfacePoint at(double s, double t) {
    return {{s, 0, t}, {s, t}, true};
}

/// On the unit square (s, 0, t).
AreaLight area(double left, double right, double bottom, double top) {
    return {PlanarTargetLocatorParams(left, right, bottom, top), std::make_shared<FlatScreen>()};
}

TEST(AreaLight, LandsInItsRectangleWithTheBottomBelow) {
    const AreaLight light = area(0.2, 0.6, 0.1, 0.9);
    const auto corner = light.landingOf({0.0, 0.0});
    ASSERT_TRUE(corner.hits);
    EXPECT_EQ(corner.on.place, (Point<double, 3>{0.2, 0, 0.1}));
    EXPECT_TRUE(corner.on.hasParameters);
    EXPECT_LE(norm(light.landingOf({1.0, 0.5}).on.place - Point<double, 3>{0.6, 0, 0.5}), 1e-15);
}

TEST(AreaLight, LightsItsRectangleWithTheEdges) {
    const AreaLight light = area(0.2, 0.6, 0.1, 0.9);
    for (const auto& point : {at(0.2, 0.1), at(0.6, 0.9), at(0.4, 0.5)}) {
        EXPECT_TRUE(light.lights(point)) << point.parameters[0];
    }
    for (const auto& point : {at(0.19, 0.5), at(0.61, 0.5), at(0.4, 0.09), at(0.4, 0.91)}) {
        EXPECT_FALSE(light.lights(point)) << point.parameters[0] << ' ' << point.parameters[1];
    }
}

TEST(AreaLight, AMirroredOneLightsAsMuch) {
    const AreaLight light = area(0.6, 0.2, 0.9, 0.1);
    EXPECT_TRUE(light.lights(at(0.3, 0.2)));
    EXPECT_FALSE(light.lights(at(0.1, 0.2)));
    EXPECT_EQ(light.landingOf({0.0, 0.0}).on.parameters, (Point<double, 2>{0.6, 0.9}));
}

TEST(AreaLight, WhatLiesBesideTheScreenMisses) {
    const AreaLight light = area(0.5, 1.5, 0, 1);
    EXPECT_TRUE(light.landingOf({0.5, 0.5}).hits);
    EXPECT_FALSE(light.landingOf({0.51, 0.5}).hits);
}

TEST(AreaLight, APointWithoutCoordinatesIsNotLit) {
    const AreaLight light = area(0, 1, 0, 1);
    EXPECT_FALSE(light.lights({{0.5, 0, 0.5}, {0.5, 0.5}, false}));
    EXPECT_FALSE(light.lights(at(std::numeric_limits<double>::quiet_NaN(), 0.5)));
}

}  // namespace
