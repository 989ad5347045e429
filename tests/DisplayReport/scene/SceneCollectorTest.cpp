#include "DisplayReport/scene/SceneCollector.h"

#include "DisplayReport/channels/ScreenLoader.h"
#include "DisplayReport/targets/TargetPlacer.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/TargetLocatorManager.h"
#include "support/Displays.h"
#include "support/LogTrap.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

using namespace Veltrani::DisplayReport;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using P3 = Point<double, 3>;

class SceneCollectorTest : public testing::Test {
protected:
    ~SceneCollectorTest() override {
        TargetLocatorManager::deleteInstance();
        ScreenManager::deleteInstance();
    }

    static DisplayScene collect(XMLConfigFile& config, const SceneCollector::Limits& limits = {}) {
        const auto faults = ScreenLoader::load(config);
        const TargetSurvey survey = TargetPlacer({3, 2, 2}).place(config);
        return SceneCollector(limits).collect("title", config, survey, faults);
    }

    LogTrap m_log;
};

TEST_F(SceneCollectorTest, AFlatDisplayHasItsScreenItsTargetsAndNoFrustum) {
    const auto config = displays::parsed(displays::FLAT, displays::projector("A", displays::WHOLE_AREA));
    const DisplayScene scene = collect(*config);
    EXPECT_TRUE(scene.complete);
    EXPECT_THAT(scene.notes, IsEmpty());
    EXPECT_EQ(scene.unit, "m");
    ASSERT_EQ(scene.surfaces.size(), 1U);
    EXPECT_EQ(scene.surfaces[0].name, "content");
    EXPECT_EQ(scene.core().minimum(), (P3{-2, 5, 0}));
    EXPECT_EQ(scene.core().maximum(), (P3{2, 5, 2}));
    ASSERT_EQ(scene.channels.size(), 1U);
    EXPECT_EQ(scene.channels[0].targets.grid.size(), 6U);
    EXPECT_FALSE(scene.channels[0].frustum.has_value());
    EXPECT_EQ(scene.channels[0].beyond, std::vector<bool>(8, false)) << "along the very edges of the screen";
    EXPECT_EQ(scene.unitInMillimetres, 1000);
    EXPECT_EQ(scene.channels[0].width, 1920);
    ASSERT_EQ(scene.eyes.size(), 1U);
    EXPECT_EQ(scene.eyes[0].point, P3());
}

TEST_F(SceneCollectorTest, AMirrorAndItsEyeStandInTheWorld) {
    const auto config = displays::parsed(
        displays::SPHERE, displays::projector("A", "<Frustum left='-20' right='20' bottom='-20' top='20'/>"),
        "<TargetData type='SphericalCollimated'><TargetPosition x='0' y='-0.3' z='-0.5'/><Mirror radius='3'><Position "
        "x='0' y='0' z='1.5'/></Mirror></TargetData>");
    const DisplayScene scene = collect(*config);
    ASSERT_TRUE(scene.mirror.has_value());
    EXPECT_EQ(scene.mirror->centre, (P3{0, 0, 1.5}));
    EXPECT_EQ(scene.mirror->radius, 3);
    EXPECT_EQ(scene.eyes.at(0).point, (P3{0, -0.3, 1.0})) << "the eye is given from the middle of the mirror";
    EXPECT_TRUE(scene.channels.at(0).frustum.has_value());
}

// A picture that reaches past the rim of a dome: its outline follows the sphere below.
TEST_F(SceneCollectorTest, AnOutlinePastTheEdgeOfTheScreenIsMarked) {
    const auto config = displays::parsed(
        "<Screen shape='Sphere'><Radius value='5'/><Azimuth min='-180' max='180'/><Elevation min='0' "
        "max='90'/></Screen>",
        displays::projector("A", "<Frustum left='-20' right='20' bottom='-10' top='30'/>"),
        "<TargetData type='Spherical'/>");
    const DisplayScene scene = collect(*config);
    const SceneChannel& channel = scene.channels.at(0);
    ASSERT_EQ(channel.beyond.size(), channel.targets.boundary.size());
    int beyond = 0;
    for (std::size_t i = 0; i < channel.beyond.size(); ++i) {
        EXPECT_EQ(channel.beyond[i], channel.targets.boundary[i][2] < 0) << i;
        beyond += channel.beyond[i] ? 1 : 0;
    }
    EXPECT_GE(beyond, 2);
    EXPECT_LT(beyond, static_cast<int>(channel.beyond.size()));
    EXPECT_THAT(scene.notes, Contains(HasSubstr("past the edge of the screen")));
    EXPECT_TRUE(scene.complete) << "that is no fault";
}

// The same dome: where the outline is dashed already the rim beside it is left out, where there is no outline it is
// dashed, and the rest of it is drawn in either case.
TEST_F(SceneCollectorTest, PastTheEdgeOfTheScreenOneDashedLineIsDrawnOfEachChannel) {
    const auto config = displays::parsed(
        "<Screen shape='Sphere'><Radius value='5'/><Azimuth min='-180' max='180'/><Elevation min='0' "
        "max='90'/></Screen>",
        displays::projector("A", "<Frustum left='-20' right='20' bottom='-10' top='30'/>"),
        "<TargetData type='Spherical'/>");
    const auto looksOf = [&](int samples) {
        EXPECT_TRUE(ScreenLoader::load(*config).empty());
        const TargetSurvey survey = TargetPlacer(TargetPlan{3, 2, samples}).place(*config);
        return SceneCollector().collect("display.xml", *config, survey, {}).channels.at(0);
    };
    const SceneChannel outlined = looksOf(8);
    const SceneChannel bare = looksOf(0);
    ASSERT_TRUE(outlined.frustum && bare.frustum);
    ASSERT_EQ(outlined.rimPieces.size(), outlined.frustum->rim.size());
    ASSERT_EQ(bare.rimPieces.size(), bare.frustum->rim.size());
    const auto count = [](const SceneChannel& channel, PieceLook look) {
        return std::count(channel.rimPieces.begin(), channel.rimPieces.end(), look);
    };
    EXPECT_GT(count(outlined, PieceLook::NONE), 0);
    EXPECT_EQ(count(outlined, PieceLook::DASHED), 0);
    EXPECT_EQ(count(bare, PieceLook::DASHED), count(outlined, PieceLook::NONE));
    EXPECT_EQ(count(bare, PieceLook::NONE), 0);
    EXPECT_GT(count(bare, PieceLook::WHOLE), 0);
    EXPECT_EQ(count(bare, PieceLook::WHOLE), count(outlined, PieceLook::WHOLE));
}

TEST_F(SceneCollectorTest, WhatIsMissingIsSaid) {
    const auto config = XMLConfigFile::parse("<Display version='1'><Units native='m'/></Display>", "display.xml");
    const DisplayScene scene = collect(*config);
    EXPECT_FALSE(scene.complete);
    EXPECT_THAT(scene.notes, Contains(HasSubstr("describes no screen")));
    EXPECT_THAT(scene.notes, Contains(HasSubstr("no projectors")));
    EXPECT_EQ(scene.frame().size(), (P3{1, 1, 1}));
}

TEST_F(SceneCollectorTest, AChannelThatHitsNothingIsSaid) {
    const auto config = displays::parsed(
        displays::FLAT, displays::projector("A", "<ScreenArea left='5' right='6' bottom='0' top='1'/>"));
    const DisplayScene scene = collect(*config);
    EXPECT_FALSE(scene.complete);
    EXPECT_THAT(scene.notes, Contains(HasSubstr("channel A: ")));
}

TEST_F(SceneCollectorTest, AMeshThatIsThinnedIsSaid) {
    const TemporaryFolder folder;
    std::string mesh;
    for (int row = 0; row <= 20; ++row) {
        for (int column = 0; column <= 20; ++column) {
            mesh += "v " + std::to_string(column) + " 0 " + std::to_string(row) + "\n";
        }
    }
    for (int row = 0; row < 20; ++row) {
        for (int column = 0; column < 20; ++column) {
            const int a = row * 21 + column + 1;
            mesh += "f " + std::to_string(a) + " " + std::to_string(a + 1) + " " + std::to_string(a + 22) + " " +
                    std::to_string(a + 21) + "\n";
        }
    }
    const std::string file = folder.write("wall.obj", mesh);
    const auto config = displays::parsed("<Screen shape='Mesh' fileUnit='m'><ContentMesh file='" + file +
                                             "'/><ImportOrientation up='Z' forward='Y'/></Screen>",
                                         "");
    const DisplayScene scene = collect(*config, {100, 100});
    ASSERT_EQ(scene.surfaces.size(), 1U);
    EXPECT_LE(scene.surfaces[0].triangles.size(), 100U);
    EXPECT_EQ(scene.surfaces[0].trianglesOfMesh, 800U);
    EXPECT_THAT(scene.notes, Contains(HasSubstr("of its 800 triangles")));
}

TEST_F(SceneCollectorTest, PlacesThatAreNoneAreLeftOut) {
    const auto config = displays::parsed(displays::FLAT, displays::projector("A", displays::WHOLE_AREA));
    ASSERT_THAT(ScreenLoader::load(*config), IsEmpty());
    TargetSurvey survey = TargetPlacer({3, 2, 2}).place(*config);
    survey.channels[0].grid[0].point[1] = std::numeric_limits<double>::quiet_NaN();
    survey.channels[0].grid[1].point[0] = 1e9;
    survey.channels[0].boundary[0][2] = std::numeric_limits<double>::infinity();
    const DisplayScene scene = SceneCollector().collect("title", *config, survey, {});
    EXPECT_EQ(scene.channels[0].targets.grid.size(), 4U);
    EXPECT_EQ(scene.channels[0].targets.boundary.size(), 7U);
    EXPECT_THAT(scene.notes,
                ElementsAre(HasSubstr("2 targets are not places in space"), HasSubstr("1 targets lies too far")));
    EXPECT_EQ(scene.frame().maximum()[0], 2.0);
}

TEST_F(SceneCollectorTest, AProjectorWithoutAResolutionIsSaid) {
    const auto config =
        displays::parsed(displays::FLAT, "<Projector id='A'><Name>A</Name>" + displays::WHOLE_AREA + "</Projector>");
    const DisplayScene scene = collect(*config);
    EXPECT_FALSE(scene.complete);
    EXPECT_THAT(scene.notes, ElementsAre("channel A: its picture has no size: 0 x 0 pixels"));
    EXPECT_EQ(scene.channels.at(0).targets.grid.size(), 6U) << "its targets are there all the same";
}

TEST_F(SceneCollectorTest, ADisplayFarFromTheOriginIsWhole) {
    const auto config = displays::parsed(
        "<Screen shape='Flat'><EyePoint x='1e9' y='1e9' z='1e9'/><Centre x='1e9' y='1000000005' z='1e9'/><Size "
        "width='4' height='2'/></Screen>",
        displays::projector("A", displays::WHOLE_AREA));
    const DisplayScene scene = collect(*config);
    EXPECT_TRUE(scene.complete);
    EXPECT_EQ(scene.core().size(), (P3{4, 0, 2}));
    EXPECT_EQ(scene.frame().size(), (P3{4, 5, 2}));
}

TEST_F(SceneCollectorTest, ADisplayBeyondAllNumbersIsSaidAndNotDrawn) {
    const auto config =
        displays::parsed("<Screen shape='Flat'><Centre x='1e300' y='5' z='1'/><Size width='4' height='2'/></Screen>",
                         displays::projector("A", displays::WHOLE_AREA));
    const DisplayScene scene = collect(*config);
    EXPECT_FALSE(scene.complete);
    EXPECT_THAT(scene.surfaces, IsEmpty());
    EXPECT_THAT(scene.notes,
                ElementsAre(HasSubstr("the content screen has no surface"), HasSubstr("are not places in space")));
}

TEST_F(SceneCollectorTest, TooManyTargetsAreThinnedByColumnsAndRowsAndItIsSaid) {
    const auto config = displays::parsed(displays::FLAT, displays::projector("A", displays::WHOLE_AREA) +
                                                             displays::projector("B", displays::WHOLE_AREA));
    ASSERT_TRUE(ScreenLoader::load(*config).empty());
    const TargetSurvey survey = TargetPlacer({30, 20, 25}).place(*config);
    SceneCollector::Limits limits;
    limits.targets = 150;
    limits.samples = 60;
    const DisplayScene scene = SceneCollector(limits).collect("title", *config, survey, {});
    // Of 1200 targets every third leaves 2 x 70; of 200 samples every fourth 2 x 25.
    EXPECT_EQ(scene.targetStep, 3);
    EXPECT_EQ(scene.outlineStep, 4);
    for (const SceneChannel& channel : scene.channels) {
        EXPECT_EQ(channel.targets.grid.size(), 70U);
        EXPECT_EQ(channel.placed, 600U);
        EXPECT_EQ(channel.targets.boundary.size(), 25U);
        EXPECT_EQ(channel.samples, 100U);
        for (const GridTarget& target : channel.targets.grid) {
            EXPECT_EQ(target.column % 3 + target.row % 3, 0);
        }
    }
    EXPECT_THAT(scene.notes, ElementsAre("140 of 1,200 targets are shown, every 3rd column and row",
                                         "outlines are shown with every 4th of their samples"));
    EXPECT_TRUE(scene.complete) << "nothing is wrong";
}

TEST_F(SceneCollectorTest, AllTargetsWithinTheLimitAreShown) {
    const auto config = displays::parsed(displays::FLAT, displays::projector("A", displays::WHOLE_AREA));
    SceneCollector::Limits limits;
    limits.targets = 6;
    limits.samples = 8;
    const DisplayScene scene = collect(*config, limits);
    EXPECT_THAT(scene.notes, IsEmpty());
    EXPECT_EQ(scene.channels[0].targets.grid.size(), 6U);
    EXPECT_EQ(scene.targetStep, 1);
    EXPECT_EQ(scene.outlineStep, 1);
}

}  // namespace
