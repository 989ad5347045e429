#include "KelvoScreen/detail/PolygonCutter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <string>

namespace {

using Veltrani::KelvoScreenDetail::PolygonCutter;
using P2 = Point<double, 2>;
using P3 = Point<double, 3>;
using Triangle = PolygonCutter::Triangle;
using Outline = std::vector<P2>;

double doubleArea(const P2& a, const P2& b, const P2& c) {
    return (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]);
}

double doubleArea(const Outline& outline) {
    double sum = 0;
    for (std::size_t i = 0; i < outline.size(); ++i) {
        const P2& a = outline[i];
        const P2& b = outline[(i + 1) % outline.size()];
        sum += a[0] * b[1] - a[1] * b[0];
    }
    return sum;
}

std::vector<P3> inPlane(const Outline& outline, const P3& origin, const P3& across, const P3& up) {
    std::vector<P3> corners;
    for (const P2& corner : outline) {
        corners.push_back(origin + corner[0] * across + corner[1] * up);
    }
    return corners;
}

std::vector<P3> flat(const Outline& outline) {
    return inPlane(outline, {}, {1.0, 0.0, 0.0}, {0.0, 1.0, 0.0});
}

std::vector<Triangle> cut(const std::vector<P3>& corners) {
    PolygonCutter cutter;
    const auto triangles = cutter.cut(corners);
    return {triangles.begin(), triangles.end()};
}

/// Whether a vertical line upwards from p crosses the outline an odd number of times.
bool isInside(const P2& p, const Outline& outline) {
    bool inside = false;
    for (std::size_t i = 0; i < outline.size(); ++i) {
        const P2& a = outline[i];
        const P2& b = outline[(i + 1) % outline.size()];
        if ((a[0] > p[0]) != (b[0] > p[0]) && p[1] < a[1] + (b[1] - a[1]) * (p[0] - a[0]) / (b[0] - a[0])) {
            inside = !inside;
        }
    }
    return inside;
}

int coveringTriangles(const P2& p, const Outline& outline, const std::vector<Triangle>& triangles) {
    return static_cast<int>(std::count_if(triangles.begin(), triangles.end(), [&](const Triangle& t) {
        const P2 &a = outline[t[0]], &b = outline[t[1]], &c = outline[t[2]];
        return doubleArea(a, b, p) > 0 && doubleArea(b, c, p) > 0 && doubleArea(c, a, p) > 0;
    }));
}

/// The law of a triangulation: n - 2 triangles, none turned over, their areas add up to that of the outline, and a
/// point is covered once inside and never outside.
void expectTriangulated(const Outline& outline, const std::vector<Triangle>& triangles, const std::string& what) {
    SCOPED_TRACE(what);
    ASSERT_EQ(triangles.size(), outline.size() - 2);
    const double area = doubleArea(outline);
    double sum = 0;
    for (const Triangle& t : triangles) {
        const double part = doubleArea(outline[t[0]], outline[t[1]], outline[t[2]]);
        EXPECT_GE(part, -1e-12 * area);
        sum += part;
    }
    EXPECT_NEAR(sum, area, 1e-9 * area);
    std::mt19937_64 random(99);
    std::uniform_real_distribution<double> coordinate(-1.1, 1.1);
    int inside = 0;
    for (int i = 0; i < 300; ++i) {
        const P2 p{coordinate(random), coordinate(random)};
        const bool expected = isInside(p, outline);
        inside += expected ? 1 : 0;
        EXPECT_EQ(coveringTriangles(p, outline, triangles), expected ? 1 : 0) << p[0] << " " << p[1];
    }
    EXPECT_GT(inside, 0);
}

Outline starOutline(std::size_t corners, std::uint64_t seed) {
    std::mt19937_64 random(seed);
    std::uniform_real_distribution<double> radius(0.2, 1.0);
    Outline outline;
    for (std::size_t i = 0; i < corners; ++i) {
        const double angle = 2 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(corners);
        const double r = radius(random);
        outline.push_back({r * std::cos(angle), r * std::sin(angle)});
    }
    return outline;
}

/// Teeth that hang from a common back.
Outline combOutline(std::size_t teeth) {
    Outline outline{{1.0, -1.0}, {1.0, 1.0}, {-1.0, 1.0}};
    for (std::size_t i = 0; i < teeth; ++i) {
        const double x = -1 + 2 * static_cast<double>(i) / static_cast<double>(teeth);
        outline.push_back({x, -1.0});
        outline.push_back({x + 1 / static_cast<double>(teeth), 0.9});
    }
    return outline;
}

/// A band of constant width, rolled up.
Outline spiralOutline(std::size_t steps) {
    Outline outer;
    Outline inner;
    for (std::size_t i = 0; i <= steps; ++i) {
        const double turns = 3 * static_cast<double>(i) / static_cast<double>(steps);
        const double angle = 2 * std::numbers::pi * turns;
        const double r = 0.1 + 0.25 * turns;
        outer.push_back({r * std::cos(angle), r * std::sin(angle)});
        inner.push_back({(r + 0.12) * std::cos(angle), (r + 0.12) * std::sin(angle)});
    }
    std::reverse(outer.begin(), outer.end());
    outer.insert(outer.end(), inner.begin(), inner.end());
    return outer;
}

TEST(PolygonCutter, LeavesATriangleAsItIs) {
    EXPECT_EQ(cut(flat({{0.0, 0.0}, {1.0, 0.0}, {0.0, 1.0}})), (std::vector<Triangle>{{0, 1, 2}}));
    EXPECT_EQ(cut(std::vector<P3>(3)), (std::vector<Triangle>{{0, 1, 2}}));
}

TEST(PolygonCutter, CutsAConvexQuadrilateralFromItsFirstCorner) {
    EXPECT_EQ(cut(flat({{0.0, 0.0}, {5.0, 0.0}, {5.0, 1.0}, {0.0, 1.0}})),
              (std::vector<Triangle>{{0, 1, 2}, {0, 2, 3}}));
}

TEST(PolygonCutter, CutsAConcaveQuadrilateralAtItsHollowCorner) {
    const Outline arrow{{-1.0, -1.0}, {1.0, 0.0}, {-1.0, 1.0}, {-0.5, 0.0}};
    for (std::size_t shift = 0; shift < 4; ++shift) {
        Outline outline = arrow;
        std::rotate(outline.begin(), outline.begin() + static_cast<std::ptrdiff_t>(shift), outline.end());
        expectTriangulated(outline, cut(flat(outline)), "shifted by " + std::to_string(shift));
    }
}

TEST(PolygonCutter, CutsConcavePolygonsInAnyPlane) {
    const std::vector<std::pair<P3, P3>> planes = {{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}},
                                                   {{0.0, 1.0, 0.0}, {1.0, 0.0, 0.0}},
                                                   {{0.0, 0.0, -1.0}, {1.0, 0.0, 0.0}},
                                                   {{0.0, 1.0, 0.0}, {0.0, 0.0, -1.0}},
                                                   {{0.36, 0.48, -0.8}, {-0.8, 0.6, 0.0}}};
    for (const auto& [across, up] : planes) {
        for (const std::size_t corners : {5U, 6U, 7U, 12U, 50U, 333U}) {
            const Outline outline = starOutline(corners, corners);
            expectTriangulated(outline, cut(inPlane(outline, {14678.0, -3.0, 9605.0}, across, up)),
                               std::to_string(corners) + " corners");
        }
    }
}

TEST(PolygonCutter, CutsCombsAndSpirals) {
    for (const std::size_t teeth : {1U, 2U, 3U, 10U, 100U}) {
        expectTriangulated(combOutline(teeth), cut(flat(combOutline(teeth))), std::to_string(teeth) + " teeth");
    }
    expectTriangulated(spiralOutline(200), cut(flat(spiralOutline(200))), "spiral");
}

TEST(PolygonCutter, CutsAroundAHoleThatASlitLeadsTo) {
    const Outline outline{{-1.0, -1.0}, {1.0, -1.0}, {1.0, 1.0}, {-1.0, 1.0}, {-1.0, -1.0},
                          {-0.5, -0.5}, {-0.5, 0.5}, {0.5, 0.5}, {0.5, -0.5}, {-0.5, -0.5}};
    expectTriangulated(outline, cut(flat(outline)), "slit");
}

TEST(PolygonCutter, KeepsCornersInTheMiddleOfAnEdge) {
    const Outline outline{{-1.0, -1.0}, {0.0, -1.0}, {1.0, -1.0}, {1.0, 0.0},
                          {1.0, 1.0},   {0.0, 1.0},  {-1.0, 1.0}, {-1.0, 0.0}};
    const std::vector<Triangle> triangles = cut(flat(outline));
    expectTriangulated(outline, triangles, "square with middles");
    for (const Triangle& t : triangles) {
        EXPECT_GT(doubleArea(outline[t[0]], outline[t[1]], outline[t[2]]), 0);
    }
}

TEST(PolygonCutter, RemovesSpikes) {
    const Outline outline{{-1.0, -1.0}, {1.0, -1.0}, {0.0, 0.0}, {1.0, -1.0}, {1.0, 1.0}, {-1.0, 1.0}};
    expectTriangulated(outline, cut(flat(outline)), "spike into the square");
}

/// No corner of it is an ear until the tip is gone.
TEST(PolygonCutter, RemovesASpikeThatIsWalkedBackOnlyHalfWay) {
    const Outline outline{{0.5, 0.0},    {0.625, 0.625}, {0.0, 0.8125},    {-0.9375, 0.0},
                          {0.0, -0.875}, {0.0, -0.1875}, {0.0, -0.359375}, {0.0, -0.359375}};
    expectTriangulated(outline, cut(flat(outline)), "half a spike");
}

TEST(PolygonCutter, RoundPolygonsGiveNoFanOfSlivers) {
    Outline circle;
    constexpr int CORNERS = 256;
    for (int i = 0; i < CORNERS; ++i) {
        const double angle = 2 * std::numbers::pi * i / CORNERS;
        circle.push_back({std::cos(angle), std::sin(angle)});
    }
    const std::vector<Triangle> triangles = cut(flat(circle));
    expectTriangulated(circle, triangles, "circle");
    std::vector<int> uses(CORNERS);
    for (const Triangle& t : triangles) {
        for (const std::uint32_t corner : t) {
            ++uses[corner];
        }
    }
    EXPECT_LE(*std::max_element(uses.begin(), uses.end()), 20);
}

TEST(PolygonCutter, IsIndependentOfTheSizeOfThePolygon) {
    const Outline outline = starOutline(40, 3);
    const std::vector<Triangle> expected = cut(flat(outline));
    for (const double size : {0x1p-900, 0x1p-300, 0x1p300, 0x1p900}) {
        std::vector<P3> corners = flat(outline);
        for (P3& corner : corners) {
            corner *= size;
        }
        EXPECT_EQ(cut(corners), expected) << size;
    }
}

TEST(PolygonCutter, GivesTheSameTrianglesAgain) {
    PolygonCutter cutter;
    const std::vector<P3> star = flat(starOutline(60, 5));
    const auto first = cutter.cut(star);
    const std::vector<Triangle> kept(first.begin(), first.end());
    (void)cutter.cut(flat(combOutline(30)));
    const auto again = cutter.cut(star);
    EXPECT_EQ(std::vector<Triangle>(again.begin(), again.end()), kept);
}

/// What has no right answer must still end, with every corner used and none invented.
void expectSomeTriangles(const std::vector<P3>& corners, const std::string& what) {
    SCOPED_TRACE(what);
    const std::vector<Triangle> triangles = cut(corners);
    ASSERT_EQ(triangles.size(), corners.size() - 2);
    std::vector<bool> used(corners.size());
    for (const Triangle& t : triangles) {
        for (const std::uint32_t corner : t) {
            ASSERT_LT(corner, corners.size());
            used[corner] = true;
        }
        EXPECT_TRUE(t[0] != t[1] && t[1] != t[2] && t[2] != t[0]);
    }
    EXPECT_EQ(std::count(used.begin(), used.end(), false), 0);
}

TEST(PolygonCutter, EndsOnPolygonsWithoutArea) {
    for (const std::size_t corners : {4U, 5U, 6U, 100U, 5000U}) {
        expectSomeTriangles(std::vector<P3>(corners, P3{1.0, 2.0, 3.0}), "all at one place");
        std::vector<P3> line(corners);
        for (std::size_t i = 0; i < corners; ++i) {
            line[i][0] = static_cast<double>(i);
        }
        expectSomeTriangles(line, "on a line");
    }
}

TEST(PolygonCutter, EndsOnPolygonsThatCrossThemselves) {
    std::mt19937_64 random(11);
    std::uniform_real_distribution<double> coordinate(-1, 1);
    for (const std::size_t corners : {4U, 5U, 6U, 9U, 30U, 1000U}) {
        std::vector<P3> tangle(corners);
        for (P3& corner : tangle) {
            corner = {coordinate(random), coordinate(random), coordinate(random)};
        }
        expectSomeTriangles(tangle, std::to_string(corners) + " random corners");
    }
    expectSomeTriangles(flat({{0.0, 0.0}, {1.0, 1.0}, {1.0, 0.0}, {0.0, 1.0}}), "bow tie");
}

TEST(PolygonCutter, EndsOnNumbersThatAreNone) {
    for (const double bad : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
                             std::numeric_limits<double>::max(), -std::numeric_limits<double>::max()}) {
        for (const std::size_t corners : {4U, 5U, 30U}) {
            std::vector<P3> star = flat(starOutline(corners, 1));
            star[2][1] = bad;
            star[3][0] = -bad;
            expectSomeTriangles(star, std::to_string(bad));
        }
    }
}

TEST(PolygonCutter, StopsWhenItsStepsAreUsedUp) {
    const std::vector<P3> comb = flat(combOutline(500));
    PolygonCutter few(10'000);
    EXPECT_TRUE(few.cut(comb).empty());
    EXPECT_TRUE(few.cut(flat(starOutline(5, 1))).empty());
    PolygonCutter enough;
    EXPECT_EQ(enough.cut(comb).size(), comb.size() - 2);
}

TEST(PolygonCutter, HasStepsForAConcavePolygonOfTenThousandCorners) {
    const std::vector<P3> comb = flat(combOutline(5'000));
    PolygonCutter cutter;
    EXPECT_EQ(cutter.cut(comb).size(), comb.size() - 2);
}

}  // namespace
