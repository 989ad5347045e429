#include "KelvoScreen/MeshOracle.h"
#include "KelvoScreen/MeshScreen.h"
#include "KelvoScreen/Meshes.h"
#include "KelvoScreen/OBJScreen.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <limits>
#include <random>
#include <sstream>
#include <vector>

/// Many rays at once must be answered as they are one by one, to the last bit.

namespace {

using Vector = Point<double, 3>;

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr double INFINITE = std::numeric_limits<double>::infinity();

bool haveSameBits(const SurfaceHit& a, const SurfaceHit& b) {
    return std::memcmp(&a.point, &b.point, sizeof a.point) == 0 &&
           std::memcmp(&a.normal, &b.normal, sizeof a.normal) == 0 && std::memcmp(&a.t, &b.t, sizeof a.t) == 0 &&
           a.side == b.side && a.hit == b.hit;
}

/// Asks for all rays at once, and by the default body of the base class for one after the other.
/// @return how many rays hit
int expectBatchAnswersAsSingles(const MeshScreen& screen, const std::vector<Ray>& rays) {
    std::vector<SurfaceHit> atOnce(rays.size(), SurfaceHit{{1.0, 2.0, 3.0}, {4.0, 5.0, 6.0}, 7, -1, true});
    screen.intersectRays(rays, atOnce);
    std::vector<SurfaceHit> oneByOne(rays.size());
    screen.ScreenGeometry::intersectRays(rays, oneByOne);
    int hits = 0;
    for (std::size_t i = 0; i < rays.size(); ++i) {
        EXPECT_TRUE(haveSameBits(atOnce[i], oneByOne[i])) << "ray " << i << " of " << rays.size();
        hits += oneByOne[i].hit ? 1 : 0;
        if (testing::Test::HasFailure()) {
            break;
        }
    }
    return hits;
}

/// The rays of a channel that looks along `ahead`, row by row.
std::vector<Ray> channel(const Vector& eye, const Vector& ahead, double spread, int columns, int rows) {
    const Vector right = cross(ahead, Vector{0.13, 0.17, 1.0});
    const Vector up = cross(right, ahead);
    std::vector<Ray> rays;
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            const double across = spread * (2.0 * column / columns - 1);
            const double upwards = spread * (2.0 * row / rows - 1);
            rays.emplace_back(eye, eye + ahead + across * right + upwards * up);
        }
    }
    return rays;
}

const Vector DIRECTIONS[] = {{0.2, 1.0, 0.1}, {1.0, -0.3, 0.2}, {-0.1, 0.2, 1.0}, {-0.7, -0.7, 0.1}, {0.1, 0.3, -1.0}};

TEST(MeshScreenBatch, TheRaysOfAChannelAreAnsweredAsOneByOne) {
    const MeshScreen coarse(meshes::room(4));
    const MeshScreen fine(meshes::bumpyBall(5, 100, 150));
    for (const Vector& ahead : DIRECTIONS) {
        for (const double spread : {0.01, 0.3, 1.5}) {
            const std::vector<Ray> rays = channel({0.3, -0.4, 0.2}, ahead, spread, 61, 17);
            EXPECT_EQ(expectBatchAnswersAsSingles(coarse, rays), 61 * 17);
            EXPECT_EQ(expectBatchAnswersAsSingles(fine, rays), 61 * 17);
        }
    }
}

/// The rays of several rows are cast together where rows seem to follow each other.
TEST(MeshScreenBatch, RowsOfAnyLengthAreAnsweredAsOneByOne) {
    const MeshScreen screen(meshes::bumpyBall(5, 100, 150));
    for (const int columns : {1, 2, 7, 8, 9, 15, 16, 17, 33}) {
        for (const int rows : {1, 2, 3, 4, 5, 8, 11}) {
            const std::vector<Ray> rays = channel({0.3, -0.4, 0.2}, {0.2, 1.0, 0.1}, 0.1, columns, rows);
            EXPECT_EQ(expectBatchAnswersAsSingles(screen, rays), columns * rows) << columns << " x " << rows;
        }
    }
}

TEST(MeshScreenBatch, RowsOfUnequalLengthAreAnsweredAsOneByOne) {
    const MeshScreen screen(meshes::bumpyBall(5, 100, 150));
    const std::vector<Ray> whole = channel({0.3, -0.4, 0.2}, {0.2, 1.0, 0.1}, 0.2, 40, 40);
    std::mt19937 random(11);
    for (int missing = 1; missing < 40; missing += 6) {
        std::vector<Ray> rays;
        std::copy_if(whole.begin(), whole.end(), std::back_inserter(rays),
                     [&](const Ray&) { return random() % 40 >= static_cast<unsigned>(missing); });
        EXPECT_EQ(expectBatchAnswersAsSingles(screen, rays), static_cast<int>(rays.size())) << missing;
    }
    std::vector<Ray> repeated;
    for (const Ray& ray : whole) {
        repeated.insert(repeated.end(), 1 + random() % 3, ray);
    }
    EXPECT_EQ(expectBatchAnswersAsSingles(screen, repeated), static_cast<int>(repeated.size()));
}

/// Where packets were refused, fewer are tried: those that follow may be close together again.
TEST(MeshScreenBatch, ClosePicturesBehindScatteredRaysAreAnsweredAsOneByOne) {
    const MeshScreen screen(meshes::bumpyBall(5, 100, 150));
    std::vector<Ray> rays = channel({0.3, -0.4, 0.2}, {0.2, 1.0, 0.1}, 1.5, 61, 5);
    for (const double spread : {0.05, 1.2, 0.1}) {
        const std::vector<Ray> more = channel({0.3, -0.4, 0.2}, {-0.7, -0.7, 0.1}, spread, 61, 17);
        rays.insert(rays.end(), more.begin(), more.end());
    }
    EXPECT_EQ(expectBatchAnswersAsSingles(screen, rays), static_cast<int>(rays.size()));
}

TEST(MeshScreenBatch, TheSliversOfAFanAreAnsweredAsOneByOne) {
    const MeshScreen screen(meshes::fan(3, 1000));
    for (const double spread : {0.001, 0.05, 0.4}) {
        EXPECT_GT(expectBatchAnswersAsSingles(screen, channel({0.0, 0.0, 0.0}, {0.02, 1.0, 0.01}, spread, 61, 17)),
                  61 * 17 / 2);
    }
}

TEST(MeshScreenBatch, RaysInAnyOrderAndFromAnywhereAreAnsweredAsOneByOne) {
    const MeshScreen screen(meshes::room(8));
    oracle::Random random(301);
    std::vector<Ray> rays;
    for (int i = 0; i < 5000; ++i) {
        const Vector from = (i % 5 == 0 ? 30.0 : 3.0) * random.inCube();
        rays.emplace_back(from, from + random.inCube());
    }
    EXPECT_GT(expectBatchAnswersAsSingles(screen, rays), 2500);
}

TEST(MeshScreenBatch, EveryCountOfRaysIsAnsweredInOrder) {
    const MeshScreen screen(meshes::bumpyBall(5, 24, 40));
    const std::vector<Ray> rays = channel({0.0, 0.0, 0.0}, {0.2, 1.0, 0.1}, 0.1, 70, 1);
    for (std::size_t count = 0; count <= rays.size(); ++count) {
        EXPECT_EQ(
            expectBatchAnswersAsSingles(screen, {rays.begin(), rays.begin() + static_cast<std::ptrdiff_t>(count)}),
            static_cast<int>(count));
    }
}

TEST(MeshScreenBatch, RaysAlongADiagonalChooseTheSameAxisAsOneByOne) {
    const MeshScreen screen(meshes::bumpyBall(5, 40, 60));
    for (const double sign : {1.0, -1.0}) {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            for (const double third : {0.5, 1.0}) {
                std::vector<Ray> rays;
                for (int i = 0; i < 64; ++i) {
                    Vector direction{sign, sign, sign};
                    direction[axis] = third;
                    const Vector from{0.01 * i, 0.3, -0.2};
                    rays.emplace_back(from, from + 0.5 * direction);
                }
                EXPECT_EQ(expectBatchAnswersAsSingles(screen, rays), 64);
            }
        }
    }
}

TEST(MeshScreenBatch, MissesBetweenHitsAreMisses) {
    const MeshScreen screen(meshes::wall(4, 3, 40, 30));
    const std::vector<Ray> rays = channel({2.0, -3.0, 1.5}, {0.01, 1.0, 0.02}, 1.1, 203, 41);
    const int hits = expectBatchAnswersAsSingles(screen, rays);
    EXPECT_GT(hits, 1000);
    EXPECT_LT(hits, 203 * 41 - 1000);
}

/// Sixteen times each: rays from slightly different places to the same point.
std::vector<Ray> bundles(const std::vector<Vector>& aims, const Vector& eye, oracle::Random& random) {
    std::vector<Ray> rays;
    for (const Vector& aim : aims) {
        for (int i = 0; i < 16; ++i) {
            rays.emplace_back(eye + 0.01 * random.inCube(), aim);
        }
    }
    return rays;
}

TEST(MeshScreenBatch, RaysAtVerticesAndEdgesAreAnsweredAsOneByOne) {
    for (const TriangleMesh& mesh : {meshes::room(5), meshes::withoutSharedVertices(meshes::room(5)),
                                     meshes::bumpyBall(5, 30, 40), meshes::wall(10, 8, 9, 7)}) {
        const MeshScreen screen(mesh);
        oracle::Random random(302);
        std::vector<Vector> aims;
        for (const TriangleMesh::Triangle& corners : mesh.triangles) {
            const Vector& a = mesh.vertices[corners[0]];
            const Vector& b = mesh.vertices[corners[1]];
            aims.push_back(a);
            aims.push_back(a + random.uniform(0, 1) * (b - a));
        }
        const std::vector<Ray> rays = bundles(aims, {0.4, 0.3, 0.2}, random);
        EXPECT_GT(expectBatchAnswersAsSingles(screen, rays), static_cast<int>(rays.size()) / 2);
    }
}

TEST(MeshScreenBatch, ExactlyOnTheEdgesOfAGridOfRoundNumbers) {
    // Every product is exact: the rays run through corners, along edges and diagonals without any rounding.
    const MeshScreen screen(meshes::wall(8, 8, 8, 8));
    std::vector<Ray> rays;
    for (int row = -1; row <= 17; ++row) {
        for (int column = -1; column <= 17; ++column) {
            const Vector aim{column * 0.5, 0.0, row * 0.5};
            rays.emplace_back(aim + Vector{0.25, -1.0, 0.5}, aim);
        }
    }
    EXPECT_EQ(expectBatchAnswersAsSingles(screen, rays), 17 * 17);
}

TEST(MeshScreenBatch, OfTrianglesAtTheSamePlaceTheLowestAnswers) {
    // Round numbers, and eyes inside the box of the mesh, so that the same place comes out with the same bits whichever
    // way a triangle is wound.
    const TriangleMesh wall = meshes::wall(8, 8, 8, 8);
    const TriangleMesh behind = meshes::place(wall, {2, {-4.0, -4.0, -4.0}});
    TriangleMesh mesh = meshes::joined(wall, meshes::joined(wall, behind));
    for (std::size_t i = 0; i < wall.triangles.size(); ++i) {
        std::swap(mesh.triangles[i][1], mesh.triangles[i][2]);
    }
    const MeshScreen screen(mesh);
    std::vector<Ray> rays;
    for (int row = 0; row < 16; ++row) {
        for (int column = 0; column < 16; ++column) {
            const Vector aim{column * 0.5 + 0.125, 0.0, row * 0.5 + 0.25};
            rays.emplace_back(aim + Vector{0.25, -1.0, 0.5}, aim);
        }
    }
    EXPECT_EQ(expectBatchAnswersAsSingles(screen, rays), 16 * 16);
    std::vector<SurfaceHit> hits(rays.size());
    screen.intersectRays(rays, hits);
    EXPECT_TRUE(std::all_of(hits.begin(), hits.end(), [](const SurfaceHit& hit) { return hit.side == -1; }));
}

TEST(MeshScreenBatch, UnusualRaysAmongOthersAreAnsweredAsOneByOne) {
    const MeshScreen screen(meshes::bumpyBall(5, 40, 60));
    const std::vector<Ray> usual = channel({0.1, 0.2, 0.3}, {0.2, 1.0, 0.1}, 0.05, 160, 1);
    const Vector eye = usual.front().first;
    const Vector unusual[] = {eye,
                              {NOT_A_NUMBER, 1.0, 0.0},
                              {0.0, NOT_A_NUMBER, 0.0},
                              {1.0, 1.0, INFINITE},
                              {-INFINITE, 1.0, 1.0},
                              eye + Vector{0.0, 1.0, 0.0},
                              eye + Vector{0.0, 1.0, 0.5},
                              eye + Vector{0.0, 1e-310, 0.0},
                              eye + Vector{1e-300, 1.0, 1e-300},
                              {1e200, 1e250, 1e150},
                              {-1e308, 1e308, 1e308}};
    for (const Vector& to : unusual) {
        for (const std::size_t step : {1U, 2U, 3U, 16U}) {
            std::vector<Ray> rays = usual;
            for (std::size_t i = 5; i < rays.size(); i += step) {
                rays[i].second = to;
            }
            (void)expectBatchAnswersAsSingles(screen, rays);
            for (std::size_t i = 5; i < rays.size(); i += step) {
                rays[i] = {to, eye};
            }
            (void)expectBatchAnswersAsSingles(screen, rays);
        }
    }
}

TEST(MeshScreenBatch, FromFarAwayAndFarFromTheOriginNothingChanges) {
    oracle::Random random(303);
    for (const meshes::Placement& placement :
         {meshes::Placement{1, {14000.0, -14000.0, 3000.0}}, meshes::Placement{1e-3, {1e6, 1e6, 1e6}},
          meshes::Placement{1e-3, {1e9, -1e9, 1e9}}, meshes::Placement{1e9, {}}, meshes::Placement{1e-30, {}}}) {
        const MeshScreen screen(meshes::place(meshes::bumpyBall(1, 24, 40), placement));
        int hits = 0;
        for (const double away : {0.0, 3.0, 1e3, 1e6, 1e9, 1e12, 1e15}) {
            std::vector<Ray> rays;
            for (int i = 0; i < 320; ++i) {
                const Vector to = placement.offset + placement.scale * (0.2 * random.inCube());
                const Vector from = to + placement.scale * ((away + 1) * Vector{0.3, 0.8, -0.5});
                rays.emplace_back(from, to);
            }
            hits += expectBatchAnswersAsSingles(screen, rays);
        }
        EXPECT_GT(hits, 1000) << placement.scale;
    }
}

TEST(MeshScreenBatch, AMeshThatIsNotValidIsNeverHit) {
    const MeshScreen screen{TriangleMesh{}};
    const std::vector<Ray> rays = channel({0.0, 0.0, 0.0}, {0.2, 1.0, 0.1}, 0.1, 40, 1);
    EXPECT_EQ(expectBatchAnswersAsSingles(screen, rays), 0);
}

TEST(MeshScreenBatch, TheLastHitIsRememberedAsAfterSingleRays) {
    // Coincident triangles with opposite windings: a bare point takes the lowest nearest, the last hit may be another.
    const TriangleMesh wall = meshes::place(meshes::wall(1, 1, 1, 1), {0.7, {0.1, 0.3, 0.1}});
    TriangleMesh mesh = meshes::joined(wall, wall);
    for (TriangleMesh::Triangle* triangle : {&mesh.triangles[0], &mesh.triangles[1]}) {
        std::swap((*triangle)[1], (*triangle)[2]);
    }
    const MeshScreen screen(mesh);
    const std::vector<Ray> all = channel({0.3, 1.0, 0.4}, {0.01, -1.0, 0.02}, 0.1, 40, 1);
    for (std::size_t count = 1; count <= all.size(); ++count) {
        std::vector<Ray> rays(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(count));
        rays.push_back({{5.0, 5.0, 5.0}, {6.0, 6.0, 6.0}});
        std::vector<SurfaceHit> hits(rays.size());
        screen.intersectRays(rays, hits);
        ASSERT_FALSE(hits.back().hit);
        const SurfaceHit& last = hits[count - 1];
        ASSERT_TRUE(last.hit);
        EXPECT_EQ(screen.getScreenNormal(last.point), last.normal) << "after " << count << " rays";
    }
}

/// Moves every hit by one unit, as a class derived elsewhere might.
template <class Base>
class ShiftedScreen : public Base {
public:
    using Base::Base;
    [[nodiscard]] IntersectionSet intersect(const Vector& from, const Vector& to) const override {
        const IntersectionSet hits = Base::intersect(from, to);
        return hits.empty() ? hits : IntersectionSet{{hits.first().point + Vector{0.0, 1.0, 0.0}, hits.first().t}};
    }
};

TEST(MeshScreenBatch, ADerivedClassIsAskedForEachRay) {
    const TriangleMesh mesh = meshes::wall(4, 3, 8, 6);
    const ShiftedScreen<MeshScreen> screen(mesh);
    const std::vector<Ray> rays = channel({2.0, -3.0, 1.5}, {0.01, 1.0, 0.02}, 0.3, 64, 1);
    std::vector<SurfaceHit> hits(rays.size());
    screen.intersectRays(rays, hits);
    EXPECT_TRUE(std::all_of(hits.begin(), hits.end(), [](const SurfaceHit& hit) { return hit.point[1] == 1; }));
}

TEST(MeshScreenBatch, AMeshThatWasReadAnswersAtOnceToo) {
    std::istringstream square("v 0 0 0\nv 4 0 0\nv 4 0 3\nv 0 0 3\nf 1 2 3 4\n");
    std::istringstream again(square.str());
    OBJScreen screen(L"Z", L"Y", 1);
    screen.deserialize(square);
    const std::vector<Ray> rays = channel({2.0, -3.0, 1.5}, {0.01, 1.0, 0.02}, 0.1, 64, 1);
    EXPECT_EQ(expectBatchAnswersAsSingles(screen, rays), 64);
    ShiftedScreen<OBJScreen> shifted(L"Z", L"Y", 1);
    shifted.deserialize(again);
    std::vector<SurfaceHit> hits(rays.size());
    shifted.intersectRays(rays, hits);
    EXPECT_TRUE(std::all_of(hits.begin(), hits.end(), [](const SurfaceHit& hit) { return hit.point[1] == 1; }));
}

}  // namespace
