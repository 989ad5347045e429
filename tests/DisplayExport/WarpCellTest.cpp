#include "DisplayExport/WarpCell.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

namespace {

using namespace Veltrani::DisplayExport;
using Kind = WarpCell::Kind;
using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

/// A usable cell with the given contents from left to right, on face 2, that looks ahead.
WarpCell cellWith(const std::array<double, 4>& across) {
    WarpCell cell;
    for (std::size_t i = 0; i < 4; ++i) {
        cell.nodes[i] = {{across[i], 0.1 * static_cast<double>(i)}, 2, WarpNode::State::MAPPED};
    }
    cell.directions = {P3{-1.0, 2.0, -1.0}, P3{1.0, 2.0, -1.0}, P3{1.0, 2.0, 1.0}, P3{-1.0, 2.0, 1.0}};
    return cell;
}

TEST(WarpCell, HasTheCornersOfItsGrid) {
    WarpGrid grid{{0, 0.25, 1}, {0, 0.5, 0.75, 1}, std::vector<WarpNode>(12), {}, {}};
    for (std::size_t i = 0; i < 12; ++i) {
        grid.nodes[i].content = {static_cast<double>(i), 0.0};
    }
    // The right one of the second row.
    const WarpCell without = WarpCell::of(grid, 3);
    EXPECT_EQ(without.directions, (std::array<P3, 4>{}));
    for (std::size_t i = 0; i < 12; ++i) {
        grid.directions.push_back({0.0, 0.0, static_cast<double>(i)});
    }
    const WarpCell cell = WarpCell::of(grid, 3);
    EXPECT_EQ(cell.picture, (std::array<P2, 4>{P2{0.25, 0.5}, P2{1.0, 0.5}, P2{1.0, 0.75}, P2{0.25, 0.75}}));
    const std::array<double, 4> numbers{4, 5, 8, 7};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(cell.nodes[i].content[0], numbers[i]) << i;
        EXPECT_EQ(cell.directions[i][2], numbers[i]) << i;
    }
    EXPECT_EQ(cell.at({0.2, 0.8}), grid.pictureIn(3, {0.2, 0.8}));
    EXPECT_EQ(cell.at({0.5, 0.25}), (P2{0.625, 0.5625}));
}

/// Whichever way round its corners go; what lies on its edges included.
TEST(WarpCell, HoldsTheDirectionsBetweenItsCorners) {
    const WarpCell cell = cellWith({0, 0, 0, 0});
    WarpCell mirrored = cell;
    std::swap(mirrored.directions[0], mirrored.directions[1]);
    std::swap(mirrored.directions[2], mirrored.directions[3]);
    for (const WarpCell& one : {cell, mirrored}) {
        for (const P3& inside :
             {P3{0.0, 1.0, 0.0}, P3{0.4, 1.0, -0.3}, P3{-0.4, 1.0, 0.3}, P3{0.3, 1.0, 0.4}, P3{-0.3, 1.0, -0.4},
              P3{0.0, 4.0, -2.0}, P3{0.0, 4.0, 2.0}, P3{-2.0, 4.0, 0.0}, P3{2.0, 4.0, 0.0}, P3{1.0, 2.0, 1.0}}) {
            EXPECT_TRUE(one.holds(inside)) << inside;
            EXPECT_FALSE(one.holds(-inside)) << inside;
        }
        for (const P3& outside :
             {P3{0.6, 1.0, 0.0}, P3{-0.6, 1.0, 0.0}, P3{0.0, 1.0, 0.6}, P3{0.0, 1.0, -0.6}, P3{1.0, 0.0, 0.0}}) {
            EXPECT_FALSE(one.holds(outside)) << outside;
        }
    }
    EXPECT_FALSE(WarpCell().holds({0.0, 1.0, 0.0})) << "without directions";
}

/// Nearly half of all directions, of which some lie more than a right angle from a corner.
TEST(WarpCell, HoldsTheDirectionsOfAWideCell) {
    WarpCell cell;
    cell.directions = {P3{-1.0, 0.2, -1.0}, P3{1.0, 0.2, -1.0}, P3{1.0, 0.2, 1.0}, P3{-1.0, 0.2, 1.0}};
    for (const P3& corner : cell.directions) {
        const P3 inside = 0.8 * corner + P3{0.0, 0.04, 0.0};
        EXPECT_TRUE(cell.holds(inside)) << inside;
        EXPECT_FALSE(cell.holds(-inside)) << inside;
    }
}

TEST(WarpCell, HasItsContentsBesideEachOther) {
    const auto acrossOf = [](const std::array<double, 4>& across, bool wrapsAround) {
        const auto contents = cellWith(across).contents(wrapsAround);
        std::vector<double> moved;
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_EQ(contents[i][1], 0.1 * static_cast<double>(i));
            moved.push_back(contents[i][0]);
        }
        return moved;
    };
    EXPECT_EQ(acrossOf({0.875, 0.125, 0.25, 0.875}, false), (std::vector<double>{0.875, 0.125, 0.25, 0.875}));
    EXPECT_EQ(acrossOf({0.875, 0.125, 0.25, 0.875}, true), (std::vector<double>{0.875, 1.125, 1.25, 0.875}));
    EXPECT_EQ(acrossOf({0.125, 0.875, 0.75, 0.125}, true), (std::vector<double>{0.125, -0.125, -0.25, 0.125}));
    EXPECT_EQ(acrossOf({0.375, 0.75, 0.125, 0.5}, true), (std::vector<double>{0.375, 0.75, 1.125, 1.5}))
        << "each beside the one before it";
}

TEST(WarpCell, IsOfTheKindOfItsCorners) {
    const std::vector<P3> poles{{0.0, 0.0, 1.0}, {0.0, 0.0, -1.0}};
    const WarpCell whole = cellWith({0.4, 0.5, 0.5, 0.4});
    EXPECT_EQ(whole.kind(poles, true), Kind::WHOLE);
    EXPECT_EQ(whole.kind({{0.0, 0.0, 1.0}, {0.0, 1.0, 0.0}}, true), Kind::OVER_POLE);
    const WarpCell overSeam = cellWith({0.95, 0.05, 0.05, 0.95});
    EXPECT_EQ(overSeam.kind(poles, true), Kind::OVER_SEAM);
    EXPECT_EQ(overSeam.kind(poles, false), Kind::WHOLE) << "an input that ends there";
    for (std::size_t i = 0; i < 4; ++i) {
        WarpCell cell = whole;
        cell.nodes[i].face = 3;
        EXPECT_EQ(cell.kind({}, false), Kind::OVER_FACES) << i;
        cell = whole;
        cell.nodes[i].state = WarpNode::State::CONTINUED;
        EXPECT_EQ(cell.kind({}, false), Kind::WHOLE) << i;
        cell.nodes[i] = {};
        EXPECT_EQ(cell.kind({{0.0, 1.0, 0.0}}, false), Kind::UNUSABLE) << i;
    }
}

}  // namespace
