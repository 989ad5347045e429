#include "ExportFiles/TriangleWarp.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>

namespace {

using Veltrani::ExportFiles::TriangleWarp;
using P2 = Point<double, 2>;

/// Of the pictures here, twice as wide as high.
const Point<int, 2> PIXELS{400, 200};

/// A corner by its place in the picture, (0, 0) bottom left.
void addCorner(TriangleMesh& mesh, const P2& picture, const P2& content) {
    mesh.vertices.push_back({2 * (2 * picture[0] - 1), 2 * picture[1] - 1, 0.0});
    mesh.textureCoordinates.push_back(content);
}

void addTriangle(TriangleMesh& mesh, std::uint32_t a, std::uint32_t b, std::uint32_t c) {
    mesh.triangles.push_back({a, b, c});
    mesh.textureTriangles.push_back({a, b, c});
}

void expectShown(const TriangleWarp& warp, const P2& place, const P2& content, const P2& alongU, const P2& alongV) {
    const auto shown = warp.shownAt(place);
    ASSERT_TRUE(shown) << place;
    EXPECT_LT(norm(shown->content - content), 1e-12) << place;
    EXPECT_LT(norm(shown->alongU - alongU), 1e-12) << place;
    EXPECT_LT(norm(shown->alongV - alongV), 1e-12) << place;
}

/// content = (0.1, 0.2) + u (0.5, 0.25) + v (-0.125, 0.75), whichever way round the corners go.
TEST(TriangleWarp, ContentIsLinearWithinATriangleAndNothingIsBeyondIt) {
    const auto content = [](const P2& at) {
        return P2{0.1 + 0.5 * at[0] - 0.125 * at[1], 0.2 + 0.25 * at[0] + 0.75 * at[1]};
    };
    for (const bool isTurned : {false, true}) {
        TriangleMesh mesh;
        const std::array<P2, 3> corners{P2{0.125, 0.25}, P2{0.75, 0.125}, P2{0.5, 0.875}};
        for (const P2& corner : corners) {
            addCorner(mesh, corner, content(corner));
        }
        addTriangle(mesh, 0, isTurned ? 2 : 1, isTurned ? 1 : 2);
        const TriangleWarp warp(mesh, PIXELS);
        for (const P2& place : {corners[0], corners[1], corners[2], P2{0.5, 0.375}, (corners[0] + corners[1]) * 0.5,
                                (corners[1] + corners[2]) * 0.5, (corners[2] + corners[0]) * 0.5}) {
            expectShown(warp, place, content(place), {0.5, 0.25}, {-0.125, 0.75});
        }
        // A little beyond each edge, far beyond each corner, and beyond the picture.
        for (std::size_t i = 0; i < 3; ++i) {
            const P2& from = corners[i];
            const P2& to = corners[(i + 1) % 3];
            const P2 way = to - from;
            EXPECT_FALSE(warp.shownAt((from + to) * 0.5 + P2{way[1], -way[0]} * 1e-6)) << i;
            EXPECT_FALSE(warp.shownAt(from - way * 1e-6)) << i;
        }
        EXPECT_FALSE(warp.shownAt({0.5, 1.5}));
        EXPECT_FALSE(warp.shownAt({-3.0, 0.25}));
    }
}

TEST(TriangleWarp, ATriangleWithoutAreaIsLeftOut) {
    TriangleMesh mesh;
    addCorner(mesh, {0.25, 0.25}, {0.0, 0.0});
    addCorner(mesh, {0.75, 0.75}, {1.0, 1.0});
    addCorner(mesh, {0.5, 0.5}, {0.5, 0.5});
    addTriangle(mesh, 0, 1, 2);
    EXPECT_FALSE(TriangleWarp(mesh, PIXELS).shownAt({0.375, 0.375}));
}

/// Places of a fine net, found among its many triangles, against the formula that the content follows in each of them.
TEST(TriangleWarp, EachOfManyTrianglesIsFoundWhereItLies) {
    constexpr std::uint32_t COLUMNS = 19;
    constexpr std::uint32_t ROWS = 13;
    const auto content = [](const P2& at) { return P2{at[0] * 0.75 + 0.125, 1 - at[1]}; };
    TriangleMesh mesh;
    for (std::uint32_t row = 0; row <= ROWS; ++row) {
        for (std::uint32_t column = 0; column <= COLUMNS; ++column) {
            const P2 at{static_cast<double>(column) / COLUMNS, static_cast<double>(row) / ROWS};
            addCorner(mesh, at, content(at));
            if (row < ROWS && column < COLUMNS) {
                const std::uint32_t a = row * (COLUMNS + 1) + column;
                // Each of their corners comes first, and each comes last.
                std::array<std::uint32_t, 3> lower{a, a + 1, a + COLUMNS + 2};
                std::array<std::uint32_t, 3> upper{a, a + COLUMNS + 2, a + COLUMNS + 1};
                for (auto* const corners : {&lower, &upper}) {
                    std::rotate(corners->begin(), corners->begin() + a % 3, corners->end());
                    addTriangle(mesh, (*corners)[0], (*corners)[1], (*corners)[2]);
                }
            }
        }
    }
    const TriangleWarp warp(mesh, PIXELS);
    std::mt19937 random(5);
    std::uniform_real_distribution<double> part(0, 1);
    for (int i = 0; i < 2000; ++i) {
        const P2 place{part(random), part(random)};
        expectShown(warp, place, content(place), {0.75, 0.0}, {0.0, -1.0});
    }
    for (const P2& place : {P2{0.0, 0.0}, P2{1.0, 0.0}, P2{0.0, 1.0}, P2{1.0, 1.0}}) {
        expectShown(warp, place, content(place), {0.75, 0.0}, {0.0, -1.0});
    }
    EXPECT_FALSE(warp.shownAt({1.001, 0.5}));
    EXPECT_FALSE(warp.shownAt({0.5, -0.001}));
}

}  // namespace
