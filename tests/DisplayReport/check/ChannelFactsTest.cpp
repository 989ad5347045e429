#include "DisplayReport/check/ChannelFacts.h"

#include "DisplayReport/channels/ScreenLoader.h"
#include "DisplayReport/check/DisplayFacts.h"
#include "ScreenManager/ScreenManager.h"
#include "support/Displays.h"
#include "support/LogTrap.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numbers>

namespace {

using namespace Veltrani::DisplayReport;

constexpr double DEGREE = std::numbers::pi / 180.0;

TEST(Heading, IsRightOfForwardAndAboveTheHorizon) {
    EXPECT_DOUBLE_EQ(Heading::of({2, 0, 0}).azimuth, 90 * DEGREE);
    EXPECT_DOUBLE_EQ(Heading::of({-1, 1, 0}).azimuth, -45 * DEGREE);
    EXPECT_DOUBLE_EQ(Heading::of({0, 3, 3}).elevation, 45 * DEGREE);
    EXPECT_DOUBLE_EQ(Heading::of({0, 0, -1}).elevation, -90 * DEGREE);
}

TEST(Heading, TurnsTheShortWayRound) {
    const Heading nearlyBack{170 * DEGREE, 0};
    const Heading beyond{-170 * DEGREE, 0};
    EXPECT_NEAR(beyond.rightOf(nearlyBack), 20 * DEGREE, 1e-12);
    EXPECT_NEAR(nearlyBack.rightOf(beyond), -20 * DEGREE, 1e-12);
}

/// One channel in front of a wall of 4 m x 2 m, five metres ahead.
class ChannelFactsTest : public testing::Test {
protected:
    ~ChannelFactsTest() override { ScreenManager::deleteInstance(); }

    const ChannelFacts& factsOf(const std::string& elements, const std::string& kind = "ProjectorCentric") {
        m_config =
            displays::parsed(displays::FLAT, displays::projector("A", elements), "<TargetData type='" + kind + "'/>");
        EXPECT_TRUE(ScreenLoader::load(*m_config).empty());
        m_facts = DisplayFacts::of(*m_config, false);
        return m_facts.channels.at(0);
    }

    LogTrap m_log;
    std::unique_ptr<XMLConfigFile> m_config;
    DisplayFacts m_facts;
};

TEST_F(ChannelFactsTest, AProjectorLightsWhatItsFrustumSpans) {
    const ChannelFacts& channel =
        factsOf("<Position x='0.2' y='2' z='1'/><Frustum left='-16' right='16' bottom='-10' top='10'/>");
    ASSERT_NE(channel.view(), nullptr);
    EXPECT_NEAR(channel.view()->wide, 32 * DEGREE, 1e-12);
    EXPECT_NEAR(channel.view()->high, 20 * DEGREE, 1e-12);
    EXPECT_EQ(channel.lens(), nullptr);
    EXPECT_EQ(channel.landed(), 1.0);
    EXPECT_NEAR(channel.throwDistance(), 3.0, 1e-12);
    EXPECT_NEAR(norm(channel.middleOfLight() - Point<double, 3>{0.2, 5, 1}), 0.0, 1e-12);
    // Of n equal parts of a width w the middles have the variance w^2 (1 - 1 / n^2) / 12.
    const double width = 6 * std::tan(16 * DEGREE);
    const double height = 6 * std::tan(10 * DEGREE);
    const double variance = (width * width * (1 - 1 / 625.0) + height * height * (1 - 1 / 289.0)) / 12;
    EXPECT_NEAR(channel.spreadOfLight(), std::sqrt(variance), 1e-12);
}

TEST_F(ChannelFactsTest, ARollLeavesTheDirection) {
    const ChannelFacts& channel = factsOf(
        "<Orientation z='20' x='10' y='90'/><Position x='0' y='2' z='1'/><Frustum left='-5' right='5' bottom='-3' "
        "top='3'/>");
    ASSERT_NE(channel.view(), nullptr);
    EXPECT_NEAR(channel.view()->heading.azimuth, 20 * DEGREE, 1e-12);
    EXPECT_NEAR(channel.view()->heading.elevation, 10 * DEGREE, 1e-12);
    EXPECT_NEAR(channel.view()->roll, 90 * DEGREE, 1e-12);
}

TEST_F(ChannelFactsTest, AProjectorThatLooksAwayLightsNothing) {
    const ChannelFacts& channel = factsOf(
        "<Orientation z='180' x='0' y='0'/><Position x='0' y='2' z='1'/><Frustum left='-5' right='5' bottom='-3' "
        "top='3'/>");
    EXPECT_NE(channel.light(), nullptr);
    EXPECT_TRUE(channel.landings().empty());
    EXPECT_EQ(channel.landed(), 0.0);
    EXPECT_EQ(channel.throwDistance(), 0.0);
    EXPECT_EQ(channel.spreadOfLight(), 0.0);
}

TEST_F(ChannelFactsTest, AnAreaHasNoViewAndNoThrow) {
    const ChannelFacts& channel = factsOf("<ScreenArea left='0.5' right='1.5' bottom='0' top='1'/>", "PlanarBasic");
    EXPECT_EQ(channel.view(), nullptr);
    EXPECT_EQ(channel.throwDistance(), 0.0);
    // 12 of the 25 columns, and the one on the edge.
    EXPECT_NEAR(channel.landed(), 0.5, 0.021);
    EXPECT_EQ(channel.where(), "channel A");
}

TEST_F(ChannelFactsTest, NothingIsConcludedFromAFaultySource) {
    const ChannelFacts& channel = factsOf("");
    EXPECT_EQ(channel.locator(), nullptr);
    EXPECT_EQ(channel.view(), nullptr);
    EXPECT_EQ(channel.light(), nullptr);
}

}  // namespace
