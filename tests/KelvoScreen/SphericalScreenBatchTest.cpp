#include "Common/VeltraniException.h"
#include "KelvoScreen/SphericalScreen.h"
#include "support/ScreenConfigDouble.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>

namespace {

using P3 = Point<double, 3>;

constexpr double PI = std::numbers::pi;

/// Asks ray by ray, as every screen does by default.
std::vector<SurfaceHit> oneByOne(const ScreenGeometry& screen, const std::vector<Ray>& rays) {
    std::vector<SurfaceHit> hits(rays.size());
    screen.ScreenGeometry::intersectRays(rays, hits);
    return hits;
}

std::vector<SurfaceHit> atOnce(const ScreenGeometry& screen, const std::vector<Ray>& rays) {
    // What stands there from before must not be seen again.
    std::vector<SurfaceHit> hits(rays.size(), {{7.0, 7.0, 7.0}, {7.0, 7.0, 7.0}, 7, 7, true});
    screen.intersectRays(rays, hits);
    return hits;
}

/// @return the number of hits
int expectEqual(const ScreenGeometry& screen, const std::vector<Ray>& rays) {
    const std::vector<SurfaceHit> found = atOnce(screen, rays);
    const std::vector<SurfaceHit> expected = oneByOne(screen, rays);
    int count = 0;
    for (std::size_t i = 0; i < rays.size(); ++i) {
        EXPECT_EQ(found[i].hit, expected[i].hit) << i;
        EXPECT_EQ(found[i].point, expected[i].point) << i;
        EXPECT_EQ(found[i].normal, expected[i].normal) << i;
        EXPECT_EQ(found[i].t, expected[i].t) << i;
        EXPECT_EQ(found[i].side, expected[i].side) << i;
        count += found[i].hit ? 1 : 0;
    }
    return count;
}

/// From inside and outside of a sphere of radius 2 around a centre, through places near it.
std::vector<Ray> raysAround(const P3& centre, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> part(-1.0, 1.0);
    const auto place = [&](double size) { return centre + P3{part(random), part(random), part(random)} * size; };
    std::vector<Ray> rays;
    for (int i = 0; i < 2000; ++i) {
        rays.emplace_back(place(i % 2 == 0 ? 1.0 : 8.0), place(2.5));
    }
    return rays;
}

TEST(SphericalScreenBatch, AnswersAsSingleRaysDoOnTheWholeSphere) {
    const P3 centre{0.5, -1.0, 30.0};
    const SphericalScreen screen(centre, 2, -PI, PI, -PI / 2, PI / 2);
    EXPECT_GT(expectEqual(screen, raysAround(centre, 1)), 1000);
}

TEST(SphericalScreenBatch, AnswersAsSingleRaysDoOnATiltedDomeAndAlongItsEdge) {
    ScreenConfigDouble description;
    description.shape = L"Sphere";
    description.centre = {0.5, -1.0, 3.0};
    description.orientation = {0.3, 0.4, -0.2};
    description.radius = 2;
    description.azimuthMin = -1.2;
    description.azimuthMax = 1.0;
    description.elevationMin = -0.3;
    description.elevationMax = 1.1;
    const SphericalScreen screen(&description);
    std::vector<Ray> rays = raysAround(description.centre, 2);
    for (int i = 0; i <= 100; ++i) {
        P3 edge;
        ASSERT_TRUE(screen.mapInto3D({0.01 * i, i % 2 == 0 ? 0.0 : 1.0}, edge, false));
        rays.emplace_back(description.centre + P3{0.1, 0.2, 0.3}, edge);
        rays.emplace_back(P3{40.0, -30.0, 20.0}, edge);
    }
    EXPECT_GT(expectEqual(screen, rays), 300);
}

TEST(SphericalScreenBatch, RaysThatAreNoneMiss) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinite = std::numeric_limits<double>::infinity();
    const SphericalScreen screen({}, 2, -PI, PI, -PI / 2, PI / 2);
    const std::vector<Ray> rays{{{}, {}}, {{nan, 0.0, 0.0}, {0.0, 1.0, 0.0}}, {{}, {infinite, 0.0, 0.0}}};
    EXPECT_EQ(expectEqual(screen, rays), 0);
    EXPECT_EQ(expectEqual(SphericalScreen({}, 0, -PI, PI, -PI / 2, PI / 2), raysAround({}, 3)), 0);
}

TEST(SphericalScreenBatch, RoomForAnotherNumberOfHitsIsRefused) {
    const SphericalScreen screen({}, 2, -PI, PI, -PI / 2, PI / 2);
    const std::vector<Ray> rays(3);
    std::vector<SurfaceHit> hits(2);
    EXPECT_THROW(screen.intersectRays(rays, hits), VeltraniException);
}

/// A class that was derived elsewhere and meets nothing.
class Curtain : public SphericalScreen {
public:
    using SphericalScreen::SphericalScreen;
    [[nodiscard]] IntersectionSet intersect(const P3&, const P3&) const override { return {}; }
};

TEST(SphericalScreenBatch, ADerivedClassIsAskedForEveryRay) {
    const Curtain curtain({}, 2, -PI, PI, -PI / 2, PI / 2);
    EXPECT_FALSE(atOnce(curtain, {{{}, {0.0, 1.0, 0.0}}})[0].hit);
}

}  // namespace
