#include "KelvoScreen/detail/RayPacket.h"

#include "KelvoScreen/MeshOracle.h"
#include "KelvoScreen/Meshes.h"

#include <gtest/gtest.h>

#include <bit>
#include <limits>
#include <vector>

namespace {

using namespace Veltrani::KelvoScreenDetail;
using Vector = Point<double, 3>;

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

/// A wall of 4 x 3 at y = 0, without any search structure.
class RayPacketOnAWall : public testing::Test {
protected:
    TriangleMesh mesh = meshes::wall(4, 3, 4, 3);
    Box box{{0.0, 0.0, 0.0}, {4.0, 0.0, 3.0}};
    TriangleShapes shapes{4, 2, false, {}};
    PacketTarget target{mesh, shapes, box, 1e-5, 1e-7, 10, 4};

    /// Rays at the wall, a little apart.
    static std::vector<Ray> beside(std::size_t count) {
        std::vector<Ray> rays;
        for (std::size_t i = 0; i < count; ++i) {
            const double x = 0.1 + 0.2 * static_cast<double>(i);
            rays.push_back({{2.0, -2.0, 1.3}, {x, 0.0, 1.2}});
        }
        return rays;
    }

    /// All triangles, one after the other, with all lanes.
    [[nodiscard]] std::vector<SurfaceHit> visitAll(RayPacket& packet, std::size_t count) const {
        for (std::uint32_t i = 0; i < mesh.triangles.size(); ++i) {
            packet.visit(i, packet.active());
        }
        std::vector<SurfaceHit> hits(count);
        packet.finish(hits);
        return hits;
    }
};

TEST_F(RayPacketOnAWall, FindsTheNearestHitOfEachLane) {
    const std::vector<Ray> rays = beside(LANES);
    RayPacket packet(target);
    packet.take(rays);
    ASSERT_EQ(packet.active(), ALL_LANES);
    ASSERT_EQ(packet.refused(), 0U);
    const std::vector<SurfaceHit> hits = visitAll(packet, rays.size());
    for (std::size_t i = 0; i < rays.size(); ++i) {
        const auto expected = oracle::nearestHit(mesh, rays[i].first, rays[i].second);
        ASSERT_TRUE(hits[i].hit && expected) << "lane " << i;
        EXPECT_LE(norm(hits[i].point - expected->point), 1e-14) << "lane " << i;
        EXPECT_NEAR(hits[i].t, expected->t, 1e-14) << "lane " << i;
        EXPECT_EQ(hits[i].normal, (Vector{0.0, 1.0, 0.0})) << "lane " << i;
        EXPECT_EQ(hits[i].side, 1) << "lane " << i;
    }
}

TEST_F(RayPacketOnAWall, TakesRaysOfSeveralRowsOfAList) {
    constexpr std::size_t LENGTH = 7;
    std::vector<Ray> rays;
    for (std::size_t i = 0; i < 5 * LENGTH; ++i) {
        const double x = 0.4 + 0.5 * static_cast<double>(i % LENGTH);
        rays.push_back({{2.0, -2.0, 1.3}, {x, 0.0, 0.3 + 0.4 * static_cast<double>(i / LENGTH)}});
    }
    const PacketPlaces places{LENGTH + 2, 5, 3, LENGTH};
    RayPacket packet(target);
    packet.take(rays, places);
    ASSERT_EQ(packet.active(), ALL_LANES >> 1U);
    const std::vector<SurfaceHit> hits = visitAll(packet, rays.size());
    for (std::size_t i = 0; i < rays.size(); ++i) {
        const std::size_t row = i / LENGTH;
        const bool isTaken = row >= 1 && row <= 3 && i % LENGTH >= 2;
        ASSERT_EQ(hits[i].hit, isTaken) << "ray " << i;
        if (isTaken) {
            EXPECT_LE(norm(hits[i].point - rays[i].second), 1e-14) << "ray " << i;
        }
    }
}

/// Each of the rays of a square would have a part of the surface to itself.
TEST_F(RayPacketOnAWall, RaysOfSeveralRowsAreRefusedWhereHalfAsFarApart) {
    std::vector<Ray> rays;
    for (std::size_t i = 0; i < LANES; ++i) {
        rays.push_back({{2.0, -2.0, 1.3}, {0.5 + 0.2 * static_cast<double>(i), 0.0, 1.2}});
    }
    target.largestSpread = 4;
    RayPacket packet(target);
    packet.take(rays);
    EXPECT_EQ(packet.refused(), 0U);
    packet.take(rays, {0, 4, 4, 4});
    EXPECT_EQ(packet.refused(), ALL_LANES);
    target.largestSpread = 6.5;
    packet.take(rays, {0, 4, 4, 4});
    EXPECT_EQ(packet.refused(), 0U);
}

TEST_F(RayPacketOnAWall, LanesThatAreNotAskedKeepTheirState) {
    const std::vector<Ray> rays = beside(LANES);
    RayPacket packet(target);
    packet.take(rays);
    for (std::uint32_t i = 0; i < mesh.triangles.size(); ++i) {
        EXPECT_EQ(packet.visit(i, packet.active() & 0xFFU) & ~0xFFU, 0U);
    }
    std::vector<SurfaceHit> hits(rays.size());
    packet.finish(hits);
    EXPECT_TRUE(hits[7].hit);
    EXPECT_FALSE(hits[8].hit);
}

TEST_F(RayPacketOnAWall, FewerRaysThanLanesFillTheLowest) {
    for (std::size_t count = 4; count <= LANES; ++count) {
        RayPacket packet(target);
        packet.take(beside(count));
        EXPECT_EQ(std::popcount(packet.active()), static_cast<int>(count));
        EXPECT_TRUE(visitAll(packet, count).back().hit);
    }
}

TEST_F(RayPacketOnAWall, TooFewRaysAreRefused) {
    for (std::size_t count = 1; count < 4; ++count) {
        RayPacket packet(target);
        packet.take(beside(count));
        EXPECT_EQ(packet.active(), 0U);
        EXPECT_EQ(std::popcount(packet.refused()), static_cast<int>(count));
    }
}

TEST_F(RayPacketOnAWall, RaysPastTheBoxAreNeitherActiveNorRefused) {
    std::vector<Ray> rays = beside(LANES);
    rays[3].second = {9.0, 0.5, 9.0};
    RayPacket packet(target);
    packet.take(rays);
    EXPECT_EQ(packet.active(), ALL_LANES & ~(1U << 3));
    EXPECT_EQ(packet.refused(), 0U);
    std::vector<SurfaceHit> hits(LANES, SurfaceHit{{}, {}, 5, 0, true});
    packet.finish(hits);
    EXPECT_FALSE(hits[3].hit);
    EXPECT_EQ(hits[3].t, 0);
    EXPECT_EQ(hits[3].side, 1);
}

TEST_F(RayPacketOnAWall, UnusualRaysAreRefusedAlone) {
    const Vector eye = beside(1).front().first;
    for (const Ray& unusual :
         {Ray{eye, eye}, Ray{eye, {eye[0], 0.0, 1.2}}, Ray{eye, {NOT_A_NUMBER, 0.0, 1.2}},
          Ray{eye, {1.0, NOT_A_NUMBER, 1.2}}, Ray{{2.0, -2.0, NOT_A_NUMBER}, {1.0, 0.0, 1.0}},
          Ray{eye, {1.0, std::numeric_limits<double>::infinity(), 1.2}}, Ray{{1e9, -1e10, 1e9}, {1.0, 0.0, 1.0}},
          Ray{eye, {1e120, 1e120, 1e120}}, Ray{eye, {9.0, 0.0, 1.2}}}) {
        std::vector<Ray> rays = beside(LANES);
        rays[5] = unusual;
        RayPacket packet(target);
        packet.take(rays);
        EXPECT_EQ(packet.refused() & ~(1U << 5), 0U);
        EXPECT_EQ(packet.active(), ALL_LANES & ~(1U << 5));
    }
}

TEST_F(RayPacketOnAWall, RaysFarApartAreRefusedTogether) {
    target.largestSpread = 0.5;
    RayPacket packet(target);
    packet.take(beside(LANES));
    EXPECT_EQ(packet.active(), 0U);
    EXPECT_EQ(packet.refused(), ALL_LANES);
}

TEST_F(RayPacketOnAWall, AHitMakesTheReachShorter) {
    RayPacket packet(target);
    packet.take(beside(LANES));
    EXPECT_EQ(packet.reach()[2], std::numeric_limits<double>::infinity());
    (void)visitAll(packet, LANES);
    EXPECT_NEAR(packet.reach()[2] * packet.rays().largest[2], 0, 1e-4) << "from where the ray enters the box";
}

TEST(Lanes, DoWhatSingleNumbersDo) {
    oracle::Random random(21);
    Lanes a, b, result;
    for (int round = 0; round < 100; ++round) {
        for (std::size_t i = 0; i < LANES; ++i) {
            a[i] = random.uniform(-2, 2);
            b[i] = i % 5 == 0 ? a[i] : random.uniform(-2, 2);
        }
        for (std::size_t i = 0; i < LANES; i += WIDTH) {
            store(result, i,
                  absolute(load(a, i)) / larger(load(a, i), load(b, i)) -
                      squareRoot(absolute(smaller(load(a, i), load(b, i)))));
        }
        for (std::size_t i = 0; i < LANES; ++i) {
            EXPECT_EQ(result[i], std::abs(a[i]) / std::max(a[i], b[i]) - std::sqrt(std::abs(std::min(a[i], b[i]))));
            EXPECT_EQ((negativeLanes(a) >> i & 1U) != 0, a[i] < 0);
        }
    }
}

}  // namespace
