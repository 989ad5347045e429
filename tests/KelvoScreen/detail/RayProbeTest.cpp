#include "KelvoScreen/detail/RayProbe.h"

#include "KelvoScreen/MeshOracle.h"
#include "KelvoScreen/Meshes.h"
#include "KelvoScreen/Needles.h"

#include <gtest/gtest.h>

#include <numeric>

namespace {

using Veltrani::KelvoScreenDetail::Meeting;
using Veltrani::KelvoScreenDetail::RayProbe;
using Vector = Point<double, 3>;

bool meets(const RayProbe& probe, const TriangleMesh& mesh, Meeting& meeting, std::size_t triangle = 0) {
    const TriangleMesh::Triangle& corners = mesh.triangles[triangle];
    return probe.meets(mesh.vertices[corners[0]], mesh.vertices[corners[1]], mesh.vertices[corners[2]], meeting);
}

TEST(RayProbe, FindsPositionAndWeights) {
    const TriangleMesh mesh = meshes::triangle({0.0, 2.0, 0.0}, {4.0, 2.0, 0.0}, {0.0, 2.0, 8.0});
    Meeting meeting;
    ASSERT_TRUE(meets(RayProbe({1.0, 0.0, 2.0}, {0.0, 0.5, 0.0}, 0, 9), mesh, meeting));
    EXPECT_EQ(meeting.t, 4);
    EXPECT_EQ(meeting.weights, (std::array<double, 3>{0.5, 0.25, 0.25}));
    EXPECT_TRUE(meets(RayProbe({1.0, 9.0, 2.0}, {0.0, 0.5, 0.0}, 0, 9), mesh, meeting));
    EXPECT_EQ(meeting.t, -14) << "the whole line counts";
}

TEST(RayProbe, AgreesWithTheOracleForEveryWindingAndDirection) {
    oracle::Random random(31);
    int hits = 0;
    for (int i = 0; i < 50000; ++i) {
        const TriangleMesh mesh = meshes::triangle(random.inCube(), random.inCube(), random.inCube());
        const Vector from = 2.0 * random.inCube();
        const Vector to = random.inCube();
        const std::optional<oracle::Hit> expected = oracle::nearestHit(mesh, from, to);
        Meeting meeting;
        const bool met = meets(RayProbe(from, to - from, 0, 4), mesh, meeting) && meeting.t >= 0;
        ASSERT_EQ(met, expected.has_value()) << "ray " << i;
        if (met) {
            ++hits;
            ASSERT_NEAR(meeting.t, expected->t, 1e-9) << "ray " << i;
            ASSERT_NEAR(std::accumulate(meeting.weights.begin(), meeting.weights.end(), 0.0), 1, 1e-12);
        }
    }
    EXPECT_GT(hits, 3000);
}

TEST(RayProbe, NothingFallsBetweenNeighbours) {
    oracle::Random random(32);
    const Vector centre{0.3, -0.2, 0.1};
    for (int i = 0; i < 20000; ++i) {
        // A fan of four triangles around one corner, seen from somewhere in front, aimed at its inner edges.
        const Vector rim[4] = {{1.0, random.uniform(-0.3, 0.3), 0.1},
                               {0.2, random.uniform(-0.3, 0.3), 1.0},
                               {-1.0, random.uniform(-0.3, 0.3), -0.1},
                               {0.1, random.uniform(-0.3, 0.3), -1.0}};
        const Vector aim = centre + (i % 3 == 0 ? 0.0 : random.uniform(0, 0.9)) * (rim[i % 4] - centre);
        const Vector from{random.uniform(-0.5, 0.5), -4.0, random.uniform(-0.5, 0.5)};
        const RayProbe probe(from, aim - from, 0, 2);
        int met = 0;
        for (int k = 0; k < 4; ++k) {
            Meeting meeting;
            met += probe.meets(centre, rim[k], rim[(k + 1) % 4], meeting) ? 1 : 0;
        }
        ASSERT_GE(met, 1) << "ray " << i;
    }
}

TEST(RayProbe, ATriangleSeenEdgeOnIsMissed) {
    const TriangleMesh mesh = meshes::triangle({0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {0.0, 1.0, 0.0});
    Meeting meeting;
    EXPECT_FALSE(meets(RayProbe({-1.0, 0.25, 0.0}, {1.0, 0.0, 0.0}, 0, 2), mesh, meeting));
}

TEST(RayProbe, TheToleranceIsMeasuredAcrossTheRay) {
    const TriangleMesh mesh = meshes::triangle({0.0, 1.0, 0.0}, {1.0, 1.0, 0.0}, {0.0, 1.0, 1.0});
    const auto passes = [&mesh](const Vector& aim, double tolerance, Meeting& meeting) {
        const Vector from{aim[0], 0.0, aim[2]};
        return meets(RayProbe(from, aim - from, tolerance, 2), mesh, meeting);
    };
    Meeting meeting;
    EXPECT_FALSE(passes({0.5, 1.0, -1e-6}, 0, meeting));
    EXPECT_FALSE(passes({0.5, 1.0, -1e-6}, 0.9e-6, meeting));
    ASSERT_TRUE(passes({0.5, 1.0, -1e-6}, 1.1e-6, meeting));
    EXPECT_EQ(meeting.weights, (std::array<double, 3>{0.5, 0.5, 0.0})) << "on the edge";
    EXPECT_EQ(meeting.t, 1);
    EXPECT_FALSE(passes({-0.8e-6, 1.0, -0.8e-6}, 1e-6, meeting)) << "past a corner, though near both lines";
    ASSERT_TRUE(passes({-0.6e-6, 1.0, -0.6e-6}, 1e-6, meeting));
    EXPECT_EQ(meeting.weights, (std::array<double, 3>{1.0, 0.0, 0.0})) << "on the corner";
}

TEST(RayProbe, TheWeightsOfANeedlePlaceThePointOnTheRay) {
    oracle::Random random(33);
    int hits = 0;
    for (int i = 0; i < 3000; ++i) {
        const needles::Shape shape = needles::anyTriangle(needles::anyAspect(random), random);
        for (const auto& [from, to] : needles::aimAt(shape, random)) {
            const double largest = needles::largestCoordinate(shape.corners, from);
            const RayProbe probe(from, to - from, Veltrani::KelvoScreenDetail::ROUNDING * largest, 3 * shape.size);
            Meeting meeting;
            if (probe.meets(shape.corners[0], shape.corners[1], shape.corners[2], meeting)) {
                ++hits;
                const Vector point = Veltrani::KelvoScreenDetail::pointWithWeights(shape.corners, meeting.weights);
                ASSERT_TRUE(oracle::isNearLine(from, to, point, 8 * Veltrani::KelvoScreenDetail::ROUNDING * largest))
                    << i;
                for (const double weight : meeting.weights) {
                    ASSERT_GE(weight, 0) << i;
                }
            }
        }
    }
    EXPECT_GT(hits, 30000);
}

TEST(RayProbe, BesideANeedleTheToleranceIsTheSameOnBothSides) {
    oracle::Random random(34);
    int checked = 0;
    for (int i = 0; i < 50000; ++i) {
        // With a short edge at its end, and a ray that looks across it, often nearly along its plane.
        const needles::Shape shape = needles::anyTriangle(1, random);
        const Vector start = 3.0 * random.inCube();
        const Vector end = start + shape.size * shape.along;
        const double width = needles::anyAspect(random) * shape.size;
        const oracle::Triangle corners{start, end, end + width * shape.across};
        const double tilt = std::pow(10, -random.uniform(0, 9));
        const Vector direction = shape.across + tilt * shape.normal;
        const Vector aside = cross(direction, shape.along) * (1 / norm(direction));
        const Vector onEdge = start + random.uniform(0.1, 0.9) * (end - start);
        const double tolerance =
            Veltrani::KelvoScreenDetail::ROUNDING * needles::largestCoordinate(corners, onEdge - direction);
        if (tilt * width < 0.25 * tolerance) {
            continue;  // the ray sees its corners on a line, up to rounding
        }
        ++checked;
        const auto passes = [&](double distance) {
            Meeting meeting;
            return RayProbe(onEdge + distance * aside - direction, direction, tolerance, 3 * shape.size)
                .meets(corners[0], corners[1], corners[2], meeting);
        };
        ASSERT_TRUE(passes(0.25 * tolerance)) << "triangle " << i;
        ASSERT_TRUE(passes(-0.25 * tolerance)) << "triangle " << i;
        ASSERT_FALSE(passes(1.25 * tolerance) && passes(-1.25 * tolerance)) << "triangle " << i;
    }
    EXPECT_GT(checked, 10000);
}

}  // namespace
