#include "KelvoControl/detail/WarpMesh.h"

#include <gtest/gtest.h>

namespace {

using Veltrani::KelvoControlDetail::CellLattice;
using Veltrani::KelvoControlDetail::WarpMesh;
using P2 = Point<double, 2>;

/// One cell: the picture 200 x 100, a trapezium on the screen.
CellLattice trapezium() {
    CellLattice made;
    made.columns = 2;
    made.rows = 2;
    made.picture = {{0.0, 0.0}, {200.0, 0.0}, {0.0, 100.0}, {200.0, 100.0}};
    made.screen = {{0.0, 0.0}, {1.0, 0.0}, {0.25, 1.0}, {0.75, 1.0}};
    made.unused.assign(4, false);
    return made;
}

TEST(WarpMesh, CarriesPointsBothWays) {
    const WarpMesh mesh(trapezium(), {200.0, 100.0});
    P2 screen;
    ASSERT_TRUE(mesh.toScreen({100.0, 50.0}, screen));
    EXPECT_EQ(screen, P2(0.5, 0.5));
    // Halfway up the trapezium reaches from 0.125 to 0.875.
    ASSERT_TRUE(mesh.toScreen({50.0, 50.0}, screen));
    EXPECT_EQ(screen, P2(0.3125, 0.5));
    P2 pixel;
    ASSERT_TRUE(mesh.toPicture(screen, pixel));
    EXPECT_NEAR(pixel[0], 50, 1e-12);
    EXPECT_NEAR(pixel[1], 50, 1e-12);
}

TEST(WarpMesh, TheToleranceAtTheEdgesIsAPartOfThePicture) {
    const WarpMesh mesh(trapezium(), {200.0, 100.0});
    P2 out{-7.0, -7.0};
    EXPECT_FALSE(mesh.toScreen({200.0 + 3e-7, 50.0}, out));
    EXPECT_FALSE(mesh.toScreen({100.0, 100.0 + 1.5e-7}, out));
    EXPECT_FALSE(mesh.toPicture({1.0 + 1e-8, 0.0}, out));
    EXPECT_EQ(out, P2(-7.0, -7.0));
    EXPECT_TRUE(mesh.toScreen({200.0 + 1.5e-7, 50.0}, out));
    EXPECT_TRUE(mesh.toScreen({100.0, 100.0 + 0.7e-7}, out));
    EXPECT_TRUE(mesh.toPicture({1.0 + 0.5e-9, 0.0}, out));
}

/// Two rows of nodes at the edges of the picture and the screen, `beyond` (parts of both) past them on the right and at
/// the bottom.
CellLattice around(double beyond) {
    CellLattice made = trapezium();
    made.picture = {
        {0.0, -100 * beyond}, {200 * (1 + beyond), -100 * beyond}, {0.0, 100.0}, {200 * (1 + beyond), 100.0}};
    made.screen = {{0.0, -beyond}, {1 + beyond, -beyond}, {0.0, 1.0}, {1 + beyond, 1.0}};
    return made;
}

TEST(WarpMesh, WhatRoundingCarriesPastAnEdgeIsOnIt) {
    const WarpMesh mesh(around(0.9e-9), {200.0, 100.0});
    P2 out;
    for (int i = 0; i <= 10; ++i) {
        ASSERT_TRUE(mesh.toScreen({200 * (1 + 0.9e-9), 10.0 * i}, out));
        EXPECT_EQ(out[0], 1.0);
        ASSERT_TRUE(mesh.toScreen({20.0 * i, -0.9e-7}, out));
        EXPECT_EQ(out[1], 0.0);
        ASSERT_TRUE(mesh.toPicture({1 + 0.9e-9, 0.1 * i}, out));
        EXPECT_EQ(out[0], 200.0);
        ASSERT_TRUE(mesh.toPicture({0.1 * i, -0.9e-9}, out));
        EXPECT_EQ(out[1], 0.0);
    }
}

TEST(WarpMesh, AMeshThatReachesFurtherThanRoundingKeepsItsPlaces) {
    const WarpMesh mesh(around(1.1e-9), {200.0, 100.0});
    P2 out;
    ASSERT_TRUE(mesh.toScreen({200 * (1 + 1.1e-9), 50.0}, out));
    EXPECT_DOUBLE_EQ(out[0], 1 + 1.1e-9);
    ASSERT_TRUE(mesh.toScreen({100.0, -1.1e-7}, out));
    EXPECT_DOUBLE_EQ(out[1], -1.1e-9);
    ASSERT_TRUE(mesh.toPicture({1 + 1.1e-9, 0.5}, out));
    EXPECT_DOUBLE_EQ(out[0], 200 * (1 + 1.1e-9));
    ASSERT_TRUE(mesh.toPicture({0.5, -1.1e-9}, out));
    EXPECT_DOUBLE_EQ(out[1], -1.1e-7);
}

}  // namespace
