#include "KelvoScreen/CylinderScreen.h"
#include "KelvoScreen/MeshOracle.h"
#include "KelvoScreen/MeshScreen.h"
#include "KelvoScreen/Meshes.h"
#include "KelvoScreen/RuledSurfaceScreen.h"
#include "KelvoScreen/RuledSurfaces.h"
#include "KelvoScreen/SphericalScreen.h"
#include "support/ScreenConfigDouble.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <vector>

/// Meshes sampled from shapes that are known exactly must approach them as geometry demands.

namespace {

using Vector = Point<double, 3>;

constexpr double PI = std::numbers::pi;

SphericalScreen dome() {
    return SphericalScreen(Vector{1.0, 2.0, 3.0}, 5, -1.5, 1, -0.3, 1.1);
}

CylinderScreen wall() {
    ScreenConfigDouble config;
    config.centre = {1.0, 0.0, -1.0};
    config.orientation = {0.3, 0.2, -0.1};
    config.radius = 4;
    config.height = 3;
    config.azimuthMin = -1;
    config.azimuthMax = 1.2;
    return CylinderScreen(&config);
}

RuledSurfaceScreen saddle() {
    const ScreenConfigDouble config = ruled::saddle();
    return RuledSurfaceScreen(&config);
}

/// The largest distance, along the normals of the shape, from its points to its twin of cells x cells.
double largestDistance(const ScreenGeometry& shape, int cells) {
    const MeshScreen twin(meshes::sampled(shape, cells, cells));
    oracle::Random random(21);
    double largest = 0;
    for (int i = 0; i < 2000; ++i) {
        Vector point;
        EXPECT_TRUE(shape.mapInto3D({random.uniform(0.02, 0.98), random.uniform(0.02, 0.98)}, point, false));
        const Vector normal = shape.getScreenNormal(point);
        const IntersectionSet hits = twin.intersect(point - 0.5 * normal, point);
        EXPECT_FALSE(hits.empty());
        largest = hits.empty() ? 1 : std::max(largest, norm(hits.first().point - point));
    }
    return largest;
}

/// The power of the number of cells with which the distance falls: the slope of a line through the logarithms.
double orderOfApproach(const ScreenGeometry& shape) {
    const std::vector<int> refinements{8, 16, 32, 64};
    double meanX = 0;
    double meanY = 0;
    std::vector<Point<double, 2>> logarithms;
    for (const int cells : refinements) {
        logarithms.push_back({std::log(cells), std::log(largestDistance(shape, cells))});
        meanX += logarithms.back()[0] / static_cast<double>(refinements.size());
        meanY += logarithms.back()[1] / static_cast<double>(refinements.size());
    }
    double mixed = 0;
    double squares = 0;
    for (const Point<double, 2>& point : logarithms) {
        mixed += (point[0] - meanX) * (point[1] - meanY);
        squares += (point[0] - meanX) * (point[0] - meanX);
    }
    return -mixed / squares;
}

TEST(MeshTruth, TheDistanceFallsWithTheSquareOfTheEdges) {
    EXPECT_NEAR(orderOfApproach(dome()), 2, 0.1);
    EXPECT_NEAR(orderOfApproach(wall()), 2, 0.1);
    EXPECT_NEAR(orderOfApproach(saddle()), 2, 0.1);
}

TEST(MeshTruth, TheDistanceOfASphereIsTheHeightOfItsChords) {
    // Cells of a and b radians: the diagonals are chords of about sqrt(a^2 + b^2) radii.
    const double a = 2.5 / 64;
    const double b = 1.4 / 64;
    const double expected = 5 * (a * a + b * b) / 8;
    EXPECT_NEAR(largestDistance(dome(), 64), expected, 0.1 * expected);
}

TEST(MeshTruth, NormalsOfTheTwinArePointedLikeThoseOfTheShape) {
    for (int i = 0; i < 3; ++i) {
        const SphericalScreen sphere = dome();
        const CylinderScreen cylinder = wall();
        const RuledSurfaceScreen ruled = saddle();
        const ScreenGeometry* shapes[] = {&sphere, &cylinder, &ruled};
        const ScreenGeometry& shape = *shapes[i];
        const MeshScreen twin(meshes::sampled(shape, 50, 50));
        oracle::Random random(22);
        for (int k = 0; k < 200; ++k) {
            Vector point;
            ASSERT_TRUE(shape.mapInto3D({random.uniform(0, 1), random.uniform(0, 1)}, point, false));
            EXPECT_GE(dot(twin.getScreenNormal(point), shape.getScreenNormal(point)), 0.999) << "shape " << i;
        }
    }
}

TEST(MeshTruth, TheTwinMapsWhereTheShapeMaps) {
    const SphericalScreen shape = dome();
    const MeshScreen twin(meshes::sampled(shape, 100, 60));
    for (int i = 0; i <= 37; ++i) {
        for (int j = 0; j <= 37; ++j) {
            Vector expected;
            Vector point;
            ASSERT_TRUE(shape.mapInto3D({i / 37.0, j / 37.0}, expected, false));
            ASSERT_TRUE(twin.mapInto3D({i / 37.0, j / 37.0}, point, false)) << i << ' ' << j;
            EXPECT_LE(norm(point - expected), 1e-3);
        }
    }
}

TEST(MeshTruth, TheTwinOfAWholeSphereHasNoGapAtSeamAndPoles) {
    const SphericalScreen sphere(Vector{}, 2, -PI, PI, -PI / 2, PI / 2);
    const MeshScreen twin(meshes::sampled(sphere, 40, 20));
    oracle::Random random(23);
    std::vector<Vector> targets{
        {0.0, 0.0, 1.0}, {0.0, 0.0, -1.0}, {0.0, -1.0, 0.0}, {0.0, -1.0, 0.5}, {0.0, -1.0, -3.0}};
    for (int i = 0; i < 500; ++i) {
        targets.push_back(random.inCube());
        targets.push_back({1e-9 * random.uniform(-1, 1), -1.0, random.uniform(-3, 3)});
        targets.push_back({1e-9 * random.uniform(-1, 1), 1e-9 * random.uniform(-1, 1), i % 2 == 0 ? 1.0 : -1.0});
    }
    for (const Vector& target : targets) {
        const IntersectionSet hits = twin.intersect(Vector{}, target);
        ASSERT_FALSE(hits.empty()) << target[0] << ' ' << target[1] << ' ' << target[2];
        EXPECT_NEAR(norm(hits.first().point), 2, 0.02);
    }
}

}  // namespace
