#include "KelvoScreen/CylinderScreen.h"
#include "KelvoScreen/MeshOracle.h"
#include "KelvoScreen/RuledSurfaceScreen.h"
#include "KelvoScreen/RuledSurfaces.h"
#include "KelvoScreen/SphericalScreen.h"
#include "support/AllocationFault.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>

/// Every allocation of this program is counted; that is why the test is a program of its own.

namespace {

using Vector = Point<double, 3>;

void expectNoAllocation(const ScreenGeometry& screen) {
    oracle::Random random(71);
    const std::size_t before = AllocationFault::allocations();
    int hits = 0;
    double sum = 0;
    for (int i = 0; i < 1000; ++i) {
        const Vector from = random.inCube();
        const Vector to = from + random.inCube();
        const IntersectionSet set = screen.intersect(from, to);
        if (!set.empty()) {
            hits += sideOfSurface(to - from, screen.getScreenNormal(set.first().point)) != 0 ? 1 : 0;
        }
        sum += static_cast<double>(screen.intersectExtrapolatedWithSpecifiedNormal(from, to, 1).size());
        Vector out;
        sum += screen.mapInto3D({random.uniform(0, 1), random.uniform(0, 1)}, out, false) ? out[0] : 0;
    }
    EXPECT_EQ(AllocationFault::allocations() - before, 0U);
    EXPECT_GT(hits, 150);
    EXPECT_TRUE(std::isfinite(sum));
}

TEST(ShapeAllocation, RaysNormalsAndMappedPointsAllocateNothing) {
    ScreenConfigDouble config;
    config.radius = 5;
    config.height = 4;
    config.orientation = {0.1, 0.2, 0.3};
    config.azimuthMin = -2;
    config.azimuthMax = 2;
    config.elevationMin = -0.5;
    config.elevationMax = 1;
    expectNoAllocation(SphericalScreen(&config));
    expectNoAllocation(CylinderScreen(&config));
    const ScreenConfigDouble cockpit = ruled::cockpit();
    expectNoAllocation(RuledSurfaceScreen(&cockpit));
}

TEST(ShapeAllocation, TwoHitsAllocateNothing) {
    const SphericalScreen sphere(Vector{}, 1, -4, 2, -1, 1);
    const ScreenConfigDouble config = ruled::saddle();
    const RuledSurfaceScreen saddle(&config);
    const std::size_t before = AllocationFault::allocations();
    const IntersectionSet both = sphere.intersect({-3.0, 0.1, 0.2}, {3.0, 0.2, 0.1});
    const IntersectionSet twice = saddle.intersect({-1.6, -1.6, 0.2}, {1.6, 1.6, 0.2});
    EXPECT_EQ(AllocationFault::allocations() - before, 0U);
    EXPECT_EQ(both.size(), 2U);
    EXPECT_EQ(twice.size(), 2U);
}

TEST(ShapeAllocation, AZigzagThatIsHitEightTimesAllocatesOnce) {
    ScreenConfigDouble config = ruled::rectangle();
    config.lowerRail.clear();
    config.upperRail.clear();
    for (int i = 0; i <= 8; ++i) {
        const Vector point{i % 2 == 0 ? -1.0 : 1.0, 2 + 0.5 * i, -1.0};
        config.lowerRail.push_back(point);
        config.upperRail.push_back(point + Vector{0.0, 0.0, 2.0});
    }
    const RuledSurfaceScreen zigzag(&config);
    for (const bool continued : {false, true}) {
        const Vector eye{0.1, 0.0, 0.0};
        const std::size_t before = AllocationFault::allocations();
        const IntersectionSet hits = continued
                                         ? zigzag.intersectExtrapolatedWithSpecifiedNormal(eye, {0.1, 1.0, 0.0}, 1)
                                         : zigzag.intersect(eye, {0.1, 1.0, 0.0});
        EXPECT_EQ(AllocationFault::allocations() - before, 1U);
        EXPECT_EQ(hits.size(), continued ? 4U : 8U);
    }
}

TEST(ShapeAllocation, TheCounterCounts) {
    const std::size_t before = AllocationFault::allocations();
    const SphericalScreen sphere(Vector{}, 1, -1, 1, -1, 1);
    EXPECT_GT(AllocationFault::allocations(), before) << sphere.isValid();
}

}  // namespace
