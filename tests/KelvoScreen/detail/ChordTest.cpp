#include "KelvoScreen/detail/RayAim.h"

#include "KelvoScreen/MeshOracle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace {

using namespace Veltrani::KelvoScreenDetail;
using Plane = Point<double, 2>;
using Vector = Point<double, 3>;

constexpr double TOLERANCE = 1e-14;

template <std::size_t N>
Chord<N> chordInFront(const Point<double, N>& origin, const Point<double, N>& direction, double directionLength2,
                      double radius, double tolerance) {
    Chord<N> chord;
    visitChord(origin, direction, directionLength2, radius, tolerance,
               [&](const Point<double, N>& place, double t) { chord.add(place, t); });
    return chord;
}

template <std::size_t N>
Chord<N> chordOf(const Point<double, N>& origin, const Point<double, N>& direction, double radius = 1) {
    return chordInFront(origin, direction, dot(direction, direction), radius, TOLERANCE);
}

TEST(Chord, HasItsEndsInOrder) {
    const Chord<2> chord = chordOf(Plane{-3.0, 0.0}, Plane{2.0, 0.0});
    ASSERT_EQ(chord.count, 2U);
    EXPECT_EQ(chord.ends[0].place, (Plane{-1.0, 0.0}));
    EXPECT_EQ(chord.ends[0].t, 1);
    EXPECT_EQ(chord.ends[1].place, (Plane{1.0, 0.0}));
    EXPECT_EQ(chord.ends[1].t, 2);
}

TEST(Chord, LeavesOutWhatIsBehind) {
    EXPECT_EQ(chordOf(Plane{0.0, 0.0}, Plane{1.0, 0.0}).count, 1U);
    EXPECT_EQ(chordOf(Plane{3.0, 0.0}, Plane{1.0, 0.0}).count, 0U);
}

TEST(Chord, TouchesWithinTheTolerance) {
    EXPECT_EQ(chordOf(Plane{-3.0, 1.0}, Plane{1.0, 0.0}).count, 1U);
    const Chord<2> outside = chordOf(Plane{-3.0, 1 + 5e-15}, Plane{1.0, 0.0});
    ASSERT_EQ(outside.count, 1U);
    EXPECT_EQ(outside.ends[0].place, (Plane{0.0, 1.0})) << "on the circle";
    EXPECT_EQ(chordOf(Plane{-3.0, 1 + 3e-14}, Plane{1.0, 0.0}).count, 0U);
}

TEST(Chord, StartsOnTheSurfaceWithinTheTolerance) {
    for (const double offset : {-5e-15, 0.0, 5e-15}) {
        const Chord<2> outward = chordOf(Plane{1 + offset, 0.0}, Plane{1.0, 0.0});
        ASSERT_EQ(outward.count, 1U) << offset;
        EXPECT_NEAR(outward.ends[0].t, 0, 6e-15);
        const Chord<2> inward = chordOf(Plane{1 + offset, 0.0}, Plane{-1.0, 0.0});
        ASSERT_EQ(inward.count, 2U) << offset;
        EXPECT_NEAR(inward.ends[0].t, 0, 6e-15);
        EXPECT_NEAR(inward.ends[1].t, 2, 6e-15);
    }
    EXPECT_EQ(chordOf(Plane{1 + 3e-14, 0.0}, Plane{1.0, 0.0}).count, 0U);
}

TEST(Chord, LiesOnASmallBallToItsOwnRoundingWhenSeenFromFarAway) {
    oracle::Random random(25);
    int count = 0;
    for (int i = 0; i < 1000; ++i) {
        const Vector aim = 0.5 * random.inCube();
        const Vector origin = 1e9 * random.inCube();
        const Chord<3> chord = chordOf(origin, aim - origin);
        for (std::size_t j = 0; j < chord.count; ++j, ++count) {
            EXPECT_NEAR(norm(chord.ends[j].place), 1, 4 * std::numeric_limits<double>::epsilon());
        }
    }
    EXPECT_GT(count, 1900);
}

TEST(Chord, IsTheSameByTheTextbookAsFromItsMiddle) {
    oracle::Random random(26);
    std::array<int, 3> counts{};
    for (int i = 0; i < 20000; ++i) {
        // Inside, around and outside the ball; near, and further away than the textbook formula serves.
        const Vector origin = std::pow(10.0, random.uniform(-3, 1.2)) * random.inCube();
        const Vector direction = std::pow(10.0, random.uniform(-3, 3)) * (2.0 * random.inCube() - origin);
        const double length2 = dot(direction, direction);
        const Chord<3> chord = chordInFront(origin, direction, length2, 1, TOLERANCE);
        const Chord<3> general = chordFromItsMiddle(origin, direction, length2, 1.0, TOLERANCE);
        ASSERT_EQ(chord.count, general.count) << i;
        ++counts[chord.count];
        for (std::size_t j = 0; j < chord.count; ++j) {
            const double cosine = std::abs(dot(general.ends[j].place, direction)) / std::sqrt(length2);
            const double along = 1e-14 * std::max(1.0, dot(origin, origin)) / cosine;
            EXPECT_LE(norm(chord.ends[j].place - general.ends[j].place), along) << i;
            EXPECT_NEAR(chord.ends[j].t * std::sqrt(length2), general.ends[j].t * std::sqrt(length2), along) << i;
            EXPECT_NEAR(norm(chord.ends[j].place), 1, 2e-14) << i;
        }
    }
    EXPECT_GT(counts[0], 1000);
    EXPECT_GT(counts[1], 1000);
    EXPECT_GT(counts[2], 1000);
}

TEST(Chord, OfExtremeLengthsIsNotLostInTheSquares) {
    for (const double radius : {1e-150, 1e-100, 1.0, 1e100, 1e150}) {
        for (const double length : {1e-100, 1.0, 1e100}) {
            for (const double start : {-3.0, -0.5, 0.25}) {
                const Chord<2> chord =
                    chordInFront(Plane{start * radius, 0.0}, Plane{length, 0.0}, length * length, radius, 0);
                SCOPED_TRACE(testing::Message() << radius << ' ' << length << ' ' << start);
                ASSERT_EQ(chord.count, start < -1 ? 2U : 1U);
                EXPECT_NEAR(chord.ends[chord.count - 1].place[0] / radius, 1, 4e-15);
                EXPECT_NEAR(chord.ends[0].t * length / radius, start < -1 ? -1 - start : 1 - start, 1e-14);
            }
        }
    }
}

TEST(Chord, FromTheCentreHasNoNaNHoweverLargeTheTolerance) {
    for (const double tolerance : {0.1, 0.42, 1.0, 100.0}) {
        const Chord<3> chord = chordInFront(Vector{}, Vector{1.0, 0.0, 0.0}, 1, 1, tolerance);
        ASSERT_EQ(chord.count, 1U) << tolerance;
        EXPECT_EQ(chord.ends[0].place, (Vector{1.0, 0.0, 0.0}));
        EXPECT_EQ(chord.ends[0].t, 1);
    }
}

TEST(Chord, OfALineFurtherAwayThanEverySquareIsNone) {
    EXPECT_EQ(chordInFront(Vector{1.0, -1.0, 0.0} * 1e170, Vector{0.0, 1.0, 0.0}, 1, 1, 1e156).count, 0U);
    EXPECT_EQ(chordInFront(Plane{1.0, -1.0} * 1e170, Plane{0.0, 1.0}, 1, 1, 1e156).count, 0U);
}

TEST(Chord, OfANaNIsNone) {
    const double bad = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(chordOf(Plane{bad, 0.0}, Plane{1.0, 0.0}).count, 0U);
    EXPECT_EQ(chordOf(Plane{0.0, 0.0}, Plane{bad, 0.0}).count, 0U);
}

}  // namespace
