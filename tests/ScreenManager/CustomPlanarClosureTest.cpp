// There and back through custom planar maps: whole pixels with the edges of the picture, and the edges of the screen.
#include "Common/Utf8.h"
#include "KelvoControl/WarpMeshText.h"
#include "LayoutMapFixture.h"
#include "ScreenManager/CustomPlanarLayoutToChannelMap.h"
#include "support/Sanitizers.h"
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <ostream>
#include <utility>

namespace {

using P2 = Point<double, 2>;

/// Of the picture or the screen: both ways together round some dozen times.
constexpr double CLOSURE = 1e-9;

/// A map file, and how much of its picture lies on the screen.
struct Warp {
    const char* name;
    std::size_t columns;
    std::size_t rows;
    double aspect;
    Point<int, 2> pixels;
    WarpMeshText::Place picture;  ///< from (s, t) of the mesh to the file's (x, y) for an aspect of 1
    WarpMeshText::Place screen;
    std::vector<std::size_t> unused;
    double leastMapped;   ///< part of the whole pixels
    bool isWithin;        ///< the screen: no edge of it is mapped, and the mesh is followed along its own border
    double leastOnEdges;  ///< part of these edges, or of that border
};

std::ostream& operator<<(std::ostream& out, const Warp& warp) {
    return out << warp.name;
}

P2 straight(double s, double t) {
    return {2 * s - 1, 2 * t - 1};
}

/// Fills the picture; rows and columns are not evenly spaced.
P2 uneven(double s, double t) {
    return {2 * s * s - 1, 2 * std::sqrt(t) - 1};
}

/// Fills the picture; the nodes inside stand in no straight lines.
P2 bulged(double s, double t) {
    const double swell = 2.4 * s * (1 - s) * t * (1 - t);
    return {2 * (s + swell) - 1, 2 * (t - swell) - 1};
}

/// Reaches beyond the picture above and below, with edges that are bent.
P2 overhanging(double s, double t) {
    return {(2 * s - 1) * (1 - 0.1 * t * (1 - t)), 1.15 * (2 * t - 1) + 0.05 * std::sin(6 * s)};
}

P2 wholeScreen(double s, double t) {
    return {s, t};
}

/// Fills the screen, bent inside.
P2 bentInside(double s, double t) {
    const double swell = 2.2 * s * (1 - s) * t * (1 - t);
    return {s - swell, t + swell};
}

/// Lies within the screen, with edges that are bent and slanted.
P2 bentEdges(double s, double t) {
    return {0.1 + 0.8 * s + 0.06 * std::sin(3 * t) * (0.5 + s), 0.05 + 0.7 * t + 0.15 * s * s + 0.04 * std::sin(5 * s)};
}

/// Reaches beyond the screen on all sides.
P2 beyondScreen(double s, double t) {
    const P2 inside = bentInside(s, t);
    return {1.3 * inside[0] - 0.17, 1.2 * inside[1] - 0.09};
}

P2 turned(double s, double t) {
    return {1 - t, s};
}

const Warp WARPS[] = {
    {"OneCell", 2, 2, 1.6, {1920, 1200}, straight, wholeScreen, {}, 1.0, false, 1.0},
    {"Straight", 7, 4, 16.0 / 9, {1366, 768}, straight, wholeScreen, {}, 1.0, false, 1.0},
    {"Uneven", 12, 9, 4.0 / 3, {641, 479}, uneven, bentInside, {}, 1.0, false, 1.0},
    {"BentScreen", 23, 17, 1.6, {1280, 800}, straight, bentEdges, {}, 1.0, true, 1.0},
    {"BentPicture", 19, 31, 1.77778, {1000, 563}, bulged, wholeScreen, {}, 1.0, false, 1.0},
    {"BothBent", 9, 14, 9.0 / 16, {450, 801}, bulged, bentInside, {}, 1.0, false, 1.0},
    {"Turned", 6, 11, 1.0, {333, 777}, bulged, turned, {}, 1.0, false, 1.0},
    {"BeyondThePicture", 13, 8, 1.6, {1024, 640}, overhanging, bentEdges, {}, 0.95, true, 0.32},
    {"BeyondTheScreen", 15, 10, 1.25, {800, 640}, bulged, beyondScreen, {}, 0.5, false, 1.0},
    {"StraightWithHoles", 7, 6, 1.6, {640, 400}, straight, bentEdges, {8, 26, 41}, 0.7, true, 0.63},
    {"BentWithHoles", 7, 6, 1.6, {640, 400}, bulged, bentInside, {8, 26, 41}, 0.7, false, 0.62},
};

class CustomPlanarClosure : public LayoutMapFixture, public testing::WithParamInterface<Warp> {
protected:
    CustomPlanarClosure() {
        const Warp& warp = GetParam();
        WarpMeshText mesh;
        mesh.columns = warp.columns;
        mesh.rows = warp.rows;
        mesh.aspect = warp.aspect;
        mesh.width = first.width = warp.pixels[0];
        mesh.height = first.height = warp.pixels[1];
        mesh.picture = [&warp](double s, double t) {
            const P2 place = warp.picture(s, t);
            return P2{warp.aspect * place[0], place[1]};
        };
        mesh.screen = warp.screen;
        mesh.unused = warp.unused;
        config.projectors = {&first};
        first.customPlanarFile = Veltrani::fromUtf8(folder.write("warp.map", mesh.text()));
        map = std::make_unique<CustomPlanarLayoutToChannelMap>(&config);
    }

    /// What became of points on the way there and back.
    struct Tally {
        int asked = 0;
        int mapped = 0;
        int lost = 0;
        double worst = 0;
    };

    void followPixel(const P2& picture, Tally& tally) {
        ++tally.asked;
        if (!map->mapChannelToLayout(picture, layout, 0)) {
            return;
        }
        ++tally.mapped;
        if (!map->mapLayoutToChannel(layout, channel, 0)) {
            ++tally.lost;
            return;
        }
        tally.worst = std::max(tally.worst, norm(channel - picture));
    }

    void followScreen(double s, double t, Tally& tally) {
        ++tally.asked;
        if (!map->mapLayoutToChannel({s, 0.0, t}, channel, 0)) {
            return;
        }
        ++tally.mapped;
        if (!map->mapChannelToLayout(channel, layout, 0)) {
            ++tally.lost;
            return;
        }
        tally.worst = std::max(tally.worst, norm(layout - Point<double, 3>{s, 0.0, t}));
    }

    /// Where a node of the mesh lies on the screen.
    static P2 node(std::size_t column, std::size_t row) {
        const Warp& warp = GetParam();
        return warp.screen(static_cast<double>(column) / static_cast<double>(warp.columns - 1),
                           static_cast<double>(row) / static_cast<double>(warp.rows - 1));
    }

    void followEdgesOfTheScreen(Tally& tally) {
        constexpr int STEPS = 5000;
        for (int step = 0; step <= STEPS; ++step) {
            const double part = static_cast<double>(step) / STEPS;
            for (const double edge : {0.0, 1.0}) {
                followScreen(edge, part, tally);
                followScreen(part, edge, tally);
            }
        }
    }

    void followStretch(const P2& from, const P2& to, Tally& tally) {
        constexpr int STEPS = 500;
        for (int step = 0; step <= STEPS; ++step) {
            const P2 place = from + static_cast<double>(step) / STEPS * (to - from);
            followScreen(place[0], place[1], tally);
        }
    }

    /// From node to node, all around.
    void followBorderOfTheMesh(Tally& tally) {
        const std::size_t lastColumn = GetParam().columns - 1;
        const std::size_t lastRow = GetParam().rows - 1;
        for (std::size_t column = 0; column < lastColumn; ++column) {
            followStretch(node(column, 0), node(column + 1, 0), tally);
            followStretch(node(column, lastRow), node(column + 1, lastRow), tally);
        }
        for (std::size_t row = 0; row < lastRow; ++row) {
            followStretch(node(0, row), node(0, row + 1), tally);
            followStretch(node(lastColumn, row), node(lastColumn, row + 1), tally);
        }
    }

    const TemporaryFolder folder;
    std::unique_ptr<CustomPlanarLayoutToChannelMap> map;
};

TEST_P(CustomPlanarClosure, EveryWholePixelComesBackEdgesIncluded) {
    const auto [width, height] = std::pair(GetParam().pixels[0], GetParam().pixels[1]);
    Tally inside;
    Tally edges;
    for (int y = 0; y <= height; ++y) {
        for (int x = 0; x <= width; ++x) {
            const bool isEdge = x == 0 || y == 0 || x == width || y == height;
            if (isEdge || !IS_SANITIZED || (x + y) % 16 == 0) {
                followPixel({static_cast<double>(x) / width, static_cast<double>(y) / height}, isEdge ? edges : inside);
            }
        }
    }
    EXPECT_EQ(edges.lost, 0) << "of " << edges.mapped << " on the edges";
    EXPECT_EQ(inside.lost, 0) << "of " << inside.mapped;
    EXPECT_LE(std::max(edges.worst, inside.worst), CLOSURE);
    // Under the sanitizers only a part of the inside is followed: it is counted apart from the edges.
    EXPECT_GE(inside.mapped, GetParam().leastMapped * inside.asked);
    EXPECT_TRUE(GetParam().leastMapped < 1.0 || edges.mapped == edges.asked) << edges.mapped << " of " << edges.asked;
}

TEST_P(CustomPlanarClosure, EveryPlaceWhereTheScreenOrTheMeshEndsComesBack) {
    Tally tally;
    GetParam().isWithin ? followBorderOfTheMesh(tally) : followEdgesOfTheScreen(tally);
    EXPECT_EQ(tally.lost, 0) << "of " << tally.mapped;
    EXPECT_LE(tally.worst, CLOSURE);
    EXPECT_GE(tally.mapped, GetParam().leastOnEdges * tally.asked) << tally.mapped << " of " << tally.asked;
    EXPECT_GT(GetParam().leastOnEdges, 0) << "nothing could be lost";
}

INSTANTIATE_TEST_SUITE_P(Warps, CustomPlanarClosure, testing::ValuesIn(WARPS),
                         [](const auto& warp) { return std::string(warp.param.name); });

}  // namespace
