// The maps of all example displays: what is mapped comes back, what is lost is known, and a warp that is written for a
// channel of map files says what its map file says.
#include "Common/Utf8.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigFile.h"
#include "DisplayReport/channels/ScreenLoader.h"
#include "DisplayReport/maps/InputProjection.h"
#include "DisplayReport/maps/LayoutMapper.h"
#include "DisplayReport/maps/PictureWarp.h"
#include "DisplayReport/maps/WarpWriter.h"
#include "DisplayReport/targets/TargetPlacer.h"
#include "KelvoControl/CustomPlanarScreenToChannelMap.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/DisplayKinds.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/TargetLocatorManager.h"
#include "support/LogTrap.h"
#include "support/Sanitizers.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <sstream>

namespace {

using namespace Veltrani::DisplayReport;
using testing::ElementsAre;
using testing::IsEmpty;
using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

/// Of the picture: both ways together round some dozen times.
constexpr double CLOSURE = 1e-9;
/// Every picture is 1920 x 1200; all places lie on whole pixels, so that no map has to round.
constexpr int STEPS_ACROSS = 16;
constexpr int STEPS_UPWARDS = 10;

class ExampleMaps : public testing::Test {
protected:
    ~ExampleMaps() override {
        TargetLocatorManager::deleteInstance();
        ScreenManager::deleteInstance();
    }

    void load(const std::string& example) {
        m_config = XMLConfigFile::load(sourceFolder() + "/examples/" + example + "/display.xml");
        EXPECT_THAT(ScreenLoader::load(*m_config), IsEmpty());
    }

    LayoutMapper mapperOf(const std::string& channel, bool useCache = false) {
        return {*m_config, ChannelChoice::of(*m_config, channel), useCache};
    }

    LogTrap m_log;
    std::unique_ptr<XMLConfigFile> m_config;
};

/// What becomes of the places of a picture on their way to the layout and back.
struct Closure {
    std::size_t beyond = 0;  ///< without a layout point
    std::vector<P2> lost;    ///< without a way back
    double worst = 0;        ///< of the others, of the picture
};

Closure closureOf(LayoutMapper& map, int across = STEPS_ACROSS, int upwards = STEPS_UPWARDS) {
    std::vector<P2> places;
    for (int row = 0; row <= upwards; ++row) {
        for (int column = 0; column <= across; ++column) {
            places.emplace_back(static_cast<double>(column) / across, static_cast<double>(row) / upwards);
        }
    }
    std::vector<LayoutPoint> layout(places.size());
    map.toLayout(places, layout);
    Closure closure;
    for (std::size_t i = 0; i < places.size(); ++i) {
        P2 back;
        if (!layout[i].isMapped) {
            ++closure.beyond;
        } else if (!map.toPicture(layout[i].point, back)) {
            closure.lost.push_back(places[i]);
        } else {
            closure.worst = std::max(closure.worst, norm(back - places[i]));
        }
    }
    return closure;
}

TEST_F(ExampleMaps, WhatIsMappedComesBack) {
    // The rest of these pictures lies above the wall: the top row of places, but for one corner.
    const std::map<std::string, std::size_t> beyond{{"020000000702", 17}, {"020000000703", 16}};
    std::size_t channels = 0;
    for (const char* example : {"planar-wall", "curved-wall", "dome", "cylinder", "cockpit", "spherical-dome",
                                "warped-wall", "lens-cylinder", "mesh-rays"}) {
        load(example);
        for (const std::wstring& id : m_config->getProjectorConfigIds()) {
            const std::string channel = Veltrani::toUtf8(id);
            LayoutMapper map = mapperOf(channel);
            const Closure closure = closureOf(map);
            EXPECT_EQ(closure.beyond, beyond.count(channel) == 1 ? beyond.at(channel) : 0U) << example << channel;
            EXPECT_TRUE(closure.lost.empty()) << example << channel;
            EXPECT_LE(closure.worst, CLOSURE) << example << channel;
            ++channels;
        }
    }
    EXPECT_EQ(channels, 36U);
}

// The windows of the search end short of the far edges, x = width and y = height, so that their pixels are found only
// where they are samples on the way there, as all of the upper edge are here.
TEST_F(ExampleMaps, OfACollimatedDisplayOnlyTheRightEdgeIsLost) {
    load("collimated");
    const std::vector<P2> edge{{1, 0.1}, {1, 0.2}, {1, 0.3}, {1, 0.4}, {1, 0.6}, {1, 0.7}, {1, 0.8}, {1, 0.9}};
    // A search asks for hundreds of reflected rays; under the sanitizers one channel stands for all.
    const std::vector<std::string> channels =
        IS_SANITIZED ? std::vector<std::string>{"Left"} : std::vector<std::string>{"Left", "Centre", "Right"};
    for (const std::string& channel : channels) {
        for (const bool useCache : {false, true}) {
            LayoutMapper map = mapperOf(channel, useCache);
            const Closure closure = closureOf(map);
            EXPECT_EQ(closure.beyond, 0U);
            EXPECT_EQ(closure.lost, edge) << channel;
            EXPECT_EQ(closure.worst, 0) << "whole pixels";
        }
    }
}

TEST_F(ExampleMaps, OfACollimatedDisplayTheUpperEdgeIsLostLikeTheRightOne) {
    load("collimated");
    LayoutMapper map = mapperOf("Centre");
    // Whole pixels, of which only the corners are samples.
    constexpr int ACROSS = 15;
    constexpr int UPWARDS = 3;
    std::vector<P2> edges;
    for (int row = 1; row < UPWARDS; ++row) {
        edges.emplace_back(1, static_cast<double>(row) / UPWARDS);
    }
    for (int column = 1; column < ACROSS; ++column) {
        edges.emplace_back(static_cast<double>(column) / ACROSS, 1);
    }
    const Closure closure = closureOf(map, ACROSS, UPWARDS);
    EXPECT_EQ(closure.beyond, 0U);
    EXPECT_EQ(closure.lost, edges);
    EXPECT_EQ(closure.worst, 0) << "whole pixels";
}

/// A layout point as a point in space. Planes of rectangles and of the screen's parameters are not: what is shown there
/// is found by way of the area, and of the screen.
P3 inSpace(const XMLConfigManager& config, const ChannelTargets& channel, const P2& place, const P3& layout) {
    const auto screen = ScreenManager::getInstance()->getScreenGeometry();
    const DisplayKind::Layout kind = DisplayKind::of(config)->layout;
    if (kind == DisplayKind::Layout::WORLD) {
        return layout;
    }
    P2 st{layout[0], layout[2]};
    if (kind == DisplayKind::Layout::PLANE) {
        const ProjectorConfig& projector = *config.getProjectorConfig(Veltrani::fromUtf8(channel.projectorId));
        const auto between = [](double a, double b, double part) { return a + (b - a) * part; };
        EXPECT_NEAR(layout[0], between(projector.getLayoutXMin(), projector.getLayoutXMax(), place[0]), CLOSURE);
        EXPECT_NEAR(layout[1], between(projector.getLayoutYMin(), projector.getLayoutYMax(), place[1]), CLOSURE);
        st = {between(projector.getScreenLeft(), projector.getScreenRight(), place[0]),
              between(projector.getScreenBottom(), projector.getScreenTop(), place[1])};
    }
    P3 point;
    EXPECT_TRUE(screen->mapInto3D(st, point, true));
    return point;
}

// What `targets` calls (u, v) is what `map` calls so. The places are those of a table with all digits.
TEST_F(ExampleMaps, ATargetLiesWhereTheMapHasItsPlace) {
    std::map<std::string, std::size_t> compared;
    for (const char* example : {"planar-wall", "curved-wall", "dome", "cylinder", "cockpit", "spherical-dome",
                                "closed-cylinder", "warped-wall", "mesh-rays", "lens-cylinder"}) {
        load(example);
        for (const ChannelTargets& channel : TargetPlacer(TargetPlan()).place(*m_config).channels) {
            LayoutMapper map = mapperOf(channel.projectorId);
            for (const GridTarget& target : channel.grid) {
                LayoutPoint layout;
                map.toLayout({&target.picture, 1}, {&layout, 1});
                ASSERT_TRUE(layout.isMapped) << example << channel.name << target.row;
                const P3 point = inSpace(*m_config, channel, target.picture, layout.point);
                ASSERT_LE(norm(point - target.point), CLOSURE) << example << channel.name << target.row;
                ++compared[example];
            }
        }
    }
    EXPECT_EQ(compared.size(), 10U) << "every example with a grid of targets; that of lenses has a channel without one";
    for (const auto& [example, count] : compared) {
        EXPECT_GE(count, 160U) << example;
    }
}

// Layout maps do not look at the heading tables, which bend the rays of targets.
TEST_F(ExampleMaps, OfACollimatedDisplayTargetsLieUpToTenMillimetresBesideTheMap) {
    load("collimated");
    double farthest = 0;
    std::size_t compared = 0;
    for (const ChannelTargets& channel : TargetPlacer(TargetPlan()).place(*m_config).channels) {
        LayoutMapper map = mapperOf(channel.projectorId);
        for (const GridTarget& target : channel.grid) {
            LayoutPoint layout;
            map.toLayout({&target.picture, 1}, {&layout, 1});
            ASSERT_TRUE(layout.isMapped);
            farthest = std::max(farthest, norm(layout.point - target.point));
            ++compared;
        }
    }
    EXPECT_EQ(compared, 3U * 16U * 10U);
    EXPECT_NEAR(farthest, 0.010, 0.0005);
}

// Nodes on every edge of a cell of the map file, and between: both are bilinear in the same cells.
TEST_F(ExampleMaps, AWarpOfAMapFileReadsBackAsTheMapFile) {
    load("warped-wall");
    const TemporaryFolder folder;
    for (const char* name : {"left", "right"}) {
        LayoutMapper map = mapperOf(std::string(name) == "left" ? "Left" : "Right");
        const PictureWarp warp = PictureWarp::atNodes(map, InputProjection(*m_config, Panorama::FISHEYE), {1920, 1200},
                                                      {2 * 8 + 1, 3 * 5 + 1});
        EXPECT_EQ(warp.missed(), 0U);
        std::ostringstream text;
        WarpWriter::ofFormat("mesh")->write(warp, text);
        const CustomPlanarScreenToChannelMap written(Veltrani::fromUtf8(folder.write("written.map", text.str())),
                                                     nullptr);
        const CustomPlanarScreenToChannelMap original(
            Veltrani::fromUtf8(sourceFolder() + "/examples/warped-wall/" + name + ".map"), nullptr);
        for (int row = 0; row <= 37; ++row) {
            for (int column = 0; column <= 53; ++column) {
                const P2 pixel{1920.0 * column / 53, 1200.0 * row / 37};
                P2 here;
                P2 there;
                ASSERT_TRUE(written.mapChannel2DToScreen2D(pixel, here));
                ASSERT_TRUE(original.mapChannel2DToScreen2D(pixel, there));
                ASSERT_LE(norm(here - there), CLOSURE) << column << ' ' << row;
            }
        }
    }
}

}  // namespace
