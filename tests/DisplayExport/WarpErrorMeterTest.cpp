#include "DisplayExport/WarpErrorMeter.h"

#include "BelongingContent.h"
#include "DisplayExport/CellCutter.h"
#include "DisplayExport/ContentInput.h"
#include "DisplayExport/WarpGrid.h"
#include "ExportDisplays.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>
#include <tuple>
#include <vector>

namespace {

using namespace Veltrani::DisplayExport;

constexpr double PI = std::numbers::pi;
constexpr double SIDE = 4096;

/// A wall of 4 by 2 metres, three metres ahead of an eye at the origin, which one picture covers: what a fisheye shows
/// at each place of the picture is known by a formula.
class WarpErrorMeterTest : public ExportDisplayTest {
protected:
    WarpErrorMeterTest() {
        load(
            "<Screen shape='Flat'><EyePoint x='0' y='0' z='0'/><Centre x='0.5' y='3' z='0.25'/><Size width='4' "
            "height='2'/></Screen>",
            displays::projector("P1", displays::WHOLE_AREA + "<Layout xMin='0' xMax='4' yMin='0' yMax='2'/>"),
            "<TargetData type='PlanarBasic'/>");
        m_sight = std::make_unique<ChannelSight>(config(), channels()[0]);
        InputChoice fisheye;
        fisheye.kind = InputKind::FISHEYE;
        m_input = std::make_unique<ContentInput>(config(), *m_sight, fisheye);
    }

    /// In pixels of the fisheye.
    static P2 contentAt(const P2& picture) {
        const double x = -1.5 + 4 * picture[0];
        const double z = -0.75 + 2 * picture[1];
        const double aside = std::max(std::hypot(x, z), 1e-300);
        const double part = SIDE * std::atan2(aside, 3.0) / PI / aside;
        return {part * x, part * z};
    }

    /// The largest error of the three ways to interpolate at a place of a cell.
    static double errorAt(const P2& lower, const P2& size, double x, double y) {
        const P2 a = contentAt(lower);
        const P2 b = contentAt({lower[0] + size[0], lower[1]});
        const P2 c = contentAt(lower + size);
        const P2 d = contentAt({lower[0], lower[1] + size[1]});
        const P2 belongs = contentAt({lower[0] + x * size[0], lower[1] + y * size[1]});
        const P2 bilinear = (1 - y) * ((1 - x) * a + x * b) + y * ((1 - x) * d + x * c);
        const P2 rising = x >= y ? (1 - x) * a + (x - y) * b + y * c : (1 - y) * a + (y - x) * d + x * c;
        const P2 falling = x + y <= 1 ? (1 - x - y) * a + x * b + y * d : (x + y - 1) * c + (1 - y) * b + (1 - x) * d;
        return std::max({norm(bilinear - belongs), norm(rising - belongs), norm(falling - belongs)});
    }

    [[nodiscard]] WarpGrid grid(std::size_t columns, std::size_t rows) const {
        const auto along = [](std::size_t count) {
            std::vector<double> places;
            for (std::size_t i = 0; i < count; ++i) {
                places.push_back(static_cast<double>(i) / static_cast<double>(count - 1));
            }
            return places;
        };
        return WarpSampler(*m_sight, *m_input).sample(along(columns), along(rows), {.directions = true}, {});
    }

    /// The largest error of a grid at so many places per side of each cell.
    static double dense(const WarpGrid& grid, int perSide) {
        double largest = 0;
        for (std::size_t cell = 0; cell < grid.cells(); ++cell) {
            largest = std::max(largest, denseOfCell(WarpCell::of(grid, cell), perSide));
        }
        return largest;
    }

    static double denseOfCell(const WarpCell& cell, int perSide) {
        double largest = 0;
        for (int row = 0; row <= perSide; ++row) {
            for (int column = 0; column <= perSide; ++column) {
                largest = std::max(largest,
                                   errorAt(cell.picture[0], cell.picture[2] - cell.picture[0],
                                           static_cast<double>(column) / perSide, static_cast<double>(row) / perSide));
            }
        }
        return largest;
    }

    std::unique_ptr<ChannelSight> m_sight;
    std::unique_ptr<ContentInput> m_input;
};

/// What it sees at its few places is nearly the largest error that there is, and never more.
TEST_F(WarpErrorMeterTest, ComesNearTheLargestErrorOfAKnownWarp) {
    const WarpErrorMeter meter(*m_sight, *m_input);
    for (const auto& [columns, rows] : {std::pair<std::size_t, std::size_t>{2, 2}, {5, 3}, {9, 9}, {17, 4}}) {
        const WarpGrid nodes = grid(columns, rows);
        const double largest = dense(nodes, 60);
        const MeasuredError measured = meter.measure(nodes, 0.25, 40'000);
        EXPECT_LE(measured.error.largest, largest * (1 + 1e-9)) << columns << " x " << rows;
        EXPECT_GE(measured.error.largest, 0.85 * largest) << columns << " x " << rows;
        for (std::size_t cell = 0; cell < nodes.cells(); ++cell) {
            const WarpCell one = WarpCell::of(nodes, cell);
            const double ofCell = denseOfCell(one, 60);
            const WarpError error = meter.errorsIn({&one, 1}, 0.8 * ofCell).front();
            EXPECT_LE(error.largest, ofCell * (1 + 1e-9));
            EXPECT_GE(error.largest, 0.75 * ofCell);
            EXPECT_EQ(error.places, 21U);
            EXPECT_LT(error.beyond, 21U);
        }
    }
}

/// What it states is never less than what there is, and hardly more.
TEST_F(WarpErrorMeterTest, BoundsTheLargestErrorOfAKnownWarp) {
    const WarpErrorMeter meter(*m_sight, *m_input);
    for (const auto& [columns, rows] : {std::pair<std::size_t, std::size_t>{2, 2}, {5, 3}, {9, 9}, {17, 4}, {40, 30}}) {
        const WarpGrid nodes = grid(columns, rows);
        const double largest = dense(nodes, 32);
        // Of the largest grid a tenth of the cells is compared at first.
        const double bound = meter.boundOf(nodes, meter.measure(nodes, 0.25, 110));
        EXPECT_GE(bound, largest) << columns << " x " << rows;
        EXPECT_LE(bound, 1.05 * largest) << columns << " x " << rows;
    }
}

/// All that it compares, worked out one by one.
TEST_F(WarpErrorMeterTest, CountsThePlacesThatItCompares) {
    constexpr double ALLOWED = 3;
    const WarpGrid nodes = grid(4, 3);
    std::size_t places = 0;
    std::size_t beyond = 0;
    P2 along;
    double largest = 0;
    for (std::size_t cell = 0; cell < nodes.cells(); ++cell) {
        const WarpCell one = WarpCell::of(nodes, cell);
        for (int row = 0; row <= 4; ++row) {
            for (int column = 0; column <= 4; ++column) {
                const bool isEndOfRow = column == 0 || column == 4;
                const bool isEndOfColumn = row == 0 || row == 4;
                if (isEndOfRow && isEndOfColumn) {
                    continue;
                }
                const double error = errorAt(one.picture[0], one.picture[2] - one.picture[0], column / 4.0, row / 4.0);
                ++places;
                beyond += error > ALLOWED ? 1 : 0;
                largest = std::max(largest, error);
                along[0] = isEndOfColumn ? std::max(along[0], error) : along[0];
                along[1] = isEndOfRow ? std::max(along[1], error) : along[1];
            }
        }
    }
    const MeasuredError measured = WarpErrorMeter(*m_sight, *m_input).measure(nodes, ALLOWED, 40'000);
    EXPECT_EQ(measured.error.places, places);
    EXPECT_EQ(measured.error.beyond, beyond);
    EXPECT_GT(beyond, 0U);
    EXPECT_LT(beyond, places);
    EXPECT_EQ(measured.error.leftOut, 0U);
    EXPECT_NEAR(measured.error.largest, largest, 1e-7);
    EXPECT_NEAR(measured.searched, largest, 1e-7);
    EXPECT_EQ(measured.tooCoarse, 0U);
    EXPECT_EQ(measured.step, 1U);
    EXPECT_NEAR(measured.along[0], along[0], 1e-7);
    EXPECT_NEAR(measured.along[1], along[1], 1e-7);
    EXPECT_NE(along[0], along[1]);
}

/// Without a corner nothing is interpolated: the places of such a cell are counted, and of no error.
TEST_F(WarpErrorMeterTest, CountsWhatLiesInACellWithoutACorner) {
    WarpGrid nodes = grid(4, 3);
    nodes.nodes[0] = WarpNode();
    const WarpErrorMeter meter(*m_sight, *m_input);
    const MeasuredError measured = meter.measure(nodes, 1, 40'000);
    EXPECT_EQ(measured.error.leftOut, 21U);
    EXPECT_EQ(measured.error.places, 5 * 21U);
    const WarpCell first = WarpCell::of(nodes, 0);
    const WarpError error = meter.errorsIn({&first, 1}, 1).front();
    EXPECT_EQ(error.largest, 0);
    EXPECT_EQ(error.places, 0U);
    EXPECT_EQ(error.leftOut, 21U);
}

/// A wall of 4 by 2 ahead of an eye at the origin, by the place of its middle.
struct WallAhead {
    Point<double, 3> middle;

    [[nodiscard]] Point<double, 3> at(const Point<double, 2>& picture) const {
        return middle + Point<double, 3>{4 * picture[0] - 2, 0.0, 2 * picture[1] - 1};
    }

    /// The largest error that a triangle shows anywhere.
    [[nodiscard]] double errorOf(const ContentInput& input, const WarpPiece& piece) const {
        const auto& [a, b, c] = piece.corners;
        double largest = 0;
        for (int i = 0; i <= STEPS; ++i) {
            for (int k = 0; i + k <= STEPS; ++k) {
                const double ofB = static_cast<double>(i) / STEPS;
                const double ofC = static_cast<double>(k) / STEPS;
                const auto content = a.content + ofB * (b.content - a.content) + ofC * (c.content - a.content);
                const auto seen = at(a.picture + ofB * (b.picture - a.picture) + ofC * (c.picture - a.picture));
                largest = std::max(largest, belonging::errorOf(input, {content, piece.face}, seen, seen));
            }
        }
        return largest;
    }

    /// The largest error anywhere where directions of length 1 are interpolated between the four corners of the
    /// picture, on the face to which each place belongs.
    [[nodiscard]] double errorOfDirections(const ContentInput& input) const {
        const auto corner = [this](double u, double v) { return at({u, v}) * (1 / norm(at({u, v}))); };
        const auto a = corner(0, 0);
        const auto b = corner(1, 0);
        const auto c = corner(1, 1);
        const auto d = corner(0, 1);
        double largest = 0;
        for (int row = 0; row <= STEPS; ++row) {
            for (int column = 0; column <= STEPS; ++column) {
                const double x = static_cast<double>(column) / STEPS;
                const double y = static_cast<double>(row) / STEPS;
                const auto seen = at({x, y});
                for (const auto& shown :
                     {(1 - y) * ((1 - x) * a + x * b) + y * ((1 - x) * d + x * c),
                      x >= y ? (1 - x) * a + (x - y) * b + y * c : (1 - y) * a + (y - x) * d + x * c,
                      x + y <= 1 ? (1 - x - y) * a + x * b + y * d : (x + y - 1) * c + (1 - y) * b + (1 - x) * d}) {
                    largest = std::max(largest, belonging::errorOf(input, placeOnCube(shown, seen), seen, seen));
                }
            }
        }
        return largest;
    }

private:
    static constexpr int STEPS = 40;

    /// The place of a direction on the right, left, front, top or bottom face to which another one points.
    static InputPlace placeOnCube(const Point<double, 3>& shown, const Point<double, 3>& seen) {
        const auto& [x, y, z] = std::tuple(shown[0], shown[1], shown[2]);
        if (seen[1] >= std::max(std::abs(seen[0]), std::abs(seen[2]))) {
            return {{x / y / 2 + 0.5, z / y / 2 + 0.5}, 2};
        }
        if (std::abs(seen[0]) >= std::abs(seen[2])) {
            return seen[0] > 0 ? InputPlace{{-y / x / 2 + 0.5, z / x / 2 + 0.5}, 0}
                               : InputPlace{{-y / x / 2 + 0.5, -z / x / 2 + 0.5}, 1};
        }
        return seen[2] > 0 ? InputPlace{{x / z / 2 + 0.5, -y / z / 2 + 0.5}, 4}
                           : InputPlace{{-x / z / 2 + 0.5, -y / z / 2 + 0.5}, 5};
    }
};

/// Where a cell is cut at the edges of a cube, each triangle counts where it lies and nowhere else. Walls across one
/// edge and across a corner.
TEST_F(WarpErrorMeterTest, MeasuresACutCellByItsTriangles) {
    for (const WallAhead& wall : {WallAhead{{3.0, 3.0, 0.0}}, WallAhead{{2.6, 3.0, 0.3}}, WallAhead{{-3.7, 3.0, 2.5}},
                                  WallAhead{{0.4, 3.0, 3.2}}}) {
        load("<Screen shape='Flat'><EyePoint x='0' y='0' z='0'/><Centre x='" + std::to_string(wall.middle[0]) +
                 "' y='3' z='" + std::to_string(wall.middle[2]) + "'/><Size width='4' height='2'/></Screen>",
             displays::projector("P1", displays::WHOLE_AREA + "<Layout xMin='0' xMax='4' yMin='0' yMax='2'/>"),
             "<TargetData type='PlanarBasic'/>");
        const ChannelSight sight(config(), channels()[0]);
        InputChoice cube;
        cube.kind = InputKind::CUBE;
        const ContentInput input(config(), sight, cube);
        const WarpSampler sampler(sight, input);
        const WarpErrorMeter meter(sight, input);
        const WarpGrid nodes = sampler.sample({0, 1}, {0, 1}, {.directions = true}, {});
        const WarpCell cell = WarpCell::of(nodes, 0);
        const CellCutter cutter(sampler, input, meter, Seam::CONTINUE, 0.25, 0.25);
        ASSERT_EQ(cutter.kindOf(cell), WarpCell::Kind::OVER_FACES) << wall.middle;
        const std::vector<CellCutter::Cut> cut = cutter.cut({&cell, 1});
        double ofPieces = 0;
        for (const WarpPiece& piece : cut.front().pieces) {
            ofPieces = std::max(ofPieces, wall.errorOf(input, piece));
        }
        const double largest = std::max(ofPieces, wall.errorOfDirections(input));
        const WarpError error = meter.errorsIn({&cell, 1}, 1).front();
        EXPECT_GT(largest, 1) << wall.middle;
        EXPECT_LE(error.largest, largest * (1 + 1e-9)) << wall.middle;
        EXPECT_GE(error.largest, 0.75 * largest) << wall.middle;
    }
}

/// Of a large grid some cells all over it, and no more of one that is bad already.
TEST_F(WarpErrorMeterTest, LooksAtNoMoreCellsThanItMay) {
    const WarpErrorMeter meter(*m_sight, *m_input);
    const WarpGrid nodes = grid(41, 26);
    EXPECT_EQ(meter.measure(nodes, 1, 100).error.places, 100 * 21U);
    EXPECT_EQ(meter.measure(nodes, 1, 2'000).error.places, 1000 * 21U);
    EXPECT_EQ(meter.measure(nodes, 1, 2'000, 0.0).error.places, 64 * 21U);
    const double largest = meter.measure(nodes, 1, 2'000).error.largest;
    EXPECT_GE(meter.measure(nodes, 1, 200).error.largest, 0.5 * largest);
}

}  // namespace
