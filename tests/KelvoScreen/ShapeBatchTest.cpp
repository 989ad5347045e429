#include "Common/VeltraniException.h"
#include "Configuration/BaseConfig.h"
#include "KelvoScreen/CylinderScreen.h"
#include "KelvoScreen/FlatScreen.h"
#include "KelvoScreen/RuledSurfaceScreen.h"
#include "KelvoScreen/SphericalScreen.h"
#include "support/ScreenConfigDouble.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <numbers>
#include <random>
#include <string>
#include <vector>

/// Rays that are cast at once at shapes that are given by numbers: the results are those of `intersect`,
/// `getScreenNormal` and `sideOfSurface` for each ray, bit for bit.

namespace {

using Vector = Point<double, 3>;

constexpr double PI = std::numbers::pi;

struct Shape {
    std::string name;
    std::shared_ptr<const ScreenGeometry> screen;
    Vector centre;
    double size;
};

ScreenConfigDouble description(const Vector& centre, const Vector& orientation, double size) {
    ScreenConfigDouble result;
    result.centre = centre;
    result.orientation = orientation;
    result.radius = size;
    result.width = 1.5 * size;
    result.height = size;
    result.azimuthMin = -PI;
    result.azimuthMax = PI;
    result.elevationMin = -PI / 2;
    result.elevationMax = PI / 2;
    return result;
}

/// Whole, wide (more than half a turn), narrow, and with a rim near the pole.
std::vector<Shape> roundShapes(const Vector& centre, const Vector& orientation, double size) {
    std::vector<Shape> result;
    for (const double azimuth : {PI, 2.0, 0.7}) {
        for (const double highest : {PI / 2, 1.4, 0.4}) {
            ScreenConfigDouble numbers = description(centre, orientation, size);
            numbers.azimuthMin = azimuth < PI ? -azimuth - 0.1 : -PI;
            numbers.azimuthMax = azimuth;
            numbers.elevationMax = highest;
            numbers.elevationMin = highest < PI / 2 ? -0.35 : -PI / 2;
            const std::string limits = " to " + std::to_string(azimuth) + ", " + std::to_string(highest);
            result.push_back({"sphere" + limits, std::make_shared<SphericalScreen>(&numbers), centre, size});
            result.push_back({"cylinder" + limits, std::make_shared<CylinderScreen>(&numbers), centre, size});
        }
    }
    return result;
}

std::vector<Shape> shapes() {
    std::vector<Shape> result;
    for (const auto& [centre, orientation] : {std::pair{Vector{}, Vector{}}, {{1.0, -20.0, 3.0}, {0.4, -0.3, 0.2}}}) {
        for (const double size : {5.0, 1e-3, 4e7}) {
            for (Shape& shape : roundShapes(centre, orientation, size)) {
                result.push_back(std::move(shape));
            }
            ScreenConfigDouble numbers = description(centre, orientation, size);
            result.push_back({"flat", std::make_shared<FlatScreen>(&numbers), centre, size});
            for (const double angle : {-1.5, -0.6, 0.4, 1.3}) {
                const Vector foot{std::sin(angle), std::cos(angle), -0.5};
                numbers.lowerRail.push_back(centre + size * foot);
                numbers.upperRail.push_back(centre + size * Vector{1.1 * foot[0], 0.9 * foot[1], 0.6});
            }
            result.push_back({"ruled", std::make_shared<RuledSurfaceScreen>(&numbers), centre, size});
        }
    }
    return result;
}

/// Single rays, as every screen casts them by default.
std::vector<SurfaceHit> oneByOne(const ScreenGeometry& screen, const std::vector<Ray>& rays) {
    std::vector<SurfaceHit> hits;
    for (const Ray& ray : rays) {
        const IntersectionSet found = screen.intersect(ray.first, ray.second);
        SurfaceHit hit;
        if (!found.empty()) {
            const Vector normal = screen.getScreenNormal(found.first().point);
            const int side = sideOfSurface(ray.second - ray.first, normal);
            hit = {found.first().point, normal, found.first().t, side, true};
        }
        hits.push_back(hit);
    }
    return hits;
}

/// As bits: -0.0 differs from 0.0, and a NaN equals itself.
std::array<std::uint64_t, 9> bitsOf(const SurfaceHit& hit) {
    const auto bits = [](double number) { return std::bit_cast<std::uint64_t>(number); };
    return {bits(hit.point[0]),  bits(hit.point[1]),  bits(hit.point[2]),
            bits(hit.normal[0]), bits(hit.normal[1]), bits(hit.normal[2]),
            bits(hit.t),         hit.hit ? 1U : 0U,   static_cast<std::uint64_t>(hit.side)};
}

/// @return the number of hits
int expectEqual(const Shape& shape, const std::vector<Ray>& rays) {
    const std::vector<SurfaceHit> expected = oneByOne(*shape.screen, rays);
    // What stands there from before must not be seen again.
    std::vector<SurfaceHit> hits(rays.size(), {{7.0, 7.0, 7.0}, {7.0, 7.0, 7.0}, 7, 7, true});
    shape.screen->intersectRays(rays, hits);
    int count = 0;
    int different = 0;
    for (std::size_t i = 0; i < rays.size(); ++i) {
        count += hits[i].hit ? 1 : 0;
        if (bitsOf(hits[i]) != bitsOf(expected[i]) && ++different <= 3) {
            ADD_FAILURE() << shape.name << " of " << shape.size << ", ray " << i << " from " << rays[i].first << " to "
                          << rays[i].second << ": " << hits[i] << ", expected " << expected[i];
        }
    }
    EXPECT_EQ(different, 0) << shape.name;
    return count;
}

class Random {
public:
    explicit Random(unsigned seed) : m_generator(seed) {}

    double number(double most) { return m_part(m_generator) * most; }
    Vector place(double size) { return {number(size), number(size), number(size)}; }

private:
    std::mt19937_64 m_generator;
    std::uniform_real_distribution<double> m_part{-1.0, 1.0};
};

TEST(ShapeBatch, RandomRaysFromInsideAndOutsideHitAsSingleOnes) {
    Random random(31);
    for (const Shape& shape : shapes()) {
        std::vector<Ray> rays;
        for (const double reach : {0.3, 1.0, 3.0, 40.0, 1e6, 1e9}) {
            for (int i = 0; i < 501; ++i) {
                const Vector from = shape.centre + random.place(reach * shape.size);
                rays.emplace_back(from, shape.centre + random.place(1.5 * shape.size));
            }
        }
        EXPECT_GT(expectEqual(shape, rays), 150) << shape.name;
    }
}

TEST(ShapeBatch, RaysAtEdgesAndBesideThemHitAsSingleOnes) {
    Random random(32);
    for (const Shape& shape : shapes()) {
        std::vector<Ray> rays;
        for (int i = 0; i < 2000; ++i) {
            const double along = 0.5 + random.number(0.5);
            const double edge = i % 2 == 0 ? 0.0 : 1.0;
            Vector place;
            ASSERT_TRUE(shape.screen->mapInto3D(
                i % 4 < 2 ? Point<double, 2>{edge, along} : Point<double, 2>{along, edge}, place, false));
            const double beside = std::pow(10.0, -17 + i % 13) * shape.size;
            const Vector from = shape.centre + random.place((i % 3 == 0 ? 50 : 0.5) * shape.size);
            rays.emplace_back(from, i % 5 == 0 ? place : place + random.place(beside));
        }
        EXPECT_GT(expectEqual(shape, rays), 300) << shape.name;
    }
}

TEST(ShapeBatch, TouchingRaysAndRaysFromTheSurfaceHitAsSingleOnes) {
    Random random(33);
    for (const Shape& shape : shapes()) {
        std::vector<Ray> rays;
        for (int i = 0; i < 2000; ++i) {
            Vector place;
            ASSERT_TRUE(shape.screen->mapInto3D({0.5 + random.number(0.5), 0.5 + random.number(0.5)}, place, false));
            const Vector tangent = cross(shape.screen->getScreenNormal(place), random.place(shape.size));
            const Vector off = random.place(std::pow(10.0, -17 + i % 13) * shape.size);
            if (i % 2 == 0) {
                rays.emplace_back(place + off - 2.0 * tangent, place + off);
            } else {
                rays.emplace_back(place + off, shape.centre + random.place(2 * shape.size));
            }
        }
        EXPECT_GT(expectEqual(shape, rays), 300) << shape.name;
    }
}

TEST(ShapeBatch, RaysOfOddLengthsAndRaysThatAreNoneAreAsSingleOnes) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinite = std::numeric_limits<double>::infinity();
    Random random(34);
    for (const Shape& shape : shapes()) {
        std::vector<Ray> rays;
        for (const double odd : {nan, infinite, -infinite, 1e308, -1e200, 1e155, 1e101, 0.0, -0.0, 1e-300, 5e-324}) {
            for (std::size_t axis = 0; axis < 3; ++axis) {
                for (const bool isOrigin : {false, true}) {
                    Ray ray{shape.centre, shape.centre + random.place(shape.size)};
                    (isOrigin ? ray.first : ray.second)[axis] = odd;
                    rays.push_back(ray);
                    rays.emplace_back(shape.centre, shape.centre + random.place(shape.size));
                }
            }
        }
        for (const double length : {0.0, 5e-324, 1e-160, 1e-101, 1e-99, 1e-20, 1e20, 1e99, 1e101, 1e160, 1e300}) {
            for (int i = 0; i < 8; ++i) {
                Vector axis;
                axis[static_cast<std::size_t>(i) % 3] = i < 4 ? length : -length;
                rays.emplace_back(Vector{}, axis);
                rays.emplace_back(shape.centre, shape.centre + axis);
                rays.emplace_back(Vector{}, length * random.place(1));
            }
        }
        rays.emplace_back(Vector{}, Vector{});
        expectEqual(shape, rays);
    }
}

TEST(ShapeBatch, ABatchOfAnyLengthIsAsItsRays) {
    Random random(35);
    for (const Shape& shape : shapes()) {
        for (std::size_t count = 0; count < 11; ++count) {
            std::vector<Ray> rays;
            while (rays.size() < count) {
                rays.emplace_back(shape.centre + random.place(shape.size), shape.centre + random.place(shape.size));
            }
            expectEqual(shape, rays);
        }
    }
}

TEST(ShapeBatch, WherePatchesLieOnEachOtherTheNormalIsThatOfASingleRay) {
    Random random(36);
    // There and back again, and half of the way forth: three layers, of which the last is the first turned over.
    ScreenConfigDouble numbers;
    for (const double x : {-1.0, 1.0, -1.0, 0.0}) {
        numbers.lowerRail.push_back({x, 2.0, -1.0});
        numbers.upperRail.push_back({x, 2.0, 1.0});
    }
    const Shape folded{"folded", std::make_shared<RuledSurfaceScreen>(&numbers), {0.0, 2.0, 0.0}, 1};
    std::vector<Ray> rays;
    for (int i = 0; i < 2000; ++i) {
        rays.emplace_back(random.place(1.0), folded.centre + random.place(1.0));
    }
    EXPECT_GT(expectEqual(folded, rays), 1000);
}

TEST(ShapeBatch, WherePatchesMeetTheNormalIsThatOfASingleRay) {
    Random random(37);
    for (const double size : {1.0, 1e-56}) {
        ScreenConfigDouble numbers;
        const Vector tip{0.0, 2.0 * size, size};
        for (const double x : {-1.0, -0.2, 0.3, 1.0}) {
            numbers.lowerRail.push_back({x * size, (2.5 - x * x) * size, -size});
            numbers.upperRail.push_back(tip);
        }
        const Shape cone{"cone", std::make_shared<RuledSurfaceScreen>(&numbers), {0.0, 2.0 * size, 0.0}, size};
        std::vector<Ray> rays;
        for (int i = 0; i < 2000; ++i) {
            const Vector& foot = numbers.lowerRail[1 + static_cast<std::size_t>(i) % 2];
            const double height = i % 3 == 0 ? 1.0 : 0.5 + random.number(0.5);
            rays.emplace_back(random.place(size), foot + height * (tip - foot));
        }
        EXPECT_GT(expectEqual(cone, rays), 1000);
    }
}

/// Counts the rays that reach it.
template <class Kind>
class Counting : public Kind {
public:
    using Kind::Kind;
    [[nodiscard]] IntersectionSet intersect(const Vector& from, const Vector& to) const override {
        ++count;
        return Kind::intersect(from, to);
    }

    mutable std::size_t count = 0;
};

template <class Kind>
void expectThatEachRayReaches(const std::string& name) {
    ScreenConfigDouble numbers = description({}, {}, 2);
    numbers.lowerRail = {{-1.0, 2.0, -1.0}, {1.0, 2.0, -1.0}};
    numbers.upperRail = {{-1.0, 2.0, 1.0}, {1.0, 2.0, 1.0}};
    const Counting<Kind> screen(&numbers);
    const std::vector<Ray> rays(9, Ray{{0.0, -0.5, 0.0}, {0.1, 1.0, 0.2}});
    std::vector<SurfaceHit> hits(rays.size());
    screen.intersectRays(rays, hits);
    EXPECT_EQ(screen.count, rays.size()) << name;
    EXPECT_EQ(screen.raysAtOnce(), 0U) << name;
    EXPECT_TRUE(hits.back().hit) << name;
}

TEST(ShapeBatch, ADerivedClassIsGivenEveryRay) {
    expectThatEachRayReaches<SphericalScreen>("sphere");
    expectThatEachRayReaches<CylinderScreen>("cylinder");
    expectThatEachRayReaches<FlatScreen>("flat");
    expectThatEachRayReaches<RuledSurfaceScreen>("ruled");
}

TEST(ShapeBatch, AScreenThatIsNotValidIsNeverHit) {
    const std::vector<Ray> rays(9, Ray{{}, {0.1, 1.0, 0.2}});
    const Shape invalid[]{{"sphere", std::make_shared<SphericalScreen>(nullptr), {}, 0},
                          {"cylinder", std::make_shared<CylinderScreen>(nullptr), {}, 0},
                          {"flat", std::make_shared<FlatScreen>(nullptr), {}, 0},
                          {"ruled", std::make_shared<RuledSurfaceScreen>(nullptr), {}, 0}};
    for (const Shape& shape : invalid) {
        EXPECT_EQ(expectEqual(shape, rays), 0) << shape.name;
    }
}

TEST(ShapeBatch, RoomForAnotherNumberOfHitsIsRefused) {
    const std::vector<Ray> rays(8);
    std::vector<SurfaceHit> hits(7);
    for (const Shape& shape : shapes()) {
        EXPECT_THROW(shape.screen->intersectRays(rays, hits), VeltraniException) << shape.name;
    }
}

}  // namespace
