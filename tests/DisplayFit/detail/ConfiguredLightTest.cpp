#include "DisplayFit/detail/ConfiguredLight.h"

#include "WallChannels.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace {

using Veltrani::DisplayFit::MeasuredPoint;
using Veltrani::DisplayFitDetail::ConfiguredLight;
using Veltrani::DisplayFitDetail::FitPoints;
using Measured = std::vector<MeasuredPoint>;

constexpr double NOWHERE = std::numeric_limits<double>::infinity();

TEST(ConfiguredLight, LandsWhereTheAreaIsAndIsAboutAsWide) {
    const WallChannels wall;
    const Measured points = wall.measured(9, 5);
    const ConfiguredLight light = wall.lightOf(points);
    EXPECT_TRUE(light.isKnown());
    ASSERT_EQ(light.landings().size(), 45U);
    for (std::size_t i = 0; i < points.size(); ++i) {
        EXPECT_LT(norm(light.landings()[i].value() - points[i].world), 1e-12) << i;
    }
    EXPECT_NEAR(light.width(), 4, 1) << "the wall";
    EXPECT_LT(light.miss(), 1e-12);
}

TEST(ConfiguredLight, SomePointsStandForMany) {
    const WallChannels wall;
    const Measured points = wall.measured(20, 10);
    const ConfiguredLight light = wall.lightOf(points);
    ASSERT_EQ(light.points().size(), 48U);
    EXPECT_EQ(light.points().given[0], 0U);
    EXPECT_EQ(light.points().given[47], 47U * 200 / 48);
    EXPECT_EQ(light.points().rows[24], 102U);
    EXPECT_EQ(light.points().world[24], points[100].world);
    EXPECT_EQ(light.points().picture[24], points[100].picture);
}

TEST(ConfiguredLight, MissesAreMediansInWidthsOfThePicture) {
    const WallChannels wall;
    Measured points = wall.measured(9, 5);
    const double width = wall.lightOf(points).width();
    for (std::size_t i = 0; i < points.size(); ++i) {
        points[i].world += i % 3 == 0 ? Point<double, 3>{90, 0, 0} : Point<double, 3>{0, 0.3, -0.4};
    }
    EXPECT_NEAR(wall.lightOf(points).miss(), 0.5 / width, 1e-12);
}

TEST(ConfiguredLight, AMistakeThatIsUndoneLeavesNoMiss) {
    const WallChannels wall;
    Measured points = wall.measured(9, 5);
    for (MeasuredPoint& point : points) {
        point.picture[0] = 1 - point.picture[0];
    }
    const auto undo = [](const Point<double, 2>& at) { return Point<double, 2>{1 - at[0], at[1]}; };
    EXPECT_GT(wall.lightOf(points).miss(), 0.3);
    EXPECT_LT(wall.lightOf(points).missWith(undo), 1e-12);
    points = wall.measured(9, 5);
    EXPECT_GT(wall.lightOf(points).missWith(undo), 0.3);
    Matrix<double, 3> mirrored;
    mirrored(1, 1) = -1;
    for (MeasuredPoint& point : points) {
        point.world[1] *= -1;
    }
    const ConfiguredLight light = wall.lightOf(points);
    EXPECT_NEAR(light.miss(), 10 / light.width(), 1e-12);
    EXPECT_LT(light.missWith(mirrored), 1e-12);
}

TEST(ConfiguredLight, PointsOfAnotherChannelLieInItsPictureWhereItIsNear) {
    const WallChannels wall({"left='0' right='0.2' bottom='0' top='0.5'",
                             "left='0.25' right='0.45' bottom='0' top='0.5'",
                             "left='0.8' right='1' bottom='0.5' top='1'"});
    Measured points = wall.measured(6, 5, 1);
    for (MeasuredPoint& point : points) {
        point.channel = 0;
    }
    const ConfiguredLight light = wall.lightOf(points, 0);
    EXPECT_LT(light.missAs(wall.lightOf(wall.measured(6, 5, 1), 1)), 1e-12);
    EXPECT_NEAR(light.miss(), 1 / light.width(), 1e-12);
    EXPECT_EQ(light.missAs(wall.lightOf(wall.measured(6, 5, 2), 2)), NOWHERE) << "at the other end of the wall";
    EXPECT_EQ(light.missAs(wall.lightOf({}, 1)), NOWHERE);
}

/// A projector whose frustum is wider than the wall: rays to the sides miss it.
class WideLight : public testing::Test {
protected:
    WideLight() {
        ScreenManager::getInstance()->setScreenGeometry(m_config.get(), true);
        m_setup.emplace(*m_config, *DisplayKind::of(*m_config), *m_config->getProjectorConfig(L"A"));
    }
    ~WideLight() override { ScreenManager::deleteInstance(); }

    /// @param hits so many of ten points are in the middle of the picture
    [[nodiscard]] ConfiguredLight lightWith(std::size_t hits) const {
        FitPoints points;
        for (std::size_t i = 0; i < 10; ++i) {
            const double part = 0.01 * static_cast<double>(i);
            points.picture.push_back({i < hits ? 0.45 + part : 0.02 + part, 0.45 + part});
            points.world.push_back({part, 5, 1});
        }
        return {*m_setup, points};
    }

    LogTrap m_log;
    std::unique_ptr<XMLConfigFile> m_config =
        displays::parsed(displays::FLAT,
                         displays::projector("A",
                                             "<Position x='0' y='0' z='1'/><Orientation z='0' x='0' y='0'/>"
                                             "<Frustum left='-45' right='45' bottom='-15' top='15'/>"),
                         "<TargetData type='3D'/>");
    std::optional<Veltrani::DisplayFitDetail::ChannelSetup> m_setup;
};

TEST_F(WideLight, IsUnknownWhereMostOfItMissesTheScreen) {
    const ConfiguredLight known = lightWith(6);
    EXPECT_TRUE(known.isKnown());
    EXPECT_TRUE(known.landings()[5].has_value());
    EXPECT_FALSE(known.landings()[6].has_value());
    EXPECT_LT(known.miss(), NOWHERE);
    const ConfiguredLight unknown = lightWith(5);
    EXPECT_FALSE(unknown.isKnown());
    EXPECT_EQ(unknown.width(), 0);
    EXPECT_EQ(unknown.miss(), NOWHERE);
    EXPECT_EQ(unknown.missWith(Matrix<double, 3>()), NOWHERE);
    EXPECT_EQ(unknown.missAs(known), NOWHERE);
    EXPECT_EQ(known.missAs(unknown), NOWHERE);
}

TEST(ConfiguredLight, OfAChannelThatIsRefusedIsUnknown) {
    const WallChannels wall({"left='0.5' right='0.5' bottom='0' top='1'"});
    EXPECT_FALSE(wall.lightOf(wall.measured(6, 5)).isKnown());
}

}  // namespace
