#include "KelvoScreen/CylinderScreen.h"
#include "KelvoScreen/MeshOracle.h"
#include "KelvoScreen/MeshScreen.h"
#include "KelvoScreen/Meshes.h"
#include "KelvoScreen/Outlines.h"
#include "KelvoScreen/SphericalScreen.h"
#include "support/ScreenConfigDouble.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <string>
#include <vector>

/// Meshes past their border, against the surfaces that they were made from.

namespace {

using Vector = Point<double, 3>;

constexpr double RADIUS = 5;  // metres
constexpr double AZIMUTH = 1.2;
constexpr double LOWEST = -0.2;
constexpr double HIGHEST = 0.95;

SphericalScreen dome() {
    return SphericalScreen(Vector{}, RADIUS, -AZIMUTH, AZIMUTH, LOWEST, HIGHEST);
}

/// Moves every vertex along the radius by up to `noise`.
TriangleMesh noisy(TriangleMesh mesh, double noise) {
    oracle::Random random(51);
    for (Vector& vertex : mesh.vertices) {
        vertex = vertex * (1 + random.uniform(-noise, noise) / norm(vertex));
    }
    return mesh;
}

Vector onSphere(double azimuth, double elevation) {
    return {RADIUS * std::sin(azimuth) * std::cos(elevation), RADIUS * std::cos(azimuth) * std::cos(elevation),
            RADIUS * std::sin(elevation)};
}

/// Columns and rows of cells of about this size on the dome.
TriangleMesh domeMesh(double cell) {
    const auto cells = [cell](double angle) { return static_cast<int>(std::lround(RADIUS * angle / cell)); };
    return meshes::sampled(dome(), cells(2 * AZIMUTH), cells(HIGHEST - LOWEST));
}

/// Where projectors stand in domes: in the centre, behind it, low at the side.
const std::vector<Vector> EYES = {{0.0, -0.5, 0.0}, {0.3, -2.5, 0.5}, {-1.0, -1.0, -0.6}};

/// The mean of the vertices: behind it is the middle of a mesh that curves around the eye.
Vector middleOf(const TriangleMesh& mesh) {
    const Vector sum = std::accumulate(mesh.vertices.begin(), mesh.vertices.end(), Vector{});
    return sum * (1.0 / static_cast<double>(mesh.vertices.size()));
}

/// The longest side of an outline on a dome, in median ones.
constexpr double EVEN = 3;

struct Deviation {
    double largest = 0;    ///< of the points of the outline from those of the true one, metres
    double share = 0;      ///< the largest one, each as a part of how far the true point is beyond the border
    double overshoot = 0;  ///< how far the true outline reaches beyond the border at most, metres
};

/// The outline of a projector whose picture overshoots the mesh by a tenth of its width on every side, on the mesh and
/// on the true surface. Checks that it is whole, even, and nowhere crosses itself.
Deviation compareOutlines(const MeshScreen& screen, const ScreenGeometry& truth, const Vector& eye, double evenness) {
    const std::vector<Ray> boundary = outlines::pictureAround(screen.mesh(), eye, 0.1);
    const std::vector<Ray> centre{{eye, middleOf(screen.mesh())}};
    const std::vector<Vector> expected = truth.intersectChannelBoundary(boundary, centre);
    const std::vector<Vector> outline = screen.intersectChannelBoundary(boundary, centre);
    EXPECT_EQ(outline.size(), boundary.size()) << "no ray dropped";
    EXPECT_EQ(expected.size(), boundary.size());
    if (outline.size() != expected.size()) {
        return {};
    }
    EXPECT_EQ(outlines::crossings(outlines::unrolled(outline, Vector{})), 0);
    EXPECT_LE(outlines::largestStep(outline), evenness * outlines::medianStep(outline));
    Deviation deviation;
    for (std::size_t i = 0; i < outline.size(); ++i) {
        const double off = norm(outline[i] - expected[i]);
        const double overshoot = outlines::distanceFromEdges(truth, expected[i]);
        deviation.largest = std::max(deviation.largest, off);
        deviation.share = std::max(deviation.share, off / overshoot);
        deviation.overshoot = std::max(deviation.overshoot, overshoot);
    }
    EXPECT_GT(deviation.overshoot, 0.5) << "the picture reaches beyond the border";
    return deviation;
}

/// @param most metres that an outline may deviate at all, beside a hundredth of the overshoot of each of its points
void expectOutlinesOf(const TriangleMesh& mesh, const ScreenGeometry& truth, double evenness = EVEN, double most = 1) {
    const MeshScreen screen(mesh);
    for (const Vector& eye : EYES) {
        SCOPED_TRACE("eye at " + std::to_string(eye[0]) + " " + std::to_string(eye[1]));
        const Deviation deviation = compareOutlines(screen, truth, eye, evenness);
        EXPECT_LE(deviation.share, 0.01) << "largest " << deviation.largest << " m";
        EXPECT_LE(deviation.largest, most);
    }
}

TEST(MeshContinuation, OfAFineDomeIsTheSphere) {
    constexpr double CELL = 0.08;
    expectOutlinesOf(domeMesh(CELL), dome(), EVEN, CELL * CELL / (8 * RADIUS));
}

TEST(MeshContinuation, OfACoarseDomeIsTheSphereToo) {
    expectOutlinesOf(domeMesh(0.3), dome());
}

TEST(MeshContinuation, OfAMeasuredDomeIsNotLedAstrayByNoise) {
    expectOutlinesOf(noisy(domeMesh(0.05), 0.001), dome());
}

TEST(MeshContinuation, OfANoisyDomeOfTinyTrianglesHolds) {
    // Here the triangles themselves are off by tens of degrees.
    const SphericalScreen piece(Vector{}, RADIUS, -0.1, 0.1, -0.1, 0.1);
    const MeshScreen screen(noisy(meshes::sampled(piece, 150, 150), 0.002));
    for (int i = 0; i < 400; ++i) {
        const double angle = 0.0157 * i;
        const Vector target = onSphere(0.15 * std::cos(angle), 0.15 * std::sin(angle));
        const IntersectionSet hits = screen.intersectExtrapolatedWithSpecifiedNormal({0.3, 1.0, 0.1}, target, 1);
        ASSERT_FALSE(hits.empty()) << "ray " << i;
        EXPECT_LE(norm(hits.first().point - target), 0.01) << "ray " << i;
    }
}

TEST(MeshContinuation, OfACylinderIsTheCylinder) {
    ScreenConfigDouble config;
    config.radius = RADIUS;
    config.height = 4;
    config.azimuthMin = -AZIMUTH;
    config.azimuthMax = AZIMUTH;
    const CylinderScreen cylinder(&config);
    // The upper and lower sides of the picture meet the upright wall far apart: that is its own unevenness.
    constexpr double UNEVEN = 6;
    expectOutlinesOf(meshes::sampled(cylinder, 150, 50), cylinder, UNEVEN);
    expectOutlinesOf(meshes::sampled(cylinder, 60, 1), cylinder, UNEVEN);
}

TEST(MeshContinuation, DoesNotDependOnHowTheVerticesAreShared) {
    const TriangleMesh mesh = domeMesh(0.3);
    const MeshScreen shared(mesh);
    const MeshScreen repeated(meshes::withoutSharedVertices(mesh));
    for (const Ray& ray : outlines::pictureAround(mesh, EYES[1], 0.1)) {
        const IntersectionSet expected = shared.intersectExtrapolatedWithSpecifiedNormal(ray.first, ray.second, 1);
        const IntersectionSet hits = repeated.intersectExtrapolatedWithSpecifiedNormal(ray.first, ray.second, 1);
        ASSERT_FALSE(expected.empty());
        ASSERT_FALSE(hits.empty());
        EXPECT_LE(norm(hits.first().point - expected.first().point), 1e-9);
    }
}

TEST(MeshContinuation, SliversAlongTheBorderDoNotTurnIt) {
    // The lowest row is a hundredth of a millimetre high, and its vertices are off by as much.
    const SphericalScreen screen = dome();
    TriangleMesh mesh = meshes::surface(60, 30, [&](double s, double t) {
        Vector point;
        (void)screen.mapInto3D({s, t <= 0.04 ? 2e-6 * t / 0.04 : t}, point, false);
        return t <= 0.04 ? point * (1 + 2e-6 * std::sin(40 * s)) : point;
    });
    expectOutlinesOf(mesh, screen);
}

TEST(MeshContinuation, FillsAHole) {
    const SphericalScreen screen = dome();
    TriangleMesh mesh = meshes::sampled(screen, 80, 40);
    const auto isInHole = [&](const TriangleMesh::Triangle& triangle) {
        const Point<double, 2>& st = mesh.textureCoordinates[triangle[0]];
        return st[0] > 0.4 && st[0] < 0.6 && st[1] > 0.3 && st[1] < 0.6;
    };
    mesh.triangles.erase(std::remove_if(mesh.triangles.begin(), mesh.triangles.end(), isInHole), mesh.triangles.end());
    mesh.textureTriangles.clear();
    const MeshScreen withHole(noisy(mesh, 0.001));
    int filled = 0;
    for (double s = 0.4; s < 0.6; s += 0.01) {
        for (double t = 0.3; t < 0.6; t += 0.02) {
            Vector target;
            ASSERT_TRUE(screen.mapInto3D({s, t}, target, false));
            filled += withHole.intersect(EYES[1], target).empty() ? 1 : 0;
            const IntersectionSet hits = withHole.intersectExtrapolatedWithSpecifiedNormal(EYES[1], target, 1);
            ASSERT_FALSE(hits.empty());
            EXPECT_LE(norm(hits.first().point - target), 0.004) << s << ' ' << t;
        }
    }
    EXPECT_GT(filled, 200);
}

TEST(MeshContinuation, EachOfSeveralPartsContinuesAsItself) {
    const SphericalScreen left(Vector{-4.0, 0.0, 0.0}, 3, -1, 1, -0.5, 0.5);
    const SphericalScreen right(Vector{4.0, 0.0, 0.0}, 2, -1, 1, -0.5, 0.5);
    const TriangleMesh parts = meshes::joined(meshes::sampled(left, 40, 20), meshes::sampled(right, 40, 20));
    const MeshScreen screen(parts);
    for (const SphericalScreen& part : {left, right}) {
        for (int i = 0; i <= 20; ++i) {
            Vector target;
            ASSERT_TRUE(part.mapInto3D({i / 20.0, -0.1}, target, true));
            const Vector eye = part.getScreenNormal(target) * -2.5 + target + Vector{0.0, 0.2, 0.1};
            const IntersectionSet hits = screen.intersectExtrapolatedWithSpecifiedNormal(eye, target, 1);
            ASSERT_FALSE(hits.empty());
            EXPECT_LE(norm(hits.first().point - target), 0.001) << i;
        }
    }
}

TEST(MeshContinuation, BeginsAtTheBorderWithoutAStep) {
    const int columns = 40;
    const TriangleMesh mesh = noisy(meshes::sampled(dome(), columns, 20), 0.001);
    const MeshScreen screen(mesh);
    constexpr double BELOW = 1e-6;
    for (std::uint32_t i = 0; i < columns; ++i) {
        for (const double part : {0.01, 0.5, 0.8}) {
            const Vector border = mesh.vertices[i] + part * (mesh.vertices[i + 1] - mesh.vertices[i]);
            const Vector target = border - Vector{0.0, 0.0, BELOW};
            ASSERT_TRUE(screen.intersect(EYES[0], target).empty());
            const IntersectionSet hits = screen.intersectExtrapolatedWithSpecifiedNormal(EYES[0], target, 1);
            ASSERT_FALSE(hits.empty());
            EXPECT_LE(norm(hits.first().point - border), 3 * BELOW) << i << ' ' << part;
        }
    }
}

TEST(MeshContinuation, AStepFadesAlikeAllAlongAnEdge) {
    // Columns of 0.1 m beside columns of 1.5 m: the border near the seam belongs to a wide triangle, though the middle
    // of the narrow ones is nearer. The step is that from the straight edge to the true cylinder.
    constexpr int NARROW = 60;
    constexpr int WIDE = 4;
    constexpr double WIDTH = 1.5;
    constexpr double CURVED = 20;  // metres, the radius
    const auto at = [](double x, double z) {
        return Vector{CURVED * std::sin(x / CURVED), CURVED * std::cos(x / CURVED), z};
    };
    const auto stepAt = [](const Vector& point) { return CURVED - std::hypot(point[0], point[1]); };
    const MeshScreen screen(meshes::surface(NARROW + WIDE, 12, [&](double s, double t) {
        const double column = (NARROW + WIDE) * s - NARROW;
        return at(column * (column < 0 ? 0.1 : WIDTH), 3 * t);
    }));
    const Vector along = (at(WIDTH, 0) - at(0, 0)) * (1 / norm(at(WIDTH, 0) - at(0, 0)));
    // The distance over which a step fades, from its part that is left below the edge: 1 / (1 + (below / distance)^2).
    const auto fadingAt = [&](double x) {
        const IntersectionSet hits = screen.intersectExtrapolatedWithSpecifiedNormal({0.0, 0.0, -0.2}, at(x, -0.2), 1);
        EXPECT_FALSE(hits.empty());
        const Vector point = hits.empty() ? Vector{} : hits.first().point;
        const Vector border = at(0, 0) + dot(point - at(0, 0), along) * along;
        return norm(point - border) / std::sqrt(stepAt(border) / stepAt(point) - 1);
    };
    const double expected = fadingAt(WIDTH / 2);
    EXPECT_GT(expected, 0.1);
    EXPECT_LT(expected, WIDTH);
    for (int i = 1; i < 30; ++i) {
        EXPECT_NEAR(fadingAt(i * WIDTH / 30), expected, 1e-3) << i;
    }
}

TEST(MeshContinuation, ChangesSmoothlyAlongTheBorder) {
    const MeshScreen screen(noisy(domeMesh(0.1), 0.001));
    for (const double below : {0.02, 0.1}) {
        double before = 0;
        double steepest = 0;
        constexpr double STEP = 2e-4;
        for (int i = 0; i < 4000; ++i) {
            const Vector target = onSphere(STEP * i - 0.4, LOWEST - below);
            const IntersectionSet hits = screen.intersectExtrapolatedWithSpecifiedNormal(EYES[0], target, 1);
            ASSERT_FALSE(hits.empty());
            const double off = norm(hits.first().point) - RADIUS;
            steepest = i == 0 ? 0 : std::max(steepest, std::abs(off - before) / (STEP * RADIUS));
            before = off;
        }
        EXPECT_LE(steepest, 0.02) << "a step of 1 mm between two rays 1 mm apart would be 1";
        EXPECT_GT(steepest, 0) << "the noise is there";
    }
}

TEST(MeshContinuation, SeenFromOutsideEndsWhereTheSphereDoes) {
    const MeshScreen screen(domeMesh(0.2));
    const SphericalScreen sphere = dome();
    int missed = 0;
    for (int i = 0; i < 200; ++i) {
        const Vector from{1.0, 20.0, -3.0};
        const Vector to{-7 + 0.07 * i, 0.0, -2.5};
        if (!screen.intersect(from, to).empty()) {
            continue;
        }
        const IntersectionSet expected = sphere.intersectExtrapolatedWithSpecifiedNormal(from, to, -1);
        const IntersectionSet hits = screen.intersectExtrapolatedWithSpecifiedNormal(from, to, -1);
        ASSERT_EQ(hits.empty(), expected.empty()) << "ray " << i;
        missed += hits.empty() ? 1 : 0;
        if (!hits.empty()) {
            EXPECT_LE(norm(hits.first().point - expected.first().point), 0.01) << "ray " << i;
        }
    }
    EXPECT_GT(missed, 20);
}

TEST(MeshContinuation, OfAFlatMeshIsItsPlaneExactly) {
    const Vector across{3.0, 1.0, 0.3};
    const Vector up{-0.2, 0.1, 2.0};
    const TriangleMesh mesh = meshes::surface(30, 20, [&](double s, double t) {
        return Vector{-1.0, 4.0, -0.7} + s * across + t * up;
    });
    const MeshScreen screen(mesh);
    for (const double s : {-1.0, -0.1, 0.5, 1.1, 2.0}) {
        for (const double t : {-1.0, -0.01, 1.01, 2.0}) {
            const Vector target = Vector{-1.0, 4.0, -0.7} + s * across + t * up;
            const IntersectionSet hits = screen.intersectExtrapolatedWithSpecifiedNormal(EYES[1], target, 1);
            ASSERT_FALSE(hits.empty());
            EXPECT_LE(norm(hits.first().point - target), 2e-14) << s << ' ' << t;
        }
    }
}

TEST(MeshContinuation, DoesNotRoundACrease) {
    // Three panels that meet at 20 degrees: above each it is that panel's plane.
    const double bend = 0.35;
    const auto at = [&](double x, double z) {
        const double beyond = std::max(0.0, std::abs(x) - 1);
        return Vector{
            x < 0 ? -(std::abs(x) - beyond) - beyond * std::cos(bend) : std::abs(x) - beyond + beyond * std::cos(bend),
            5 - beyond * std::sin(bend), z};
    };
    const TriangleMesh mesh = meshes::surface(30, 10, [&](double s, double t) { return at(6 * s - 3, 2 * t); });
    const MeshScreen screen(mesh);
    for (const double x : {-2.9, -1.5, -1.05, -0.95, 0.0, 0.9, 1.1, 2.5}) {
        const Vector target = at(x, 2.4);
        const IntersectionSet hits = screen.intersectExtrapolatedWithSpecifiedNormal({0.0, 0.5, 1.0}, target, 1);
        ASSERT_FALSE(hits.empty());
        EXPECT_LE(norm(hits.first().point - target), 1e-13) << x;
    }
}

TEST(MeshContinuation, OfFewTrianglesIsTheirPlanes) {
    const MeshScreen single(meshes::triangle({0.0, 3.0, 0.0}, {0.0, 3.0, 1.0}, {1.0, 3.0, 0.0}));
    for (const Vector& target : {Vector{2.0, 3.0, 2.0}, {-5.0, 3.0, 0.5}, {0.5, 3.0, -9.0}}) {
        const IntersectionSet hits = single.intersectExtrapolatedWithSpecifiedNormal({0.3, 0.0, 0.3}, target, 1);
        ASSERT_FALSE(hits.empty());
        EXPECT_LE(norm(hits.first().point - target), 1e-14);
    }
    // Two triangles of a bent square: each its own plane.
    TriangleMesh bent;
    bent.vertices = {{0.0, 3.0, 0.0}, {1.0, 3.0, 0.0}, {1.0, 2.9, 1.0}, {0.0, 3.0, 1.0}};
    bent.triangles = {{0, 2, 1}, {0, 3, 2}};
    const MeshScreen screen(bent);
    const IntersectionSet below =
        screen.intersectExtrapolatedWithSpecifiedNormal({0.5, 0.0, 0.5}, {0.9, 3.05, -0.5}, 1);
    ASSERT_FALSE(below.empty());
    EXPECT_NEAR(below.first().point[1], 3 - 0.1 * below.first().point[2], 1e-14) << "through 0, 1, 2";
    const IntersectionSet above = screen.intersectExtrapolatedWithSpecifiedNormal({0.5, 0.0, 0.5}, {0.1, 3.0, 1.5}, 1);
    ASSERT_FALSE(above.empty());
    EXPECT_NEAR(above.first().point[1], 3 - 0.1 * above.first().point[0], 1e-14) << "through 0, 2, 3";
}

}  // namespace
