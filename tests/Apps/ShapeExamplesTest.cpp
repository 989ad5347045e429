// The example displays of the shapes that are given by numbers: targets must satisfy the equation of each, written down
// here from the numbers in the files.
#include "ProgramRun.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <vector>

namespace {

using testing::HasSubstr;
using Place = std::array<double, 3>;

/// Targets are written with enough digits for this, in metres.
constexpr double WRITTEN = 1e-9;

std::string file(const std::string& example) {
    return sourceFolder() + "/examples/" + example + "/display.xml";
}

/// All targets of a kind, "grid" or "boundary", of all channels.
std::vector<Place> targets(const std::string& example, const std::string& kind) {
    const ProgramRun run = runScreenManager({"targets", file(example), "--format", "json", "--quiet"});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_EQ(run.errors, "");
    std::vector<Place> places;
    const auto document = nlohmann::json::parse(run.output);
    for (const auto& channel : document["channels"]) {
        for (const auto& target : channel[kind]) {
            const auto& point = target.is_array() ? target : target["point"];
            places.push_back({point[0], point[1], point[2]});
        }
    }
    return places;
}

double degrees(double radians) {
    return radians * 180 / std::numbers::pi;
}

/// The distance of a point from a polyline.
double distance(const std::vector<Place>& rail, const Place& point) {
    double nearest = 1e9;
    for (std::size_t i = 0; i + 1 < rail.size(); ++i) {
        double length2 = 0;
        double along = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            length2 += (rail[i + 1][k] - rail[i][k]) * (rail[i + 1][k] - rail[i][k]);
            along += (point[k] - rail[i][k]) * (rail[i + 1][k] - rail[i][k]);
        }
        const double position = std::clamp(along / length2, 0.0, 1.0);
        double away2 = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            const double away = rail[i][k] + position * (rail[i + 1][k] - rail[i][k]) - point[k];
            away2 += away * away;
        }
        nearest = std::min(nearest, std::sqrt(away2));
    }
    return nearest;
}

TEST(ShapeExamples, AreAllRight) {
    for (const char* example : {"dome", "cylinder", "cockpit"}) {
        const ProgramRun run = runScreenManager({"check", file(example)});
        EXPECT_EQ(run.exitCode, 0) << run.output;
        EXPECT_THAT(run.output, HasSubstr("No faults."));
        EXPECT_EQ(run.errors, "");
    }
}

TEST(ShapeExamples, TargetsOfTheDomeLieOnItsTiltedSphere) {
    const std::vector<Place> grid = targets("dome", "grid");
    ASSERT_EQ(grid.size(), 6U * 16 * 10);
    double lowest = 90;
    double highest = -90;
    double farthestAside = 0;
    for (const auto& [x, y, z] : grid) {
        ASSERT_NEAR(std::sqrt(x * x + y * y + (z - 1.6) * (z - 1.6)), 5, WRITTEN);
        // Tilted back by 10 degrees, in the frame of the dome.
        const double tilt = std::numbers::pi / 18;
        const double forward = std::cos(tilt) * y + std::sin(tilt) * (z - 1.6);
        const double up = std::cos(tilt) * (z - 1.6) - std::sin(tilt) * y;
        lowest = std::min(lowest, degrees(std::asin(up / 5)));
        highest = std::max(highest, up / 5);
        if (std::hypot(x, forward) > 1e-3) {
            farthestAside = std::max(farthestAside, std::abs(degrees(std::atan2(x, forward))));
        }
    }
    EXPECT_NEAR(lowest, -15, 1e-6);
    EXPECT_NEAR(highest, 1, 1e-12) << "the pole";
    EXPECT_NEAR(farthestAside, 90, 1e-6);
}

TEST(ShapeExamples, TargetsOfTheCylinderLieOnItsWall) {
    const std::vector<Place> grid = targets("cylinder", "grid");
    ASSERT_EQ(grid.size(), 5U * 16 * 10);
    double farthestAside = 0;
    double lowest = 9;
    double highest = -9;
    for (const auto& [x, y, z] : grid) {
        ASSERT_NEAR(std::hypot(x, y), 3.5, WRITTEN);
        farthestAside = std::max(farthestAside, std::abs(degrees(std::atan2(x, y))));
        lowest = std::min(lowest, z);
        highest = std::max(highest, z);
    }
    EXPECT_NEAR(farthestAside, 110, 1e-6);
    EXPECT_NEAR(lowest, 0.5, WRITTEN);
    EXPECT_NEAR(highest, 2.7, WRITTEN);
}

TEST(ShapeExamples, OutlinesInTheCockpitFollowTheRails) {
    const std::vector<Place> lower{{-1.477, -0.295, 0.473}, {-1.477, 0.295, 0.473}, {-1.299, 0.850, 0.494},
                                   {-0.964, 1.302, 0.534},  {-0.513, 1.597, 0.588}, {0.0, 1.700, 0.650},
                                   {0.513, 1.597, 0.588},   {0.964, 1.302, 0.534},  {1.299, 0.850, 0.494},
                                   {1.477, 0.295, 0.473},   {1.477, -0.295, 0.473}};
    const std::vector<Place> upper{{-1.920, -0.206, 2.094}, {-1.920, 0.506, 2.094}, {-1.689, 1.175, 2.120},
                                   {-1.253, 1.720, 2.160},  {-0.667, 2.076, 2.196}, {0.0, 2.200, 2.210},
                                   {0.667, 2.076, 2.196},   {1.253, 1.720, 2.160},  {1.689, 1.175, 2.120},
                                   {1.920, 0.506, 2.094},   {1.920, -0.206, 2.094}};
    int onLower = 0;
    int onUpper = 0;
    for (const Place& place : targets("cockpit", "boundary")) {
        onLower += distance(lower, place) < WRITTEN ? 1 : 0;
        onUpper += distance(upper, place) < WRITTEN ? 1 : 0;
    }
    EXPECT_GE(onLower, 4 * 16);
    EXPECT_GE(onUpper, 4 * 16);
    EXPECT_EQ(targets("cockpit", "grid").size(), 4U * 16 * 10);
}

}  // namespace
