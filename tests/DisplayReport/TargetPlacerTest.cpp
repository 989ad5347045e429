#include "DisplayReport/TargetPlacer.h"

#include "Displays.h"
#include "ScreenManager/ScreenManager.h"
#include "support/LogTrap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace Veltrani::DisplayReport;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;
using P3 = Point<double, 3>;

class TargetPlacerTest : public testing::Test {
protected:
    ~TargetPlacerTest() override { ScreenManager::deleteInstance(); }

    static TargetSurvey place(const XMLConfigFile& config, const TargetPlan& plan = {3, 2, 2}) {
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
    EXPECT_EQ(channel.grid.front().picture, (Point<double, 2>{0.0, 0.0}));
    EXPECT_EQ(channel.grid.back().point, (P3{2.0, 5.0, 0.0}));
    EXPECT_EQ(channel.grid.back().picture, (Point<double, 2>{1.0, 1.0}));
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

TEST_F(TargetPlacerTest, RemarksOnTargetDataThatScreenAreasDoNotDecide) {
    const std::string projector = displays::projector("A", displays::WHOLE_AREA);
    const auto planar = displays::parsed(displays::FLAT, projector, "<TargetData type='PlanarAdvanced'/>");
    ScreenManager::getInstance()->setScreenGeometry(planar.get(), false);
    EXPECT_EQ(place(*planar).remark, "");
    const auto spherical = displays::parsed(displays::FLAT, projector, "<TargetData type='Spherical'/>");
    EXPECT_EQ(place(*spherical).remark, "the target data is Spherical; the targets were placed by the screen areas");
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
