#include "KelvoScreen/MeshOracle.h"
#include "KelvoScreen/MeshScreen.h"
#include "KelvoScreen/Meshes.h"
#include "support/AllocationFault.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <span>
#include <vector>

/// Every allocation of this program is counted; that is why the test is a program of its own.

namespace {

using Vector = Point<double, 3>;

TEST(MeshScreenAllocation, ARayItsNormalAndItsSideAllocateNothing) {
    const MeshScreen screen(meshes::room(6));
    (void)screen.intersect({0.0, 0.0, 0.0}, {1.0, 0.0, 0.0});
    oracle::Random random(91);
    const std::size_t before = AllocationFault::allocations();
    int hits = 0;
    for (int i = 0; i < 1000; ++i) {
        const Vector from = random.inCube();
        const Vector to = from + random.inCube();
        const IntersectionSet set = screen.intersect(from, to);
        if (!set.empty()) {
            hits += sideOfSurface(to - from, screen.getScreenNormal(set.first().point)) != 0 ? 1 : 0;
        }
    }
    EXPECT_EQ(AllocationFault::allocations() - before, 0U);
    EXPECT_GT(hits, 900);
}

TEST(MeshScreenAllocation, ARayPastTheBorderAllocatesNothing) {
    // A shallow bowl, seen from its inside.
    const MeshScreen screen(meshes::surface(20, 20, [](double s, double t) {
        const Vector flat{2 * s - 1, 2 * t - 1, 0.0};
        return flat + Vector{0.0, 0.0, 0.1 * dot(flat, flat)};
    }));
    (void)screen.intersectExtrapolatedWithSpecifiedNormal({0.0, 0.0, 1.0}, {3.0, 0.0, 0.0}, 1);
    oracle::Random random(93);
    const std::size_t before = AllocationFault::allocations();
    int continued = 0;
    for (int i = 0; i < 1000; ++i) {
        const Vector from = Vector{0.0, 0.0, 2.0} + 0.5 * random.inCube();
        const Vector to = 2.0 * random.inCube() - Vector{0.0, 0.0, 2.0};
        for (const int side : {-1, 1}) {
            const bool isHit = !screen.intersectExtrapolatedWithSpecifiedNormal(from, to, side).empty();
            continued += isHit && screen.intersect(from, to).empty() ? 1 : 0;
        }
    }
    EXPECT_EQ(AllocationFault::allocations() - before, 0U);
    EXPECT_GT(continued, 100);
}

TEST(MeshScreenAllocation, ManyRaysAtOnceAllocateNothing) {
    const MeshScreen screen(meshes::room(6));
    (void)screen.intersect({0.0, 0.0, 0.0}, {1.0, 0.0, 0.0});
    oracle::Random random(93);
    std::vector<Ray> rays;
    for (int i = 0; i < 2000; ++i) {
        // Half of them close to each other, half in any order: packets and single rays.
        const Vector from = i < 1000 ? Vector{0.1, 0.2, 0.3} : random.inCube();
        const Vector direction = i < 1000 ? Vector{0.0003 * i, 1.0, 0.11} : random.inCube();
        rays.emplace_back(from, from + direction);
    }
    std::vector<SurfaceHit> hits(rays.size());
    screen.intersectRays(std::span(rays).first(16), std::span(hits).first(16));
    const std::size_t before = AllocationFault::allocations();
    screen.intersectRays(rays, hits);
    EXPECT_EQ(AllocationFault::allocations() - before, 0U);
    EXPECT_GT(std::count_if(hits.begin(), hits.end(), [](const SurfaceHit& hit) { return hit.hit; }), 1900);
}

TEST(MeshScreenAllocation, TheSearchForABarePointAllocatesNothing) {
    const MeshScreen screen(meshes::room(6));
    (void)screen.getScreenNormal({0.0, 0.0, 0.0});
    oracle::Random random(92);
    const std::size_t before = AllocationFault::allocations();
    double sum = 0;
    for (int i = 0; i < 1000; ++i) {
        sum += norm(screen.getScreenNormal(5.0 * random.inCube()));
    }
    EXPECT_EQ(AllocationFault::allocations() - before, 0U);
    EXPECT_NEAR(sum, 1000, 1e-9);
}

TEST(MeshScreenAllocation, TheCounterCounts) {
    const std::size_t before = AllocationFault::allocations();
    const MeshScreen screen(meshes::room(1));
    EXPECT_GT(AllocationFault::allocations(), before);
}

}  // namespace
