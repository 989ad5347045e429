#include "KelvoControl/CustomPlanarScreenToChannelMap.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "KelvoScreen/FlatScreen.h"
#include "WarpMeshText.h"
#include "support/Sanitizers.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace {

using P2 = Point<double, 2>;

constexpr double NAN_ = std::numeric_limits<double>::quiet_NaN();
const P2 UNTOUCHED{-77.0, -78.0};

class CustomPlanarMap : public testing::Test {
protected:
    CustomPlanarScreenToChannelMap load(const WarpMeshText& mesh) const {
        return {Veltrani::fromUtf8(m_folder.write("mesh.data", mesh.text())), nullptr};
    }

    TemporaryFolder m_folder;
};

/// A strong, smooth warp: shifted, sheared and bent, far from any straight grid.
P2 bent(double s, double t) {
    return {0.1 + 0.8 * s + 0.1 * std::sin(3 * t) * (0.5 + s), 0.05 + 0.7 * t + 0.15 * s * s + 0.04 * std::sin(5 * s)};
}

/// A picture whose inner nodes do not stand in straight lines.
P2 bulged(double s, double t) {
    const double swell = 0.15 * std::sin(3.14159265358979 * s) * std::sin(3.14159265358979 * t);
    return {1.6 * (2 * (s + swell) - 1), 2 * (t - swell) - 1};
}

/// The bilinear value at (a, b) parts of cell (column, row), from its four corners: a second route beside the map.
P2 bilinear(const WarpMeshText& mesh, const WarpMeshText::Place& plane, std::size_t column, std::size_t row, double a,
            double b) {
    const auto node = [&](std::size_t i, std::size_t j) { return plane(mesh.s(column + i), mesh.t(row + j)); };
    return node(0, 0) * ((1 - a) * (1 - b)) + node(1, 0) * (a * (1 - b)) + node(0, 1) * ((1 - a) * b) +
           node(1, 1) * (a * b);
}

P2 pixelOf(const WarpMeshText& mesh, const P2& xy) {
    return {(xy[0] + mesh.aspect) / (2 * mesh.aspect) * mesh.width, (xy[1] + 1) / 2 * mesh.height};
}

double distance(const P2& a, const P2& b, const P2& unit) {
    return std::max(std::abs(a[0] - b[0]) / unit[0], std::abs(a[1] - b[1]) / unit[1]);
}

TEST_F(CustomPlanarMap, ATextIsReadAsItsFileIs) {
    const WarpMeshText mesh;
    const auto ofText = CustomPlanarScreenToChannelMap::parse(mesh.text(), "some text", nullptr);
    EXPECT_EQ(ofText.pictureSize(), load(mesh).pictureSize());
    P2 screen;
    P2 expected;
    ASSERT_TRUE(ofText.mapChannel2DToScreen2D({0.3 * mesh.width, 0.6 * mesh.height}, screen));
    ASSERT_TRUE(load(mesh).mapChannel2DToScreen2D({0.3 * mesh.width, 0.6 * mesh.height}, expected));
    EXPECT_EQ(screen, expected);
    EXPECT_THROW((void)CustomPlanarScreenToChannelMap::parse("2\n2", "some text", nullptr), VeltraniParseException);
    EXPECT_THROW((void)CustomPlanarScreenToChannelMap::parse("", "some text", nullptr), VeltraniParseException);
}

TEST_F(CustomPlanarMap, AnEmptyNameIsAnEmptyMap) {
    const CustomPlanarScreenToChannelMap map(L"", nullptr);
    P2 out = UNTOUCHED;
    EXPECT_FALSE(map.mapChannel2DToScreen2D({0.0, 0.0}, out));
    EXPECT_FALSE(map.mapScreen2DToChannel2D({0.5, 0.5}, out));
    EXPECT_EQ(out, UNTOUCHED);
    EXPECT_EQ(map.pictureSize(), P2());
}

TEST_F(CustomPlanarMap, TheSizeOfItsPictureIsThatOfTheFile) {
    WarpMeshText mesh;
    mesh.width = 1400;
    mesh.height = 1050;
    EXPECT_EQ(load(mesh).pictureSize(), P2(1400, 1050));
}

TEST_F(CustomPlanarMap, AMissingFileIsNamed) {
    const std::wstring name = Veltrani::fromUtf8(m_folder.file("nowhere.data"));
    try {
        const CustomPlanarScreenToChannelMap map(name, nullptr);
        FAIL() << "a missing file was accepted";
    } catch (const VeltraniMissingFileException& fault) {
        EXPECT_NE(fault.message.find(name), std::wstring::npos);
    }
}

TEST_F(CustomPlanarMap, AFolderIsNoFile) {
    EXPECT_THROW(CustomPlanarScreenToChannelMap(Veltrani::fromUtf8(m_folder.path()), nullptr),
                 VeltraniMissingFileException);
}

TEST_F(CustomPlanarMap, PixelsRunFromTheBottomLeftToTheTopRight) {
    WarpMeshText mesh;
    const auto map = load(mesh);
    P2 out;
    ASSERT_TRUE(map.mapChannel2DToScreen2D({0.0, 0.0}, out));
    EXPECT_EQ(out, P2(0.0, 0.0));
    ASSERT_TRUE(map.mapChannel2DToScreen2D({1920.0, 1200.0}, out));
    EXPECT_EQ(out, P2(1.0, 1.0));
    ASSERT_TRUE(map.mapScreen2DToChannel2D({0.25, 0.75}, out));
    EXPECT_NEAR(out[0], 480.0, 1e-9);
    EXPECT_NEAR(out[1], 900.0, 1e-9);
}

TEST_F(CustomPlanarMap, RowsAndColumnsOfANonSquareMeshAreTheRightWayRound) {
    WarpMeshText mesh;
    mesh.columns = 5;
    mesh.rows = 2;
    mesh.screen = [](double s, double t) { return P2{0.25 * s, 0.5 + 0.25 * t}; };
    const auto map = load(mesh);
    P2 out;
    ASSERT_TRUE(map.mapChannel2DToScreen2D({1440.0, 300.0}, out));
    EXPECT_NEAR(out[0], 0.1875, 1e-12);
    EXPECT_NEAR(out[1], 0.5625, 1e-12);
}

TEST_F(CustomPlanarMap, NothingIsMappedOutsideAndTheResultIsLeftAlone) {
    WarpMeshText mesh;
    mesh.screen = bent;
    const auto map = load(mesh);
    P2 out = UNTOUCHED;
    for (const P2& pixel : {P2{-1e-3, 5.0}, P2{1920.001, 5.0}, P2{5.0, -1e-3}, P2{5.0, 1200.001}, P2{NAN_, 5.0},
                            P2{5.0, NAN_}, P2{1e300, 5.0}, P2{5.0, -INFINITY}}) {
        EXPECT_FALSE(map.mapChannel2DToScreen2D(pixel, out)) << pixel[0] << ", " << pixel[1];
    }
    for (const P2& place : {P2{0.0, 0.0}, P2{1.2, 0.5}, P2{NAN_, 0.5}, P2{0.5, NAN_}, P2{0.5, INFINITY}}) {
        EXPECT_FALSE(map.mapScreen2DToChannel2D(place, out)) << place[0] << ", " << place[1];
    }
    EXPECT_EQ(out, UNTOUCHED);
}

TEST_F(CustomPlanarMap, TheEdgeOfTheMeshTakesRoundingAndNoMore) {
    for (const bool straight : {true, false}) {
        WarpMeshText mesh;
        if (!straight) {
            mesh.picture = bulged;
        }
        const auto map = load(mesh);
        P2 out;
        ASSERT_TRUE(map.mapChannel2DToScreen2D({1920 * (1 + 0.9e-9), 600.0}, out));
        EXPECT_EQ(out[0], 1.0);
        EXPECT_FALSE(map.mapChannel2DToScreen2D({1920 * (1 + 1.1e-9), 600.0}, out));
        ASSERT_TRUE(map.mapScreen2DToChannel2D({0.4, -0.9e-9}, out));
        EXPECT_EQ(out[1], 0.0);
        EXPECT_FALSE(map.mapScreen2DToChannel2D({0.4, -1.1e-9}, out));
    }
}

/// Forward against the corners' own bilinear value, and back: random places in every cell, edges and nodes included.
void expectExactBothWays(const CustomPlanarScreenToChannelMap& map, const WarpMeshText& mesh, int placesPerCell) {
    std::mt19937 random(20261121);
    std::uniform_real_distribution<double> part(0.0, 1.0);
    const P2 picture{static_cast<double>(mesh.width), static_cast<double>(mesh.height)};
    double worst = 0;
    for (std::size_t row = 0; row + 1 < mesh.rows; ++row) {
        for (std::size_t column = 0; column + 1 < mesh.columns; ++column) {
            for (int place = 0; place < placesPerCell; ++place) {
                const double a = place % 4 == 1 ? 0.0 : place % 4 == 2 ? 1.0 : part(random);
                const double b = place % 5 == 1 ? 0.0 : place % 5 == 2 ? 1.0 : part(random);
                const P2 pixel = pixelOf(mesh, bilinear(mesh, mesh.picture, column, row, a, b));
                const P2 screen = bilinear(mesh, mesh.screen, column, row, a, b);
                P2 there;
                P2 back;
                ASSERT_TRUE(map.mapChannel2DToScreen2D(pixel, there))
                    << column << ", " << row << ": " << a << ", " << b;
                ASSERT_TRUE(map.mapScreen2DToChannel2D(screen, back))
                    << column << ", " << row << ": " << a << ", " << b;
                worst = std::max({worst, distance(there, screen, {1.0, 1.0}), distance(back, pixel, picture)});
                P2 again;
                ASSERT_TRUE(map.mapScreen2DToChannel2D(there, again));
                worst = std::max(worst, distance(again, pixel, picture));
            }
        }
    }
    EXPECT_LE(worst, 1e-9);
}

TEST_F(CustomPlanarMap, AWarpedScreenIsExactBothWays) {
    WarpMeshText mesh;
    mesh.columns = 23;
    mesh.rows = 17;
    mesh.screen = bent;
    expectExactBothWays(load(mesh), mesh, IS_SANITIZED ? 10 : 200);
}

TEST_F(CustomPlanarMap, AWarpedPictureIsExactBothWays) {
    WarpMeshText mesh;
    mesh.columns = 19;
    mesh.rows = 31;
    mesh.picture = bulged;
    mesh.screen = bent;
    expectExactBothWays(load(mesh), mesh, IS_SANITIZED ? 10 : 200);
}

TEST_F(CustomPlanarMap, MirroredAndUpsideDownMeshesAreExactBothWays) {
    WarpMeshText mesh;
    mesh.columns = 7;
    mesh.rows = 5;
    mesh.picture = [](double s, double t) { return P2{1.6 * (1 - 2 * s), 1 - 2 * t}; };
    mesh.screen = [](double s, double t) { return bent(1 - s, t); };
    expectExactBothWays(load(mesh), mesh, 100);
}

TEST_F(CustomPlanarMap, UnevenRowsAndColumnsAreExactBothWays) {
    WarpMeshText mesh;
    mesh.columns = 12;
    mesh.rows = 9;
    mesh.picture = [](double s, double t) { return P2{1.6 * (2 * s * s * s - 1), 2 * std::sqrt(t) - 1}; };
    expectExactBothWays(load(mesh), mesh, 100);
}

TEST_F(CustomPlanarMap, ARowThatIsOnePointIsMapped) {
    WarpMeshText mesh;
    mesh.columns = 9;
    mesh.rows = 6;
    mesh.screen = [](double s, double t) {
        return P2{0.5 + 0.5 * t * std::cos(3 * s), 0.5 + 0.5 * t * std::sin(3 * s)};
    };
    const auto map = load(mesh);
    P2 out;
    ASSERT_TRUE(map.mapScreen2DToChannel2D({0.5, 0.5}, out));
    EXPECT_EQ(out[1], 0.0) << "the pole is the bottom row";
    P2 back;
    ASSERT_TRUE(map.mapChannel2DToScreen2D(out, back));
    EXPECT_LE(distance(back, {0.5, 0.5}, {1.0, 1.0}), 1e-12);
}

TEST_F(CustomPlanarMap, NoRandomPointFallsIntoAGapBetweenCells) {
    WarpMeshText mesh;
    mesh.columns = 40;
    mesh.rows = 30;
    mesh.picture = bulged;
    mesh.screen = bent;
    const auto map = load(mesh);
    std::mt19937 random(7);
    std::uniform_real_distribution<double> x(0.0, 1920.0);
    std::uniform_real_distribution<double> y(0.0, 1200.0);
    for (int i = 0; i < (IS_SANITIZED ? 20'000 : 400'000); ++i) {
        const P2 pixel{x(random), y(random)};
        P2 screen;
        P2 back;
        ASSERT_TRUE(map.mapChannel2DToScreen2D(pixel, screen)) << i;
        ASSERT_TRUE(map.mapScreen2DToChannel2D(screen, back)) << i;
        ASSERT_LE(distance(back, pixel, {1920.0, 1200.0}), 1e-9) << i;
    }
}

TEST_F(CustomPlanarMap, AnUnusedNodeTakesTheCellsAroundItAndNoOther) {
    for (const bool straight : {true, false}) {
        WarpMeshText mesh;
        mesh.columns = 6;
        mesh.rows = 5;
        mesh.unused = {2 * 6 + 3};  // node (3, 2)
        if (!straight) {
            mesh.picture = bulged;
            mesh.screen = bent;
        }
        const auto map = load(mesh);
        for (std::size_t row = 0; row + 1 < mesh.rows; ++row) {
            for (std::size_t column = 0; column + 1 < mesh.columns; ++column) {
                const bool touches = (column == 2 || column == 3) && (row == 1 || row == 2);
                const P2 pixel = pixelOf(mesh, bilinear(mesh, mesh.picture, column, row, 0.5, 0.5));
                P2 out;
                EXPECT_EQ(map.mapChannel2DToScreen2D(pixel, out), !touches) << column << ", " << row;
                const P2 screen = bilinear(mesh, mesh.screen, column, row, 0.5, 0.5);
                EXPECT_EQ(map.mapScreen2DToChannel2D(screen, out), !touches) << column << ", " << row;
            }
        }
    }
}

TEST_F(CustomPlanarMap, TheEdgeTowardsAnUnusedCellBelongsToItsUsedNeighbour) {
    for (const bool straight : {true, false}) {
        WarpMeshText mesh;
        mesh.columns = 6;
        mesh.rows = 5;
        mesh.unused = {2 * 6 + 3};
        if (!straight) {
            mesh.picture = bulged;
            mesh.screen = bent;
        }
        const auto map = load(mesh);
        // The left edge of the hole, the right edge of cell (1, 1).
        const P2 pixel = pixelOf(mesh, bilinear(mesh, mesh.picture, 1, 1, 1.0, 0.3));
        const P2 screen = bilinear(mesh, mesh.screen, 1, 1, 1.0, 0.3);
        P2 out;
        ASSERT_TRUE(map.mapChannel2DToScreen2D(pixel, out));
        EXPECT_LE(distance(out, screen, {1.0, 1.0}), 1e-9);
        ASSERT_TRUE(map.mapScreen2DToChannel2D(screen, out));
        EXPECT_LE(distance(out, pixel, {1920.0, 1200.0}), 1e-9);
    }
}

TEST_F(CustomPlanarMap, WhereCellsOverlapOneOfThemHoldsAlwaysTheSame) {
    WarpMeshText mesh;
    mesh.columns = 3;
    mesh.rows = 2;
    // The second cell lies over the first one on the screen.
    mesh.screen = [](double s, double t) { return P2{s <= 0.5 ? s : 1 - s, t}; };
    const auto map = load(mesh);
    P2 out;
    ASSERT_TRUE(map.mapScreen2DToChannel2D({0.25, 0.5}, out));
    EXPECT_NEAR(std::abs(out[0] - 960), 480.0, 1e-9) << "a quarter from either side";
    const P2 first = out;
    ASSERT_TRUE(map.mapScreen2DToChannel2D({0.1, 0.1}, out));
    ASSERT_TRUE(map.mapScreen2DToChannel2D({0.25, 0.5}, out));
    EXPECT_EQ(out, first);
    P2 back;
    ASSERT_TRUE(map.mapChannel2DToScreen2D(out, back));
    EXPECT_LE(distance(back, {0.25, 0.5}, {1.0, 1.0}), 1e-12);
}

TEST_F(CustomPlanarMap, CopiesMapAlikeAndKeepTheScreen) {
    WarpMeshText mesh;
    mesh.screen = bent;
    auto screen = std::make_shared<FlatScreen>();
    const std::weak_ptr<FlatScreen> watched = screen;
    const std::wstring file = Veltrani::fromUtf8(m_folder.write("mesh.data", mesh.text()));
    auto original = std::make_unique<CustomPlanarScreenToChannelMap>(file, std::move(screen));
    CustomPlanarScreenToChannelMap assigned(L"", nullptr);
    {
        const CustomPlanarScreenToChannelMap copy(*original);
        assigned = copy;
        P2 expected;
        ASSERT_TRUE(original->mapChannel2DToScreen2D({700.0, 300.0}, expected));
        original.reset();
        P2 out;
        ASSERT_TRUE(copy.mapChannel2DToScreen2D({700.0, 300.0}, out));
        EXPECT_EQ(out, expected);
    }
    P2 out;
    EXPECT_TRUE(assigned.mapChannel2DToScreen2D({700.0, 300.0}, out));
    EXPECT_FALSE(watched.expired());
    assigned = CustomPlanarScreenToChannelMap(L"", nullptr);
    EXPECT_TRUE(watched.expired());
}

}  // namespace
