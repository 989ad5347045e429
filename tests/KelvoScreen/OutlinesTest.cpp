#include "KelvoScreen/Outlines.h"

#include "KelvoScreen/Meshes.h"
#include "KelvoScreen/SphericalScreen.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

/// The measures that judge outlines must be able to find them wanting.

namespace {

using Vector = Point<double, 3>;

TEST(Outlines, ABowTieCrossesItselfAndASquareDoesNot) {
    EXPECT_EQ(outlines::crossings({{0.0, 0.0}, {1.0, 1.0}, {1.0, 0.0}, {0.0, 1.0}}), 1);
    EXPECT_EQ(outlines::crossings({{0.0, 0.0}, {1.0, 0.0}, {1.0, 1.0}, {0.0, 1.0}}), 0);
}

TEST(Outlines, StepsAreThoseOfTheClosedPolygon) {
    const std::vector<Vector> polygon{{0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {2.0, 0.0, 0.0}, {9.0, 0.0, 0.0}};
    EXPECT_EQ(outlines::largestStep(polygon), 9);
    EXPECT_EQ(outlines::medianStep(polygon), 7);
}

TEST(Outlines, ThePictureIsWidenedOnEverySide) {
    const TriangleMesh wall = meshes::wall(4, 2, 1, 1);
    const std::vector<Ray> rays = outlines::pictureAround(wall, {2.0, -1.0, 1.0}, 0.1);
    ASSERT_EQ(rays.size(), 400U);
    EXPECT_LE(norm(rays[0].second - Vector{-0.4, 0.0, -0.4}), 1e-14);
    EXPECT_LE(norm(rays[200].second - Vector{4.4, 0.0, 2.4}), 1e-14);
}

TEST(Outlines, TheDistanceIsThatFromTheNearestEdge) {
    const SphericalScreen dome(Vector{}, 2, -1, 1, 0, 1);
    EXPECT_NEAR(outlines::distanceFromEdges(dome, {0.0, 2 * std::cos(-0.3), 2 * std::sin(-0.3)}), 4 * std::sin(0.15),
                1e-12);
}

}  // namespace
