#include "KelvoScreen/detail/BoxScene.h"

#include "KelvoScreen/MeshOracle.h"
#include "KelvoScreen/Meshes.h"
#include "KelvoScreen/detail/TriangleIndex.h"
#include "KelvoScreen/detail/TriangleMath.h"

#include <gtest/gtest.h>

#include <array>
#include <set>

namespace {

using namespace Veltrani::KelvoScreenDetail;
using Vector = Point<double, 3>;

class WholeMesh final : public TriangleIndex::Source {
public:
    explicit WholeMesh(const TriangleMesh& mesh) : m_mesh(mesh) {}
    bool corners(std::uint32_t triangle, Corners& out) const override {
        out = cornersOf(m_mesh, triangle);
        return true;
    }

private:
    const TriangleMesh& m_mesh;
};

/// Notes the triangles that each lane visits and answers with a fixed limit.
class LaneRecorder final : public PacketVisitor {
public:
    explicit LaneRecorder(double answer) { m_reach.fill(answer); }
    LaneMask visit(std::uint32_t triangle, LaneMask lanes) override {
        forEachLane(lanes, [&](std::size_t lane) { visited[lane].insert(triangle); });
        return lanes;
    }
    [[nodiscard]] const Lanes& reach() const override { return m_reach; }

    std::array<std::set<std::uint32_t>, LANES> visited;

private:
    Lanes m_reach;
};

constexpr double LENGTH = 0.5;  ///< of the largest component of each direction

LaneRays towards(const Vector& eye, const std::array<Vector, LANES>& headings) {
    LaneRays rays;
    for (std::size_t i = 0; i < LANES; ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            rays.origin[k][i] = eye[k];
            rays.heading[k][i] = headings[i][k];
        }
        rays.largest[i] = LENGTH;
        rays.end[i] = 100;
    }
    return rays;
}

class PacketCast : public testing::TestWithParam<std::size_t> {};

TEST_P(PacketCast, EveryTriangleThatALaneMeetsIsVisited) {
    if (GetParam() > widestPacket()) {
        GTEST_SKIP() << "this processor has no packets of " << GetParam();
    }
    const TriangleMesh mesh = meshes::bumpyBall(5, 16, 24);
    const TriangleIndex index(static_cast<std::uint32_t>(mesh.triangles.size()), WholeMesh(mesh));
    oracle::Random random(401);
    int met = 0;
    for (int round = 0; round < 40; ++round) {
        const Vector eye = 3.0 * random.inCube();
        std::array<Vector, LANES> headings;
        for (Vector& heading : headings) {
            heading = {random.uniform(-0.6, 0.6), 1.0, random.uniform(-0.6, 0.6)};
        }
        const LaneMask lanes = round == 0 ? ALL_LANES : random.below(ALL_LANES) + 1;
        LaneRecorder recorder(100);
        index.alongRays(towards(eye, headings), lanes, GetParam(), recorder);
        for (std::size_t lane = 0; lane < LANES; ++lane) {
            if ((lanes >> lane & 1U) == 0) {
                ASSERT_TRUE(recorder.visited[lane].empty()) << "lane " << lane;
                continue;
            }
            const auto hit = oracle::nearestHit(mesh, eye, eye + LENGTH * headings[lane]);
            ASSERT_TRUE(hit);
            ASSERT_EQ(recorder.visited[lane].count(hit->triangle), 1U) << "lane " << lane << " round " << round;
            ++met;
        }
    }
    EXPECT_GT(met, 200);
}

TEST_P(PacketCast, TheReachEndsEachLane) {
    if (GetParam() > widestPacket()) {
        GTEST_SKIP() << "this processor has no packets of " << GetParam();
    }
    TriangleMesh mesh;
    constexpr int LAYERS = 64;
    for (int i = 0; i < LAYERS; ++i) {
        mesh = meshes::joined(mesh, meshes::place(meshes::wall(1, 1, 1, 1), {1, {0.0, 1.0 * i, 0.0}}));
    }
    const TriangleIndex index(static_cast<std::uint32_t>(mesh.triangles.size()), WholeMesh(mesh));
    std::array<Vector, LANES> headings;
    headings.fill({0.001, 1.0, 0.0005});
    LaneRecorder recorder(20);  // ten units of length
    index.alongRays(towards({0.5, 0.0, 0.25}, headings), ALL_LANES, GetParam(), recorder);
    for (const std::set<std::uint32_t>& visited : recorder.visited) {
        EXPECT_EQ(visited.count(2 * 5), 1U) << "before the limit";
        EXPECT_EQ(visited.count(2 * 60), 0U) << "far behind it";
    }
}

INSTANTIATE_TEST_SUITE_P(OfEveryWidth, PacketCast, testing::Values(4, 8, 16));

}  // namespace
