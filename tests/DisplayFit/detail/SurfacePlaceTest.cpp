#include "DisplayFit/detail/SurfacePlace.h"

#include "KelvoScreen/CylinderScreen.h"
#include "KelvoScreen/SphericalScreen.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace {

using namespace Veltrani::DisplayFitDetail;
using Vector = Point<double, 3>;
constexpr double PI = std::numbers::pi;

SphericalScreen dome() {
    return {Vector{1, 2, 3}, 5.0, -PI / 2, PI / 2, -PI / 4, PI / 2};
}

TEST(SurfaceSearch, FindsThePlaceOfAPointOnTheSurface) {
    const SphericalScreen screen = dome();
    const SurfaceSearch search(screen);
    for (const double s : {0.0, 0.1, 0.5, 0.93, 1.0, 1.05}) {
        for (const double t : {0.0, 0.2, 0.6, 0.97}) {
            Vector point;
            ASSERT_TRUE(screen.mapInto3D({s, t}, point, true));
            // From an expectation that is off, and from one that is far off.
            for (const Point<double, 2>& expected :
                 {Point<double, 2>{s + 0.05, t - 0.04}, Point<double, 2>{0.5, 0.5}}) {
                const auto place = search.nearest(point, expected);
                ASSERT_TRUE(place);
                EXPECT_NEAR(place->parameters[0], s, 1e-12);
                EXPECT_NEAR(place->parameters[1], t, 1e-12);
            }
        }
    }
}

TEST(SurfaceSearch, FindsTheNearestPlaceOfAPointBesideTheSurface) {
    const SphericalScreen screen = dome();
    Vector point;
    ASSERT_TRUE(screen.mapInto3D({0.3, 0.4}, point, false));
    const Vector beside = Vector{1, 2, 3} + (point - Vector{1, 2, 3}) * 1.02;
    const auto place = SurfaceSearch(screen).nearest(beside, {0.35, 0.45});
    ASSERT_TRUE(place);
    EXPECT_NEAR(place->parameters[0], 0.3, 1e-9);
    EXPECT_NEAR(place->parameters[1], 0.4, 1e-9);
}

// Oracle: the nearest place of a sphere lies on the line from its middle.
TEST(SurfaceSearch, FindsThePlaceOfAPointBesideThePoleWhereThePoleWasExpected) {
    const SphericalScreen screen = dome();
    const SurfaceSearch search(screen);
    const Vector middle{1, 2, 3};
    for (const double turn : {-1.2, 0.0, 0.4, 1.5}) {
        for (const double off : {1e-3, 0.05, 0.2}) {
            const Vector point = middle + Vector{off * std::sin(turn), off * std::cos(turn), 5};
            for (const double s : {0.0, 0.5, 1.0}) {
                const auto place = search.nearest(point, {s, 1});
                ASSERT_TRUE(place);
                const Vector expected = middle + (point - middle) * (5 / norm(point - middle));
                EXPECT_LT(norm(place->point - expected), 1e-7) << turn << ", " << off << ", " << s;
            }
        }
    }
    // At the pole itself nothing is nearer.
    const auto pole = search.nearest(middle + Vector{0, 0, 5.01}, {0.3, 1});
    ASSERT_TRUE(pole);
    EXPECT_LT(norm(pole->point - middle - Vector{0, 0, 5}), 1e-7);
}

TEST(SurfaceSearch, TangentsAreThoseOfTheSurface) {
    const SphericalScreen screen = dome();
    SurfacePlace place;
    ASSERT_TRUE(SurfacePlace::at(screen, {0.5, 1.0 / 3}, place));
    // At the horizon: half a turn for s, three quarters of half a turn for t.
    EXPECT_NEAR(norm(place.tangents[0]), 5 * PI, 1e-6);
    EXPECT_NEAR(norm(place.tangents[1]), 5 * 0.75 * PI, 1e-6);
    EXPECT_NEAR(dot(place.tangents[0], place.tangents[1]), 0, 1e-6);
}

}  // namespace
