// The example displays whose targets are not placed by screen areas. Every expectation is worked out here from the
// numbers in the files.
#include "ProgramRun.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <string>
#include <utility>
#include <vector>

namespace {

using testing::HasSubstr;
using testing::Not;
using Json = nlohmann::json;
using Vector = std::array<double, 3>;

/// Targets are written with enough digits for this, in metres.
constexpr double WRITTEN = 1e-9;

std::string file(const std::string& example) {
    return sourceFolder() + "/examples/" + example + "/display.xml";
}

/// The channels of an example by name, with a grid of so many targets.
Json channels(const std::string& example, const std::string& grid = "16x10") {
    const ProgramRun run = runScreenManager({"targets", file(example), "--format", "json", "--quiet", "--grid", grid});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_EQ(run.errors, "");
    Json byName;
    const Json document = Json::parse(run.output);
    for (const Json& channel : document["channels"]) {
        byName[channel["name"].get<std::string>()] = channel;
    }
    return byName;
}

Vector vectorOf(const Json& point) {
    return {point[0], point[1], point[2]};
}

double radians(double degrees) {
    return degrees * std::numbers::pi / 180;
}

Vector minus(const Vector& a, const Vector& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

double inner(const Vector& a, const Vector& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

double length(const Vector& a) {
    return std::sqrt(inner(a, a));
}

/// The distance of a point from the half-line from `from` along `direction`.
double distance(const Vector& from, const Vector& direction, const Vector& point) {
    const Vector offset = minus(point, from);
    const double along = std::max(0.0, inner(offset, direction) / inner(direction, direction));
    return length(minus(offset, {along * direction[0], along * direction[1], along * direction[2]}));
}

/// The edges of a frustum in degrees, turned to the right by `heading`.
struct Frustum {
    double left, right, bottom, top, heading;

    /// The direction through target (column, row) of a grid of 16 x 10.
    [[nodiscard]] Vector direction(int column, int row) const {
        const double across =
            std::tan(radians(left)) + (std::tan(radians(right)) - std::tan(radians(left))) * column / 15;
        const double up = std::tan(radians(top)) - (std::tan(radians(top)) - std::tan(radians(bottom))) * row / 9;
        const double cosine = std::cos(radians(heading));
        const double sine = std::sin(radians(heading));
        return {cosine * across + sine, cosine - sine * across, up};
    }
};

/// Expects a whole grid, each target on its ray.
void expectOnRays(const Json& channel, const Vector& eye, const Frustum& frustum) {
    ASSERT_EQ(channel["grid"].size(), 160U) << channel["name"];
    for (const Json& target : channel["grid"]) {
        const Vector direction = frustum.direction(target["column"], target["row"]);
        ASSERT_LE(distance(eye, direction, vectorOf(target["point"])), WRITTEN) << target;
    }
}

TEST(LocatorExamples, AreAllRight) {
    // A part of the light of the lenses passes above and below the cylinder.
    for (const auto& [example, placed] :
         {std::pair{"spherical-dome", "\n640 of 640 targets placed, 256 of 256 samples"},
          {"collimated", "\n480 of 480 targets placed, 192 of 192 samples"},
          {"warped-wall", "\n320 of 320 targets placed, 120 of 120 samples"},
          {"lens-cylinder", "\n449 of 480 targets placed, 192 of 192 samples"},
          {"mesh-rays", "\n320 of 320 targets placed, 128 of 128 samples"}}) {
        const ProgramRun check = runScreenManager({"check", file(example)});
        EXPECT_EQ(check.exitCode, 0) << check.output;
        EXPECT_THAT(check.output, HasSubstr("No faults."));
        const ProgramRun targets = runScreenManager({"targets", file(example)});
        EXPECT_EQ(targets.exitCode, 0) << targets.errors;
        EXPECT_THAT(targets.errors, HasSubstr(placed)) << example;
    }
}

TEST(LocatorExamples, TargetsOfTheDomeLieOnItWhereRaysFromTheSeatMeetIt) {
    Json dome = channels("spherical-dome");
    const Vector seat{0.3, -0.5, 1.2};
    expectOnRays(dome["Left"], seat, {-35, 35, -22, 30, -55});
    expectOnRays(dome["Centre"], seat, {-35, 35, -22, 30, 0});
    expectOnRays(dome["Right"], seat, {-35, 35, -22, 30, 55});
    for (const char* name : {"Left", "Centre", "Right", "Top"}) {
        for (const Json& target : dome[name]["grid"]) {
            ASSERT_NEAR(length(minus(vectorOf(target["point"]), {0, 0, 1.6})), 5, WRITTEN) << name;
        }
    }
}

// Twelve pictures of 34 degrees stand 30 degrees apart, the first and the last one to both sides of the seam.
TEST(LocatorExamples, TheClosedCylinderIsSoundWithoutAnyRemark) {
    const ProgramRun check = runScreenManager({"check", "--strict", file("closed-cylinder")});
    EXPECT_EQ(check.exitCode, 0);
    EXPECT_THAT(check.output, testing::EndsWith("\nNo faults.\n"));
    int number = 0;
    for (const Json& channel : channels("closed-cylinder")) {
        ++number;
        EXPECT_EQ(channel["grid"].size(), 132U) << "the first and the last row pass the rims, but for their ends";
        const std::string name = channel["name"];
        const double heading = -195 + 30 * std::stod(name.substr(name.find(' ')));
        const Frustum frustum{-17, 17, -10.82, 10.82, heading};
        for (const Json& target : channel["grid"]) {
            const Vector place = vectorOf(target["point"]);
            ASSERT_NEAR(std::hypot(place[0], place[1]), 6, WRITTEN);
            ASSERT_LE(std::abs(place[2] - 1.5), 1.1 + WRITTEN);
            const Vector direction = frustum.direction(target["column"], target["row"]);
            ASSERT_LE(distance({0, 0, 1.5}, direction, place), WRITTEN) << name;
        }
    }
    EXPECT_EQ(number, 12);
}

TEST(LocatorExamples, TheClosedCylinderIsLitAllAroundAndOverlapsAtItsSeamToo) {
    const ProgramRun run = runScreenManager({"coverage", file("closed-cylinder"), "--json", "--quiet"});
    const Json coverage = Json::parse(run.output);
    EXPECT_EQ(coverage["litBy"][0]["area"], 0.0);
    // Where two pictures meet, each reaches 2 degrees further; the wall is cut where its rims pass a picture.
    double expected = 0;
    constexpr int STRIPS = 4000;
    for (int i = 0; i < STRIPS; ++i) {
        const double azimuth = 15 + 2 * (i + 0.5) / STRIPS;
        const double half = std::min(1.1, 6 * std::tan(radians(10.82)) * std::cos(radians(azimuth)));
        expected += 2 * 6 * radians(2.0 / STRIPS) * 2 * half;
    }
    ASSERT_EQ(coverage["overlaps"].size(), 12U);
    bool isSeamPassed = false;
    for (const Json& overlap : coverage["overlaps"]) {
        EXPECT_NEAR(overlap["area"], expected, 1e-3 * expected);
        isSeamPassed =
            isSeamPassed || (overlap["first"]["name"] == "Channel 1" && overlap["second"]["name"] == "Channel 12");
    }
    EXPECT_TRUE(isSeamPassed);
}

TEST(LocatorExamples, BothNeighboursOfTheSeamShowIt) {
    const double beside = 0.5 * std::tan(radians(15)) / std::tan(radians(17));
    for (const auto& [name, u] : {std::pair{"Channel 1", 0.5 - beside}, std::pair{"Channel 12", 0.5 + beside}}) {
        const ProgramRun run = runScreenManager(
            {"map", file("closed-cylinder"), "--channel", name, "--to", "channel", "--point", "0,-6,1.5", "--quiet"});
        const std::string table = tableOf(run.output);
        ASSERT_THAT(table, testing::StartsWith("x,y,z,u,v,mapped\n0,-6,1.5,"));
        EXPECT_NEAR(std::stod(table.substr(table.find(",1.5,") + 5)), u, WRITTEN) << name;
    }
}

TEST(LocatorExamples, TargetsOfTheCollimatedDisplayAreSeenInTheMirror) {
    const Vector eye{0, -0.3, -0.5};
    Json display = channels("collimated");
    ASSERT_EQ(display["Centre"]["grid"].size(), 160U);
    for (const Json& target : display["Centre"]["grid"]) {
        Vector seen = Frustum{-26, 26, -18, 18, 0}.direction(target["column"], target["row"]);
        // The table turns headings by 0.5 degrees in 90.
        const double heading = std::atan2(seen[0], seen[1]) * 89.5 / 90;
        const double level = std::hypot(seen[0], seen[1]);
        seen = {level * std::sin(heading), level * std::cos(heading), seen[2]};
        // To the sphere of the mirror, 3 m around the origin, from inside.
        const double a = inner(seen, seen);
        const double b = inner(eye, seen);
        const double t = (-b + std::sqrt(b * b - a * (inner(eye, eye) - 9))) / a;
        const Vector mirror{eye[0] + t * seen[0], eye[1] + t * seen[1], eye[2] + t * seen[2]};
        // The component along the normal changes its sign.
        const double across = 2 * inner(seen, mirror) / 9;
        const Vector reflected = minus(seen, {across * mirror[0], across * mirror[1], across * mirror[2]});

        const Vector point = vectorOf(target["point"]);
        EXPECT_NEAR(length(minus(point, {0, 0, 1.9})), 1.6, WRITTEN) << "on the screen";
        ASSERT_LE(distance({mirror[0], mirror[1], mirror[2] + 1.9}, reflected, point), WRITTEN) << target;
    }
}

TEST(LocatorExamples, TargetsOfTheWarpedWallLieAtTheNodesOfItsMaps) {
    Json wall = channels("warped-wall", "9x6");
    for (const auto& [name, middle] : {std::pair("Left", 0.28), std::pair("Right", 0.72)}) {
        ASSERT_EQ(wall[name]["grid"].size(), 54U);
        for (const Json& target : wall[name]["grid"]) {
            const double x = target["column"].get<int>() / 4.0 - 1;
            const double y = target["row"].get<int>() / 2.5 - 1;
            const double s = middle + 0.28 * x * (1 - 0.06 * y * y);
            const double t = 0.5 + 0.48 * y * (1 - 0.05 * x * x);
            // The file has six decimals, on a wall of four metres.
            constexpr double PLACES = 4 * 0.5e-6;
            EXPECT_NEAR(target["point"][0].get<double>(), -2 + 4 * s, PLACES + WRITTEN);
            EXPECT_EQ(target["point"][1].get<double>(), 5);
            EXPECT_NEAR(target["point"][2].get<double>(), 0.5 + 2 * t, PLACES + WRITTEN);
        }
    }
}

TEST(LocatorExamples, TheMapsOfTheWarpedWallAreThoseOfItsGenerator) {
    for (const char* channel : {"left", "right"}) {
        const std::string folder = sourceFolder() + "/examples/warped-wall/";
        const ProgramRun compared = runProgram(
            "/bin/sh", {"-c", "sh '" + folder + "generate.sh' " + channel + " | cmp - '" + folder + channel + ".map'"});
        EXPECT_EQ(compared.exitCode, 0) << compared.output << compared.errors;
    }
}

TEST(LocatorExamples, OutlinesOfLensesLieOnTheCylinderInsideTheViewOfEach) {
    Json cylinder = channels("lens-cylinder");
    expectOnRays(cylinder["Left"], {-0.4, 0.3, 1.9}, {-25, 25, -15, 13, -50});
    for (const char* name : {"Centre", "Right"}) {
        ASSERT_EQ(cylinder[name]["boundary"].size(), 64U);
        for (const Json& point : cylinder[name]["boundary"]) {
            ASSERT_NEAR(std::hypot(point[0].get<double>(), point[1].get<double>()), 3.5, WRITTEN);
        }
        EXPECT_GE(cylinder[name]["grid"].size(), 140U) << "through the layout map";
        for (const Json& target : cylinder[name]["grid"]) {
            ASSERT_NEAR(std::hypot(target["point"][0].get<double>(), target["point"][1].get<double>()), 3.5, WRITTEN);
        }
    }
    // Equal angles: the outline runs along yaw = 28 degrees to either side and pitch = 15 up and down.
    for (const Json& point : cylinder["Centre"]["boundary"]) {
        const Vector seen = minus(vectorOf(point), {0, 0.2, 1.9});
        const double yaw = std::atan2(seen[0], seen[1]);
        const double pitch = std::atan2(seen[2], std::hypot(seen[0], seen[1]));
        EXPECT_NEAR(std::max(std::abs(yaw) / radians(28), std::abs(pitch) / radians(15)), 1, 1e-9);
    }
}

TEST(LocatorExamples, TargetsOnTheMeshLieWhereRaysFromTheProjectorsMeetTheMeasuredWall) {
    Json wall = channels("mesh-rays");
    expectOnRays(wall["Left"], {-0.6, 0, 1.2}, {-20, 20, -12, 12, -26});
    expectOnRays(wall["Right"], {0.6, 0, 1.2}, {-20, 20, -12, 12, 26});
    double farthest = 0;
    for (const Json& target : wall["Left"]["grid"]) {
        const double offset = std::hypot(target["point"][0].get<double>(), target["point"][1].get<double>()) - 4;
        ASSERT_LT(std::abs(offset), 0.05) << "built a few centimetres off its radius";
        farthest = std::max(farthest, std::abs(offset));
    }
    EXPECT_GT(farthest, 0.01) << "the measured wall, not the designed one";
}

/// A small picture whose rays are bent by a table of headings and reflected in a mirror.
constexpr const char* BENT_DISPLAY = R"(<?xml version="1.0" encoding="UTF-8"?>
<Display version="1" lengthUnit="m" angleUnit="deg">
  <Units native="m"/>
  <Screen shape="Sphere">
    <EyePoint x="0" y="-0.3" z="-0.5"/>
    <Centre x="0" y="0" z="1.9"/>
    <Radius value="1.6"/>
    <Azimuth min="-120" max="120"/>
    <Elevation min="-60" max="60"/>
  </Screen>
  <TargetData type="SphericalCollimated">
    <Mirror radius="3">
      <Position x="0" y="0" z="1.9"/>
    </Mirror>
    <YawTable>
      <Pair measured="-90" corrected="-89.5"/>
      <Pair measured="90" corrected="89.5"/>
    </YawTable>
  </TargetData>
  <Projectors>
    <Projector id="020000000601" section="P1">
      <Name>Centre</Name>
      <Device><Device type="PJLink" mac="02:00:00:00:06:01" host="192.0.2.11" port="4352"/></Device>
      <Resolution width="64" height="40"/>
      <Orientation z="0" x="0" y="0"/>
      <Frustum left="-26" right="26" bottom="-18" top="18"/>
      <Position x="0" y="-0.3" z="-0.5"/>
    </Projector>
  </Projectors>
</Display>
)";

// A record for each ray shows how a few targets came about; where a command bends a million, it hides everything else.
TEST(LocatorExamples, BentRaysAreRecordedOneByOneOnlyWhereTheyAreFew) {
    const TemporaryFolder folder;
    const std::string display = folder.write("display.xml", BENT_DISPLAY);
    const auto records = [&](const std::string& command, const std::vector<std::string>& options) {
        std::vector<std::string> arguments{"--verbose", "--log", folder.file(command + ".log"), command, display};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const ProgramRun run = runScreenManager(arguments);
        EXPECT_EQ(run.exitCode, 0) << command << ": " << run.errors;
        const std::string log = folder.read(command + ".log");
        EXPECT_THAT(log, HasSubstr("\tINFO\t")) << command;
        return log;
    };
    EXPECT_THAT(records("targets", {"--grid", "2x2"}), HasSubstr(" mapped to "));
    EXPECT_THAT(records("check", {}), Not(HasSubstr(" mapped to ")));
    EXPECT_THAT(records("coverage", {}), Not(HasSubstr(" mapped to ")));
    EXPECT_THAT(records("export", {"-o", folder.file("export")}), Not(HasSubstr(" mapped to ")));
    EXPECT_THAT(records("view", {"-o", folder.file("view.html")}), Not(HasSubstr(" mapped to ")));
    EXPECT_THAT(records("picture", {"-o", folder.file("picture.png"), "--size", "200x200"}),
                Not(HasSubstr(" mapped to ")));
}

}  // namespace
