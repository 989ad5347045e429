#include "KelvoScreen/detail/RuledPatch.h"

#include "KelvoScreen/MeshOracle.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace Veltrani::KelvoScreenDetail;
using Vector = Point<double, 3>;

constexpr double TOLERANCE = 1e-14;
constexpr double ENDLESS = 1e6;

/// z = x y / 2 over [-1, 1] x [-1, 1].
RuledPatch saddle() {
    return {{-1.0, -1.0, 0.5}, {1.0, -1.0, -0.5}, {-1.0, 1.0, -0.5}, {1.0, 1.0, 0.5}};
}

Line through(const Vector& from, const Vector& to) {
    return {from, (to - from) * (1 / norm(to - from))};
}

TEST(RuledPatch, ItsCornersAreExactAndTheRestIsBilinear) {
    const Vector corner{0.1, 0.7, -1.3};
    const RuledPatch patch(corner, {1.1, 0.3, 0.9}, {0.2, 1.7, 0.3}, {1.3, 1.9, 1.1});
    EXPECT_EQ(patch.pointAt({0, 0}), corner);
    EXPECT_EQ(patch.pointAt({1, 1}), (Vector{1.3, 1.9, 1.1}));
    EXPECT_LE(norm(saddle().pointAt({0.75, 0.9}) - Vector{0.5, 0.8, 0.2}), 1e-15);
}

TEST(RuledPatch, NormalsAreUpwardsCrossRight) {
    // Seen from above, up is +y and right is +x: their cross product points down.
    EXPECT_EQ(saddle().normalAt({0.5, 0.5}), (Vector{0.0, 0.0, -1.0}));
    const Vector slanted = saddle().normalAt({1, 0.5});
    EXPECT_LE(norm(slanted - Vector{0.0, 0.5, -1.0} * (1 / std::sqrt(1.25))), 1e-15);
}

TEST(RuledPatch, ATipHasTheNormalBesideIt) {
    const RuledPatch triangle({0.0, 0.0, 0.0}, {2.0, 0.0, 0.0}, {1.0, 0.0, 1.0}, {1.0, 0.0, 1.0});
    for (const PatchPlace place : {PatchPlace{0.5, 1}, {0, 1}, {1, 1}, {0.3, 0.3}}) {
        EXPECT_LE(norm(triangle.normalAt(place) - Vector{0.0, 1.0, 0.0}), 1e-12) << place.u << ' ' << place.v;
    }
    const RuledPatch sideways({0.0, 0.0, 0.0}, {2.0, 0.0, -1.0}, {0.0, 0.0, 0.0}, {2.0, 0.0, 1.0});
    EXPECT_LE(norm(sideways.normalAt({0, 0.5}) - Vector{0.0, 1.0, 0.0}), 1e-12);
}

TEST(RuledPatch, WithoutAnAreaItHasNoNormal) {
    const RuledPatch line({0.0, 0.0, 0.0}, {1.0, 2.0, 3.0}, {0.0, 0.0, 0.0}, {1.0, 2.0, 3.0});
    EXPECT_FALSE(line.hasArea());
    EXPECT_EQ(line.normalAt({0.5, 0.5}), Vector{});
    EXPECT_TRUE(saddle().hasArea());
}

TEST(RuledPatch, ALineMeetsASaddleAtTheRootsOfAQuadratic) {
    // Along (1, 1, 0) at height h the saddle z = x y / 2 is met at x = y = +-sqrt(2 h).
    std::array<PatchMeeting, 2> meetings;
    for (const double height : {0.02, 0.125, 0.405}) {
        const Line line = through({-2.0, -2.0, height}, {2.0, 2.0, height});
        ASSERT_EQ(saddle().meet(line, PatchRange{}, TOLERANCE, meetings), 2U) << height;
        const double x = std::sqrt(2 * height);
        for (const PatchMeeting& meeting : meetings) {
            EXPECT_NEAR(std::abs(meeting.point[0]), x, 1e-15);
            EXPECT_NEAR(meeting.point[0], meeting.point[1], 1e-15);
            EXPECT_NEAR(meeting.along, (meeting.point[0] + 2) * std::sqrt(2.0), 1e-14);
            EXPECT_NEAR(meeting.place.u, (meeting.point[0] + 1) / 2, 1e-15);
        }
        EXPECT_LT(meetings[0].point[0] * meetings[1].point[0], 0);
    }
    EXPECT_EQ(saddle().meet(through({-2.0, -2.0, -0.1}, {2.0, 2.0, -0.1}), {}, TOLERANCE, meetings), 0U);
}

TEST(RuledPatch, ATouchingLineMeetsItOnce) {
    std::array<PatchMeeting, 2> meetings;
    ASSERT_EQ(saddle().meet(through({-2.0, -2.0, 0.0}, {2.0, 2.0, 0.0}), {}, TOLERANCE, meetings), 1U);
    EXPECT_LE(norm(meetings[0].point), 1e-15);
    ASSERT_EQ(saddle().meet(through({-2.0, -2.0, -5e-15}, {2.0, 2.0, -5e-15}), {}, TOLERANCE, meetings), 1U)
        << "within the tolerance";
    EXPECT_EQ(saddle().meet(through({-2.0, -2.0, -1e-12}, {2.0, 2.0, -1e-12}), {}, TOLERANCE, meetings), 0U);
}

TEST(RuledPatch, TheRangeDecidesWhatIsMet) {
    std::array<PatchMeeting, 2> meetings;
    const Line beside = through({3.0, 0.5, 9.0}, {3.0, 0.5, -9.0});
    EXPECT_EQ(saddle().meet(beside, {}, TOLERANCE, meetings), 0U);
    ASSERT_EQ(saddle().meet(beside, {0, ENDLESS, 0, 1}, TOLERANCE, meetings), 1U);
    EXPECT_LE(norm(meetings[0].point - Vector{3.0, 0.5, 0.75}), 1e-14);
    EXPECT_EQ(saddle().meet(beside, {-ENDLESS, 1, 0, 1}, TOLERANCE, meetings), 0U);
    const Line above = through({0.5, 3.0, 9.0}, {0.5, 3.0, -9.0});
    EXPECT_EQ(saddle().meet(above, {}, TOLERANCE, meetings), 0U);
    EXPECT_EQ(saddle().meet(above, {0, 1, -ENDLESS, ENDLESS}, TOLERANCE, meetings), 1U);
}

TEST(RuledPatch, ALineInThePatchDoesNotMeetIt) {
    std::array<PatchMeeting, 2> meetings;
    EXPECT_EQ(saddle().meet(through({0.5, -3.0, -0.75}, {0.5, 3.0, 0.75}), {}, TOLERANCE, meetings), 0U);
    EXPECT_EQ(saddle().meet(through({-3.0, 0.5, -0.75}, {3.0, 0.5, 0.75}), {}, TOLERANCE, meetings), 0U);
}

TEST(RuledPatch, TheTipIsMetFromAnywhereButFromItsOwnPlane) {
    const RuledPatch triangle({0.0, 0.0, 0.0}, {2.0, 0.0, 0.0}, {1.0, 0.0, 1.0}, {1.0, 0.0, 1.0});
    std::array<PatchMeeting, 2> meetings;
    const Vector tip{1.0, 0.0, 1.0};
    oracle::Random random(61);
    for (int i = 0; i < 500; ++i) {
        ASSERT_EQ(triangle.meet(through(tip + random.inCube(), tip), {}, TOLERANCE, meetings), 1U) << "line " << i;
        EXPECT_LE(norm(meetings[0].point - tip), 1e-13);
    }
    EXPECT_EQ(triangle.meet(through({3.0, 0.0, 2.5}, tip), {}, TOLERANCE, meetings), 0U);
}

TEST(RuledPatch, PassingLinesAreRuledOutByTheBall) {
    EXPECT_TRUE(saddle().mayMeet(through({0.0, 0.0, 9.0}, {0.9, 0.9, 0.4}), TOLERANCE));
    EXPECT_FALSE(saddle().mayMeet(through({2.0, 2.0, 9.0}, {2.0, 2.0, -9.0}), TOLERANCE));
    EXPECT_TRUE(saddle().mayMeet(through({2.0, 2.0, 9.0}, {2.0, 2.0, -9.0}), 2));
}

TEST(RuledPatch, TheClosestPlaceIsNotFurtherThanAnyOther) {
    oracle::Random random(62);
    for (int i = 0; i < 300; ++i) {
        const RuledPatch patch(random.inCube(), random.inCube(), random.inCube(), random.inCube());
        const Vector point = 2.0 * random.inCube();
        const double found = norm(patch.pointAt(patch.closest(point, TOLERANCE)) - point);
        EXPECT_GE(found, patch.distanceBound(point) - 1e-15);
        double smallest = std::numeric_limits<double>::infinity();
        for (int u = 0; u <= 100; ++u) {
            for (int v = 0; v <= 100; ++v) {
                smallest = std::min(smallest, norm(patch.pointAt({u / 100.0, v / 100.0}) - point));
            }
        }
        ASSERT_LE(found, smallest + 1e-12) << "patch " << i;
    }
}

TEST(RuledPatch, OppositeARimOrACornerThatIsNearest) {
    // Exactly there the distance neither falls nor rises towards the rim.
    const RuledPatch square({0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {1.0, 1.0, 0.0});
    for (const double x : {0.0, 0.25, 0.5, 1.0}) {
        for (const double y : {0.0, 0.3, 1.0}) {
            const PatchPlace place = square.closest({x, y, 2.0}, TOLERANCE);
            EXPECT_NEAR(place.u, x, 1e-12) << x << ' ' << y;
            EXPECT_NEAR(place.v, y, 1e-12) << x << ' ' << y;
        }
    }
}

TEST(RuledPatch, ThePlaceOfAPointOnThePatchIsFoundToRounding) {
    oracle::Random random(63);
    for (int i = 0; i < 20000; ++i) {
        // In a list the numbers are drawn in the order of the text, whatever the compiler.
        const std::array<Vector, 4> corners{random.inCube(), random.inCube(), random.inCube(), random.inCube()};
        const RuledPatch patch(corners[0], corners[1], corners[2], corners[3]);
        const Vector point = patch.pointAt({random.uniform(0, 1), random.uniform(0, 1)});
        ASSERT_LE(norm(patch.pointAt(patch.closest(point, TOLERANCE)) - point), 1e-14) << "patch " << i;
    }
}

TEST(RuledPatch, RefiningFollowsTheContinuation) {
    const Vector far{3.0, 0.5, 0.75};
    const PatchPlace place = saddle().refineClosest(far, {1, 0.75}, {-ENDLESS, ENDLESS, -ENDLESS, ENDLESS});
    EXPECT_LE(norm(saddle().pointAt(place) - far), 1e-13);
}

TEST(RuledPatch, PlacesAreClampedToTheRange) {
    const PatchRange range;
    EXPECT_EQ(range.clamp({-1, 2}).u, 0);
    EXPECT_EQ(range.clamp({-1, 2}).v, 1);
    EXPECT_EQ(range.clamp({0.25, 0.75}).u, 0.25);
}

}  // namespace
