#include "DisplayReport/targets/TargetPlacer.h"

#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/TargetLocatorManager.h"
#include "support/Displays.h"
#include "support/LogTrap.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace Veltrani::DisplayReport;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;
using P3 = Point<double, 3>;

class TargetPlacerTest : public testing::Test {
protected:
    ~TargetPlacerTest() override {
        TargetLocatorManager::deleteInstance();
        ScreenManager::deleteInstance();
    }

    static TargetSurvey place(XMLConfigFile& config, const TargetPlan& plan = {3, 2, 2}) {
        return TargetPlacer(plan).place(config);
    }

    LogTrap m_log;
};

TEST_F(TargetPlacerTest, PlacesAGridAndAnOutlineByTheScreenArea) {
    const auto config = displays::parsed(displays::FLAT, displays::projector("A", displays::WHOLE_AREA));
    ScreenManager::getInstance()->setScreenGeometry(config.get(), false);
    const TargetSurvey survey = place(*config);

    ASSERT_EQ(survey.channels.size(), 1U);
    EXPECT_EQ(survey.unit, "m");
    const ChannelTargets& channel = survey.channels[0];
    EXPECT_EQ(channel.name, "A");
    EXPECT_EQ(channel.fault, "");
    ASSERT_EQ(channel.grid.size(), 6U);
    EXPECT_EQ(channel.gridMissed, 0U);
    // Column 0, row 0 is the top left corner of the picture.
    EXPECT_EQ(channel.grid.front().point, (P3{-2.0, 5.0, 2.0}));
    EXPECT_EQ(channel.grid.front().picture, (Point<double, 2>{0.0, 1.0}));
    EXPECT_EQ(channel.grid.back().point, (P3{2.0, 5.0, 0.0}));
    EXPECT_EQ(channel.grid.back().picture, (Point<double, 2>{1.0, 0.0}));
    EXPECT_THAT(channel.boundary,
                ElementsAre(P3{-2.0, 5.0, 2.0}, P3{0.0, 5.0, 2.0}, P3{2.0, 5.0, 2.0}, P3{2.0, 5.0, 1.0},
                            P3{2.0, 5.0, 0.0}, P3{0.0, 5.0, 0.0}, P3{-2.0, 5.0, 0.0}, P3{-2.0, 5.0, 1.0}));
    EXPECT_EQ(channel.boundaryMissed, 0U);
}

TEST_F(TargetPlacerTest, CountsTargetsThatMissTheScreen) {
    const auto config = displays::parsed(
        displays::FLAT, displays::projector("A", "<ScreenArea left='0.5' right='1.5' bottom='0' top='1'/>"));
    ScreenManager::getInstance()->setScreenGeometry(config.get(), false);
    const ChannelTargets channel = place(*config).channels.at(0);
    EXPECT_EQ(channel.grid.size(), 4U) << "the third column stands beyond the edge";
    EXPECT_EQ(channel.gridMissed, 2U);
    EXPECT_EQ(channel.boundary.size(), 8U) << "an outline goes on past the edge of a flat screen";
    EXPECT_EQ(channel.fault, "");
}

TEST_F(TargetPlacerTest, AChannelWithoutAScreenAreaDoesNotKeepTheOthers) {
    const auto config =
        displays::parsed(displays::FLAT, displays::projector("A", "<ScreenArea left='0' right='1' bottom='0'/>") +
                                             displays::projector("B", displays::WHOLE_AREA));
    ScreenManager::getInstance()->setScreenGeometry(config.get(), false);
    const TargetSurvey survey = place(*config);
    ASSERT_EQ(survey.channels.size(), 2U);
    EXPECT_THAT(survey.channels[0].fault, HasSubstr("screen area without top"));
    EXPECT_EQ(survey.channels[0].gridMissed, 6U);
    EXPECT_EQ(survey.channels[0].boundaryMissed, 8U);
    EXPECT_EQ(survey.channels[1].fault, "");
    EXPECT_FALSE(survey.complete());
}

TEST_F(TargetPlacerTest, AnOutlinePastTheScreenDoesNotHideThatTheGridMisses) {
    const auto config = displays::parsed(
        displays::FLAT, displays::projector("A", "<ScreenArea left='5' right='6' bottom='0' top='1'/>"));
    ScreenManager::getInstance()->setScreenGeometry(config.get(), false);
    const TargetSurvey survey = place(*config);
    EXPECT_EQ(survey.channels.at(0).boundary.size(), 8U);
    EXPECT_EQ(survey.channels.at(0).gridMissed, 6U);
    EXPECT_THAT(survey.channels.at(0).fault, HasSubstr("lies outside the screen"));
    EXPECT_FALSE(survey.complete());
}

TEST_F(TargetPlacerTest, ADomeChannelIsPlacedByTheRaysOfItsFrustum) {
    const auto config = displays::parsed(
        displays::SPHERE, displays::projector("A", "<Frustum left='-45' right='45' bottom='-45' top='45'/>"),
        "<TargetData type='Spherical'/>");
    ScreenManager::getInstance()->setScreenGeometry(config.get(), false);
    const ChannelTargets channel = place(*config, {3, 3, 2}).channels.at(0);
    EXPECT_EQ(channel.fault, "");
    ASSERT_EQ(channel.grid.size(), 9U);
    EXPECT_EQ(channel.boundary.size(), 8U);
    EXPECT_EQ(channel.boundaryMissed, 0U);
    const double corner = 5 / std::sqrt(3.0);
    // Column 0, row 0 is the top left corner of the picture.
    EXPECT_LE(norm(channel.grid.front().point - P3{-corner, corner, corner}), 1e-14);
    EXPECT_LE(norm(channel.grid[4].point - P3{0.0, 5.0, 0.0}), 1e-14);
    EXPECT_EQ(channel.grid[4].picture, (Point<double, 2>{0.5, 0.5}));
    EXPECT_LE(norm(channel.grid.back().point - P3{corner, corner, -corner}), 1e-14);
}

TEST_F(TargetPlacerTest, AFrustumNeedsTwoColumnsAndTwoRows) {
    const auto config = displays::parsed(
        displays::SPHERE, displays::projector("A", "<Frustum left='-45' right='45' bottom='-45' top='45'/>"),
        "<TargetData type='Spherical'/>");
    ScreenManager::getInstance()->setScreenGeometry(config.get(), false);
    EXPECT_EQ(place(*config, {1, 3, 2}).channels.at(0).fault,
              "a grid of one column or one row has no extent in a frustum: ask for two at least");
}

TEST_F(TargetPlacerTest, ACustomPlanarChannelIsPlacedByItsMapFromTheBottomUp) {
    const TemporaryFolder folder;
    const std::string map = folder.write("a.map", displays::WHOLE_MAP);
    const auto config =
        displays::parsed(displays::FLAT, displays::projector("A", "<CustomPlanarMap file='" + map + "'/>"),
                         "<TargetData type='CustomPlanar'/>");
    ScreenManager::getInstance()->setScreenGeometry(config.get(), false);
    const ChannelTargets channel = place(*config, {3, 2, 3}).channels.at(0);
    EXPECT_EQ(channel.fault, "");
    ASSERT_EQ(channel.grid.size(), 6U);
    EXPECT_EQ(channel.grid.front().row, 0);
    EXPECT_LE(norm(channel.grid.front().point - P3{-2.0, 5.0, 0.0}), 1e-12);
    EXPECT_EQ(channel.grid.front().picture, (Point<double, 2>{0.0, 0.0})) << "the bottom left corner of the picture";
    EXPECT_LE(norm(channel.grid.back().point - P3{2.0, 5.0, 2.0}), 1e-12);
    EXPECT_EQ(channel.boundary.size(), 8U);
    EXPECT_EQ(channel.boundaryMissed, 0U);
}

// Its locator refuses to place a grid. Oracle: a lens of equal angles, whose directions follow from the numbers alone.
TEST_F(TargetPlacerTest, AProjectorWithAProjectionModelHasItsGridThroughItsLayoutMap) {
    const std::string frustum = "<Frustum left='-45' right='45' bottom='-45' top='45'/>";
    const auto config =
        displays::parsed(displays::SPHERE, displays::projector("A", frustum + "<ProjectionModel name='Equidistant'/>"),
                         "<TargetData type='ProjectorCentric'/>");
    ScreenManager::getInstance()->setScreenGeometry(config.get(), false);
    const TargetSurvey survey = place(*config, {3, 3, 10});
    const ChannelTargets& channel = survey.channels.at(0);
    EXPECT_EQ(channel.fault, "");
    EXPECT_THAT(channel.remark, HasSubstr("its targets were placed through its layout map"));
    ASSERT_EQ(channel.grid.size(), 9U);
    EXPECT_EQ(channel.gridMissed, 0U);
    const GridTarget& right = channel.grid.at(7);
    EXPECT_EQ(right.column, 2);
    EXPECT_EQ(right.row, 1);
    EXPECT_EQ(right.picture, (Point<double, 2>{1.0, 0.5}));
    const double side = 5 * std::sqrt(0.5);
    EXPECT_LE(norm(right.point - P3{side, side, 0}), 1e-9) << "45 degrees to the right";
    const GridTarget& first = channel.grid.at(3);
    EXPECT_EQ(first.row, 0);
    EXPECT_EQ(first.picture, (Point<double, 2>{0.5, 0.0})) << "the lower edge comes first, as in its outline";
    EXPECT_LE(norm(first.point - P3{0, side, -side}), 1e-9) << "45 degrees down";
    EXPECT_EQ(channel.boundary.size(), 44U);
    EXPECT_EQ(channel.boundaryMissed, 0U);
    EXPECT_TRUE(survey.complete());
}

TEST_F(TargetPlacerTest, AGridThroughALayoutMapCountsWhatMissesTheScreen) {
    const auto config =
        displays::parsed(displays::FLAT,
                         displays::projector("A",
                                             "<Frustum left='-30' right='30' bottom='-5' top='5'/><ProjectionModel "
                                             "name='Equidistant'/><Position x='0' y='0' z='1'/>"),
                         "<TargetData type='ProjectorCentric'/>");
    ScreenManager::getInstance()->setScreenGeometry(config.get(), false);
    const TargetSurvey survey = place(*config, {3, 2, 2});
    const ChannelTargets& channel = survey.channels.at(0);
    EXPECT_EQ(channel.grid.size(), 2U) << "the middle column: the others pass the wall";
    EXPECT_EQ(channel.gridMissed, 4U);
    EXPECT_EQ(channel.fault, "");
}

TEST_F(TargetPlacerTest, AChannelWithoutALocatorSaysWhy) {
    const auto fault = [](const std::string& targetData, const std::string& elements) {
        const auto config = displays::parsed(displays::FLAT, displays::projector("A", elements), targetData);
        ScreenManager::getInstance()->setScreenGeometry(config.get(), false);
        return place(*config).channels.at(0).fault;
    };
    EXPECT_EQ(fault("", displays::WHOLE_AREA),
              "the configuration names no kind of target data: add a TargetData element");
    EXPECT_EQ(fault("<TargetData type='CustomPlanar'/>", ""), "no custom planar map file is given");
    EXPECT_THAT(fault("<TargetData type='CustomPlanar'/>", "<CustomPlanarMap file='nowhere.map'/>"),
                HasSubstr("nowhere.map"));
    EXPECT_THAT(fault("<TargetData type='3D'/>", "<ProjectionModel name='Pincushion'/>"), HasSubstr("Pincushion"));
    EXPECT_THAT(fault("<TargetData type='3D'/>", "<ProjectionModel name='Fisheye' file='nowhere.yml'/>"),
                HasSubstr("nowhere.yml"));
}

TEST_F(TargetPlacerTest, AFrustumThatLooksPastTheScreenIsAFault) {
    const auto config = displays::parsed(
        displays::FLAT,
        displays::projector("A",
                            "<Orientation z='180' x='0' y='0'/><Frustum left='-10' right='10' bottom='-10' top='10'/>"),
        "<TargetData type='Spherical'/>");
    ScreenManager::getInstance()->setScreenGeometry(config.get(), false);
    EXPECT_EQ(place(*config).channels.at(0).fault,
              "none of its grid targets lies on the screen: check its position, orientation and frustum");
}

TEST_F(TargetPlacerTest, ASingleColumnStandsAtTheLeftEdge) {
    const auto config = displays::parsed(displays::FLAT, displays::projector("A", displays::WHOLE_AREA));
    ScreenManager::getInstance()->setScreenGeometry(config.get(), false);
    const ChannelTargets channel = place(*config, {1, 1, 0}).channels.at(0);
    ASSERT_EQ(channel.grid.size(), 1U);
    EXPECT_EQ(channel.grid[0].point, (P3{-2.0, 5.0, 2.0}));
    EXPECT_TRUE(channel.boundary.empty());
}

TEST_F(TargetPlacerTest, WithoutAScreenEveryChannelSaysSo) {
    const auto config = displays::parsed("", displays::projector("A", displays::WHOLE_AREA));
    const ChannelTargets channel = place(*config).channels.at(0);
    EXPECT_EQ(channel.fault, "there is no screen to place targets on");
    EXPECT_EQ(channel.gridMissed, 6U);
}

TEST_F(TargetPlacerTest, TellsItsProgressBeforeEveryChannelAndAtTheEnd) {
    const auto config = displays::parsed(displays::FLAT, displays::projector("A", displays::WHOLE_AREA) +
                                                             displays::projector("B", displays::WHOLE_AREA));
    ScreenManager::getInstance()->setScreenGeometry(config.get(), false);
    std::vector<std::pair<std::size_t, std::size_t>> told;
    const TargetSurvey survey = TargetPlacer({1, 1, 1}, [&told](std::size_t done, std::size_t total) {
                                    told.emplace_back(done, total);
                                }).place(*config);
    EXPECT_EQ(survey.channels.size(), 2U);
    EXPECT_THAT(told, ElementsAre(Pair(0U, 2U), Pair(1U, 2U), Pair(2U, 2U)));
}

}  // namespace
