#include "KelvoControl/detail/CellLattice.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace {

using Veltrani::KelvoControlDetail::QuadCell;
using Veltrani::KelvoControlDetail::QuadInverse;
using P2 = Point<double, 2>;

/// The place within the cell, or none.
bool placeIn(const QuadCell& cell, const P2& point, P2& place) {
    return QuadInverse(cell).anyPlaceUpToFold(point, [&](const P2& found) {
        place = found;
        return found[0] >= -1e-9 && found[0] <= 1 + 1e-9 && found[1] >= -1e-9 && found[1] <= 1 + 1e-9;
    });
}

TEST(QuadCell, ItsNodesAndEdgesAreExact) {
    const QuadCell cell{{0.1, 0.2}, {1.3, 0.4}, {-0.7, 1.1}, {1.9, 2.3}};
    EXPECT_EQ(cell.at(0, 0), cell.origin);
    EXPECT_EQ(cell.at(1, 0), cell.alongA);
    EXPECT_EQ(cell.at(0, 1), cell.alongB);
    EXPECT_EQ(cell.at(1, 1), cell.across);
    const QuadCell neighbour{{1.3, 0.4}, {7.0, 7.0}, {1.9, 2.3}, {8.0, 9.0}};
    EXPECT_EQ(cell.at(1, 0.37), neighbour.at(0, 0.37)) << "the common edge is one";
}

TEST(QuadCell, ItsInverseIsExactForEveryConvexShape) {
    std::mt19937 random(9);
    std::uniform_real_distribution<double> part(0.0, 1.0);
    for (int i = 0; i < 5000; ++i) {
        const auto around = [&](double x, double y) { return P2{x + 0.45 * part(random), y + 0.45 * part(random)}; };
        QuadCell cell{around(0, 0), around(1, 0), around(0, 1), around(1, 1)};
        if (i % 2 == 1) {
            std::swap(cell.alongA, cell.alongB);  // mirrored
        }
        const P2 truth{part(random), part(random)};
        P2 place;
        ASSERT_TRUE(placeIn(cell, cell.at(truth[0], truth[1]), place)) << i;
        ASSERT_LE(norm(place - truth), 1e-12) << i;
    }
}

TEST(QuadCell, ItsInverseIsExactWhereOneCornerIsAlmostFlat) {
    for (const double depth : {0.1, 1e-3, 1e-6, 1e-9, 1e-12}) {
        const QuadCell cell{{0.0, 0.0}, {1.0, 0.0}, {-0.9, depth}, {0.1, 2.0}};
        for (int i = 1; i < 10; ++i) {
            for (int j = 1; j < 10; ++j) {
                const P2 point = cell.at(0.1 * i, 0.1 * j);
                P2 place;
                ASSERT_TRUE(placeIn(cell, point, place)) << depth << ": " << i << ", " << j;
                ASSERT_LE(norm(cell.at(place[0], place[1]) - point), 1e-13) << depth << ": " << i << ", " << j;
            }
        }
    }
}

// There the terms of one of the two formulas for a cancel.
TEST(QuadCell, ItsInverseIsExactBesideAnEdgeAtAnAlmostFlatCorner) {
    for (const double depth : {1e-3, 1e-6, 1e-9, 1e-12, 5e-15}) {
        const QuadCell cell{{0.0, 0.0}, {1.0, 0.0}, {-0.1, depth}, {-0.3, 1.2}};
        for (const double b : {0.0, 1e-3, 1e-6, 1e-9, 1e-12, 2e-15}) {
            for (int i = 1; i < 10; ++i) {
                const P2 point = cell.at(0.1 * i, b);
                P2 place;
                ASSERT_TRUE(placeIn(cell, point, place)) << depth << ": " << i << ", " << b;
                ASSERT_LE(norm(cell.at(place[0], place[1]) - point), 1e-13) << depth << ": " << i << ", " << b;
            }
        }
    }
}

TEST(QuadCell, ARectangleNeedsNoSecondRoot) {
    const QuadCell cell{{0.0, 0.0}, {4.0, 0.0}, {0.0, 2.0}, {4.0, 2.0}};
    P2 place;
    ASSERT_TRUE(placeIn(cell, {1.0, 1.5}, place));
    EXPECT_LE(norm(place - P2{0.25, 0.75}), 1e-15);
}

/// A cell whose node across is pushed in: it folds along a = b at (0.625, 0.625), where its value is (0.3125, 0.3125).
const QuadCell DART{{0.0, 0.0}, {1.0, 0.0}, {0.0, 1.0}, {0.2, 0.2}};

TEST(QuadCell, BeyondItsFoldItHasNoPlaceButTheOneOnTheFold) {
    const auto any = [](const P2&) { return true; };
    EXPECT_TRUE(QuadInverse(DART).anyPlaceOf({0.3, 0.3}, any));
    for (const double along : {0.3126, 0.32, 0.45, 0.6}) {
        EXPECT_FALSE(QuadInverse(DART).anyPlaceOf({along, along}, any)) << along;
    }
    P2 place;
    ASSERT_TRUE(placeIn(DART, {0.3125 + 1e-12, 0.3125 + 1e-12}, place));
    EXPECT_LE(norm(DART.at(place[0], place[1]) - P2{0.3125, 0.3125}), 1e-11);
}

TEST(QuadCell, ItsEdgesAreAskedForTheirNearestPlaces) {
    const QuadCell cell{{0.0, 0.0}, {4.0, 0.0}, {1.0, 2.0}, {4.0, 3.0}};
    std::vector<P2> places;
    const auto collect = [&](const P2& place) {
        places.push_back(place);
        return false;
    };
    EXPECT_FALSE(cell.anyEdgePlaceOf({3.0, -0.5}, {1.0, 1.0}, collect));
    // The point lies beyond the lower end of the right edge.
    ASSERT_EQ(places.size(), 4U);
    EXPECT_EQ(places[0], P2(0.75, 0.0));
    EXPECT_EQ(places[1], P2(0.35, 1.0));
    EXPECT_EQ(places[2], P2(0.0, 0.4));
    EXPECT_EQ(places[3], P2(1.0, 0.0));
}

TEST(QuadCell, ADistanceToAnEdgeIsMeasuredInTheUnitOfEachAxis) {
    const QuadCell cell{{0.0, 0.0}, {4.0, 4.0}, {-4.0, 4.0}, {0.0, 8.0}};
    P2 first;
    const auto take = [&](const P2& place) {
        first = place;
        return true;
    };
    ASSERT_TRUE(cell.anyEdgePlaceOf({2.0, 0.0}, {1.0, 1.0}, take));
    EXPECT_DOUBLE_EQ(first[0], 0.25);
    // Four times as coarse upwards: the point seems to lie below (2, 2) rather than beside (0.5, 0.5).
    ASSERT_TRUE(cell.anyEdgePlaceOf({2.0, 0.0}, {1.0, 4.0}, take));
    EXPECT_DOUBLE_EQ(first[0], 0.5 / (1 + 1.0 / 16));
}

TEST(QuadCell, AnEdgeThatIsAPointIsItsOwnNearestPlace) {
    const QuadCell cell{{1.0, 1.0}, {1.0, 1.0}, {0.0, 2.0}, {3.0, 2.0}};
    P2 first{7.0, 7.0};
    EXPECT_TRUE(cell.anyEdgePlaceOf({1.0, 0.9}, {1.0, 1.0}, [&](const P2& place) {
        first = place;
        return true;
    }));
    EXPECT_EQ(first, P2(0.0, 0.0));
}

TEST(QuadCell, ItsBoxHoldsItWithTheMargin) {
    const QuadCell cell{{0.0, 0.0}, {2.0, 1.0}, {-1.0, 2.0}, {3.0, 5.0}};
    EXPECT_TRUE(cell.boxHolds({-1.0, 5.0}, {0.0, 0.0}));
    EXPECT_FALSE(cell.boxHolds({-1.1, 5.0}, {0.0, 0.0}));
    EXPECT_TRUE(cell.boxHolds({-1.1, 5.0}, {0.2, 0.0}));
    EXPECT_FALSE(cell.boxHolds({0.0, 5.1}, {0.2, 0.0}));
}

}  // namespace
