#include "DisplayLight/detail/ShapeChart.h"

#include "support/ScreenGeometryDouble.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

using Veltrani::DisplayLight::SurfaceChart;
using Veltrani::DisplayLightDetail::shapeChart;
using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

/// The places of its mapping and its normal, uncounted.
class Surface : public ScreenGeometryDouble {
public:
    bool mapInto3D(const P2& st, P3& out, bool extrapolate) const override { return mapping(st, out, extrapolate); }
    P3 getScreenNormal(const P3& /*point*/) const override { return normal; }
};

/// A wall of 3 by 2 m with a gap where s is between 0.25 and 0.5, and right of that where t is.
bool isWall(const P2& st) {
    return st[0] <= 0.25 || (st[0] >= 0.5 && (st[1] <= 0.25 || st[1] >= 0.5));
}

bool wallWithAGap(const P2& st, P3& out, bool /*extrapolate*/) {
    out = {3 * st[0], 0.0, 2 * st[1]};
    return isWall(st);
}

/// A wall of other sizes.
SurfaceChart wall(double width, double height, std::size_t places) {
    Surface surface;
    surface.mapping = [=](const P2& st, P3& out, bool /*extrapolate*/) {
        out = {width * st[0], 0.0, height * st[1]};
        return true;
    };
    return shapeChart(surface, places);
}

// Of 192 by 96 cells, the 48 columns in the gap are not drawn and a quarter of those right of it; their length does not
// count.
TEST(ShapeChart, AGapIsNeitherDrawnNorMeasured) {
    Surface surface;
    surface.mapping = wallWithAGap;
    const SurfaceChart chart = shapeChart(surface, 4000);
    EXPECT_EQ(chart.triangles.size(), 2U * (48 * 96 + 96 * 72));
    EXPECT_EQ(chart.vertices.size(), 193U * 97);
    for (const auto& triangle : chart.triangles) {
        const P3 middle =
            (chart.vertices[triangle[0]] + chart.vertices[triangle[1]] + chart.vertices[triangle[2]]) * (1.0 / 3);
        ASSERT_TRUE(isWall({middle[0] / 3, middle[2] / 2}));
    }
    EXPECT_NEAR(chart.step, std::sqrt(2.25 * 2 / 4000), 1e-9);
    EXPECT_EQ(chart.grid.width, 67U);
    EXPECT_EQ(chart.grid.rows(), 59U);
    for (std::size_t i = 0; i < chart.grid.places.size(); ++i) {
        ASSERT_EQ(chart.grid.places[i].isSeen, isWall(chart.grid.parameters[i]));
    }
}

TEST(ShapeChart, ItsTrianglesFaceTheNormalAndLieWhereTheyAreInThePicture) {
    for (const double side : {1.0, -1.0}) {
        Surface surface;
        surface.normal = {0.0, side, 0.0};
        const SurfaceChart chart = shapeChart(surface, 1000);
        double area = 0;
        for (const auto& [first, second, third] : chart.triangles) {
            const P3 normal =
                cross(chart.vertices[second] - chart.vertices[first], chart.vertices[third] - chart.vertices[first]);
            ASSERT_GT(side * normal[1], 0);
            area += norm(normal) / 2;
        }
        EXPECT_NEAR(area, 1, 1e-9);
        for (std::size_t i = 0; i < chart.vertices.size(); ++i) {
            EXPECT_LT(norm(chart.coordinates[i] - P2{chart.vertices[i][0], chart.vertices[i][2]}), 1e-12);
        }
    }
}

TEST(ShapeChart, NoSideHasMorePixelsThanAPictureMayHave) {
    const SurfaceChart wide = wall(100, 0.01, 100'000);
    EXPECT_EQ(wide.grid.width, 4096U);
    EXPECT_EQ(wide.grid.rows(), 1U);
    EXPECT_NEAR(wide.step, 100.0 / 4096, 1e-9);
    const SurfaceChart high = wall(0.1, 100, 100'000);
    EXPECT_EQ(high.grid.width, 4U);
    EXPECT_EQ(high.grid.rows(), 4096U);
    EXPECT_NEAR(high.step, 100.0 / 4096, 1e-9);
}

// A cone: the longest row is the lowest one, and at its tip cells have half the triangles.
TEST(ShapeChart, AtATipASideIsAPoint) {
    Surface surface;
    surface.mapping = [](const P2& st, P3& out, bool /*extrapolate*/) {
        out = {(1 - st[1]) * (4 * st[0] - 2), 0.0, st[1]};
        return true;
    };
    const SurfaceChart chart = shapeChart(surface, 4000);
    EXPECT_EQ(chart.triangles.size(), 2U * 192 * 96 - 192);
    EXPECT_NEAR(chart.step, std::sqrt(4 * std::sqrt(5.0) / 4000), 1e-9);
}

// Rows are sqrt(4 (1 + t)^2 + t^2) long, columns sqrt(4 s^2 + (1 + s)^2): the last ones are the longest.
TEST(ShapeChart, TheLastRowAndTheLastColumnCountAsTheOthers) {
    Surface surface;
    surface.mapping = [](const P2& st, P3& out, bool /*extrapolate*/) {
        out = {2 * st[0] * (1 + st[1]), 0.0, st[1] * (1 + st[0])};
        return true;
    };
    EXPECT_NEAR(shapeChart(surface, 4000).step, std::sqrt(std::sqrt(17.0) * std::sqrt(8.0) / 4000), 1e-9);
}

TEST(ShapeChart, OfAPointIsOnePlace) {
    const SurfaceChart chart = wall(0, 0, 1000);
    EXPECT_TRUE(chart.triangles.empty());
    EXPECT_EQ(chart.grid.places.size(), 1U);
    EXPECT_EQ(chart.grid.parameters[0], (P2{0.5, 0.5}));
}

}  // namespace
