#include "DisplayReport/maps/PictureWarp.h"

#include "Common/VeltraniException.h"
#include "DisplayReport/maps/InputProjection.h"
#include "DisplayReport/maps/LayoutMapper.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/TargetLocatorManager.h"
#include "support/Displays.h"
#include "support/LogTrap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace {

using namespace Veltrani::DisplayReport;
using testing::ElementsAre;
using testing::Pair;
using P2 = Point<double, 2>;

constexpr double ROUNDING = 1e-12;

/// A display with one channel A, its screen built.
class Channel {
public:
    Channel(const std::string& screen, const std::string& projectors, const std::string& type,
            Panorama panorama = Panorama::FISHEYE)
        : m_config(displays::parsed(screen, projectors, "<TargetData type='" + type + "'/>")),
          map(build(*m_config)),
          input(*m_config, panorama) {}
    ~Channel() {
        TargetLocatorManager::deleteInstance();
        ScreenManager::deleteInstance();
    }
    Channel(const Channel&) = delete;
    Channel& operator=(const Channel&) = delete;

private:
    static LayoutMapper build(XMLConfigFile& config) {
        ScreenManager::getInstance()->setScreenGeometry(&config, false);
        return {config, ChannelChoice::of(config, "A"), false};
    }

    LogTrap m_log;
    std::unique_ptr<XMLConfigFile> m_config;

public:
    LayoutMapper map;
    InputProjection input;
};

/// The right half of a plane, upper three quarters of it.
const std::string PLANE = displays::projector("A", "<Layout xMin='2' xMax='4' yMin='1' yMax='4'/>") +
                          displays::projector("B", "<Layout xMin='0' xMax='2' yMin='0' yMax='1'/>");

TEST(PictureWarp, NodesReachFromEdgeToEdge) {
    Channel channel(displays::FLAT, PLANE, "PlanarBasic");
    const PictureWarp warp = PictureWarp::atNodes(channel.map, channel.input, {1920, 1200}, {3, 4});
    EXPECT_EQ(warp.pixels(), (Point<int, 2>{1920, 1200}));
    ASSERT_EQ(warp.columns(), 3U);
    ASSERT_EQ(warp.rows(), 4U);
    EXPECT_EQ(warp.missed(), 0U);
    for (std::size_t row = 0; row < 4; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            const WarpSample& sample = warp.at(column, row);
            EXPECT_TRUE(sample.isMapped);
            EXPECT_NEAR(sample.input[0], 0.5 + 0.25 * static_cast<double>(column), ROUNDING);
            EXPECT_NEAR(sample.input[1], 0.25 + 0.25 * static_cast<double>(row), ROUNDING);
        }
    }
}

TEST(PictureWarp, PixelsHaveTheirMiddles) {
    Channel channel(displays::FLAT, PLANE, "PlanarBasic");
    const PictureWarp warp = PictureWarp::atPixels(channel.map, channel.input, {4, 2});
    ASSERT_EQ(warp.columns() * warp.rows(), 8U);
    EXPECT_NEAR(warp.at(0, 0).input[0], 0.5 + 0.5 / 8, ROUNDING);
    EXPECT_NEAR(warp.at(3, 0).input[0], 1 - 0.5 / 8, ROUNDING);
    EXPECT_NEAR(warp.at(0, 1).input[1], 0.25 + 0.75 * 0.75, ROUNDING);
}

TEST(PictureWarp, TheFisheyeOfADomeIsThatOfItsFrustum) {
    // Seen from the middle of the sphere the direction of a picture point is all that matters.
    Channel channel(displays::SPHERE,
                    displays::projector("A",
                                        "<Orientation z='20' x='0' y='0'/>"
                                        "<Frustum left='-40' right='40' bottom='-30' top='30'/>"),
                    "Spherical");
    const PictureWarp warp = PictureWarp::atNodes(channel.map, channel.input, {1920, 1200}, {9, 7});
    EXPECT_EQ(warp.missed(), 0U);
    const double pi = std::numbers::pi;
    for (std::size_t row = 0; row < 7; ++row) {
        for (std::size_t column = 0; column < 9; ++column) {
            const double x = std::tan(pi * 40 / 180) * (static_cast<double>(column) / 4 - 1);
            const double z = std::tan(pi * 30 / 180) * (static_cast<double>(row) / 3 - 1);
            const double turnedX = x * std::cos(pi / 9) + std::sin(pi / 9);
            const double turnedY = std::cos(pi / 9) - x * std::sin(pi / 9);
            const double angle = std::acos(turnedY / std::sqrt(turnedX * turnedX + turnedY * turnedY + z * z));
            const double around = std::atan2(z, turnedX);
            EXPECT_NEAR(warp.at(column, row).input[0], 0.5 + angle / pi * std::cos(around), ROUNDING);
            EXPECT_NEAR(warp.at(column, row).input[1], 0.5 + angle / pi * std::sin(around), ROUNDING);
        }
    }
}

/// Whatever order the places are mapped in, whole squares or not, each has what it has by itself.
TEST(PictureWarp, EveryPlaceShowsWhatItShowsByItself) {
    Channel channel(displays::SPHERE,
                    displays::projector("A",
                                        "<Orientation z='75' x='10' y='5'/>"
                                        "<Frustum left='-40' right='30' bottom='-20' top='25'/>"),
                    "Spherical");
    for (const Point<int, 2> pixels : {Point<int, 2>{1, 1}, {3, 7}, {8, 4}, {9, 5}, {4, 13}}) {
        const PictureWarp warp = PictureWarp::atPixels(channel.map, channel.input, pixels);
        for (int row = 0; row < pixels[1]; ++row) {
            for (int column = 0; column < pixels[0]; ++column) {
                const P2 picture{(column + 0.5) / pixels[0], (row + 0.5) / pixels[1]};
                LayoutPoint layout;
                channel.map.toLayout({&picture, 1}, {&layout, 1});
                const auto shown = layout.isMapped ? channel.input.place(layout.point) : std::nullopt;
                const WarpSample& sample = warp.at(static_cast<std::size_t>(column), static_cast<std::size_t>(row));
                EXPECT_EQ(sample.isMapped, shown.has_value()) << column << ", " << row << " of " << pixels;
                EXPECT_EQ(sample.input, shown.value_or(P2())) << column << ", " << row << " of " << pixels;
            }
        }
    }
}

TEST(PictureWarp, WhatLiesBeyondTheInputIsMissed) {
    Channel channel(displays::SPHERE,
                    displays::projector("A",
                                        "<Orientation z='90' x='0' y='0'/>"
                                        "<Frustum left='-30' right='30' bottom='-20' top='20'/>"),
                    "Spherical");
    const PictureWarp warp = PictureWarp::atNodes(channel.map, channel.input, {1920, 1200}, {7, 3});
    EXPECT_EQ(warp.missed(), 9U) << "the right half looks backwards";
    EXPECT_TRUE(warp.at(2, 1).isMapped);
    EXPECT_FALSE(warp.at(4, 1).isMapped);
    EXPECT_EQ(warp.at(4, 1).input, (P2{0, 0}));
}

TEST(PictureWarp, NoCellReachesAcrossTheSeamOfAPanorama) {
    Channel channel(displays::SPHERE,
                    displays::projector("A",
                                        "<Orientation z='180' x='0' y='0'/>"
                                        "<Frustum left='-30' right='30' bottom='-20' top='20'/>"),
                    "Spherical", Panorama::EQUIRECTANGULAR);
    PictureWarp warp = PictureWarp::atNodes(channel.map, channel.input, {1920, 1200}, {8, 3});
    EXPECT_EQ(warp.missed(), 0U);
    EXPECT_GT(warp.at(3, 1).input[0], 0.98);
    EXPECT_LT(warp.at(4, 1).input[0], 0.02);
    EXPECT_EQ(warp.cutAtSeam(), 3U);
    for (std::size_t row = 0; row < 3; ++row) {
        EXPECT_TRUE(warp.at(3, row).isMapped);
        EXPECT_FALSE(warp.at(4, row).isMapped);
        EXPECT_TRUE(warp.at(5, row).isMapped);
    }
    EXPECT_EQ(warp.cutAtSeam(), 0U);
}

TEST(PictureWarp, ASeamAcrossTheRowsIsCutToo) {
    const std::vector<WarpSample> column{
        {{0.1, 0.9}, true}, {{0.6, 0.95}, true}, {{0.1, 0.9}, false}, {{0.9, 0.9}, true}};
    PictureWarp upwards({1, 4}, 1, 4, column);
    EXPECT_EQ(upwards.cutAtSeam(), 0U) << "half a panorama is no jump, and beside an unused sample there is no cell";
    PictureWarp jump({1, 2}, 1, 2, {{{0.1, 0.9}, true}, {{0.9, 0.9}, true}});
    EXPECT_EQ(jump.cutAtSeam(), 1U);
    EXPECT_FALSE(jump.at(0, 1).isMapped);
}

TEST(PictureWarp, TellsHowFarItIs) {
    Channel channel(displays::FLAT, PLANE, "PlanarBasic");
    std::vector<std::pair<std::size_t, std::size_t>> calls;
    const auto note = [&calls](std::size_t done, std::size_t total) { calls.emplace_back(done, total); };
    static_cast<void>(PictureWarp::atNodes(channel.map, channel.input, {8, 8}, {2, 2}, note));
    EXPECT_THAT(calls, ElementsAre(Pair(0, 2), Pair(1, 2), Pair(2, 2)));
}

TEST(PictureWarp, GridsWithoutExtentOrEndAreRefused) {
    Channel channel(displays::FLAT, PLANE, "PlanarBasic");
    const auto fault = [&](const auto& make) {
        try {
            static_cast<void>(make());
        } catch (const VeltraniException& thrown) {
            return thrown.message;
        }
        return std::wstring();
    };
    EXPECT_EQ(fault([&] {
                  return PictureWarp::atNodes(channel.map, channel.input, {8, 8}, {1, 5});
              }),
              L"A grid of nodes has two columns and two rows at least");
    EXPECT_EQ(fault([&] {
                  return PictureWarp::atPixels(channel.map, channel.input, {0, 5});
              }),
              L"A picture has one pixel at least");
    EXPECT_EQ(fault([&] {
                  return PictureWarp::atPixels(channel.map, channel.input, {1000000, 1000000});
              }),
              L"A grid of 1000000 x 1000000 is larger than 40000000 places: ask for fewer nodes");
    EXPECT_EQ(fault([&] {
                  return PictureWarp({8, 8}, 2, 2, std::vector<WarpSample>(3));
              }),
              L"3 samples do not fill a grid of 2 x 2");
}

}  // namespace
