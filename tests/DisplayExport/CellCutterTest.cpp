#include "DisplayExport/CellCutter.h"

#include "DisplayExport/ContentInput.h"
#include "DisplayExport/WarpGrid.h"
#include "ExportDisplays.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

namespace {

using namespace Veltrani::DisplayExport;
using Kind = WarpCell::Kind;

double cross2(const Point<double, 2>& a, const Point<double, 2>& b) {
    return a[0] * b[1] - a[1] * b[0];
}

double areaOf(const WarpPiece& piece) {
    const auto& [a, b, c] = piece.corners;
    return cross2(b.picture - a.picture, c.picture - a.picture) / 2;
}

class CellCutterTest : public ExportDisplayTest {
protected:
    /// Everything that a cutter refers to, on one channel.
    struct Bench {
        Bench(const XMLConfigFile& config, const Veltrani::DisplayReport::ChannelChoice& channel, InputKind kind)
            : Bench(config, channel, choiceOf(kind)) {}
        Bench(const XMLConfigFile& config, const Veltrani::DisplayReport::ChannelChoice& channel,
              const InputChoice& choice)
            : sight(config, channel), input(config, sight, choice), sampler(sight, input), meter(sight, input) {}

        static InputChoice choiceOf(InputKind kind) {
            InputChoice choice;
            choice.kind = kind;
            return choice;
        }
        [[nodiscard]] CellCutter cutter(Seam seam, double error = 0.25) const {
            return {sampler, input, meter, seam, error, error};
        }
        [[nodiscard]] WarpGrid grid(int columns, int rows) const {
            const auto along = [](int count) {
                std::vector<double> places;
                for (int i = 0; i < count; ++i) {
                    places.push_back(static_cast<double>(i) / (count - 1));
                }
                return places;
            };
            return sampler.sample(along(columns), along(rows), {.directions = true}, {});
        }

        ChannelSight sight;
        ContentInput input;
        WarpSampler sampler;
        WarpErrorMeter meter;
    };

    /// A cell from (0.2, 0.4) to (0.6, 0.5) with these contents, bottom left, bottom right, top right, top left, that
    /// is near no pole.
    static WarpCell cellWith(const std::array<P2, 4>& contents) {
        WarpCell cell;
        cell.picture = {P2{0.2, 0.4}, P2{0.6, 0.4}, P2{0.6, 0.5}, P2{0.2, 0.5}};
        for (std::size_t i = 0; i < 4; ++i) {
            cell.nodes[i] = {contents[i], 0, WarpNode::State::MAPPED};
            cell.directions[i] = {0.0, 1.0, 0.0};
        }
        return cell;
    }
    static constexpr double CELL_AREA = 0.4 * 0.1;

    /// All pieces counter-clockwise; their area together.
    static double sumOfAreas(const std::vector<WarpPiece>& pieces) {
        double sum = 0;
        for (const WarpPiece& piece : pieces) {
            EXPECT_GT(areaOf(piece), 0);
            sum += areaOf(piece);
        }
        return sum;
    }

    /// The place in the input that pieces show at a place of the picture; fails unless exactly one of them lies there.
    static WarpCorner shownAt(const std::vector<WarpPiece>& pieces, const P2& place, std::uint8_t* face = nullptr) {
        WarpCorner shown;
        int found = 0;
        for (const WarpPiece& piece : pieces) {
            const auto& [a, b, c] = piece.corners;
            const double area = cross2(b.picture - a.picture, c.picture - a.picture);
            const double ofB = cross2(place - a.picture, c.picture - a.picture) / area;
            const double ofC = cross2(b.picture - a.picture, place - a.picture) / area;
            if (ofB >= 0 && ofC >= 0 && ofB + ofC <= 1) {
                shown = {place, a.content + ofB * (b.content - a.content) + ofC * (c.content - a.content)};
                if (face != nullptr) {
                    *face = piece.face;
                }
                ++found;
            }
        }
        EXPECT_EQ(found, 1) << place;
        return shown;
    }

    static std::array<P2, 4> contentsOf(const std::vector<double>& u) {
        return {P2{u[0], 0.3}, P2{u[1], 0.35}, P2{u[2], 0.45}, P2{u[3], 0.4}};
    }
};

/// The pieces fill the cell, lie between 0 and 1, and show what the two halves of the cell would show past them.
TEST_F(CellCutterTest, CutsAtTheSeamWithoutMovingContent) {
    loadAny("stereo-wall");
    const Bench bench(config(), channels()[0], InputKind::EQUIRECTANGULAR);
    std::mt19937 random(7);
    std::uniform_real_distribution<double> part(0, 1);
    for (const std::vector<double>& u : {std::vector<double>{0.9, 0.1, 0.15, 0.95},
                                         {0.05, 0.98, 0.9, 0.02},
                                         {0.98, 0.01, 0.99, 0.97},
                                         {0.999, 0.001, 0.002, 0.0}}) {
        const WarpCell cell = cellWith(contentsOf(u));
        const CellCutter cutter = bench.cutter(Seam::CUT);
        ASSERT_EQ(cutter.kindOf(cell), Kind::OVER_SEAM);
        ASSERT_TRUE(cutter.mustCut(cell, Kind::OVER_SEAM));
        const CellCutter::Cut cut = cutter.cut({&cell, 1}).front();
        EXPECT_GT(cut.pieces.size(), 2U);
        EXPECT_EQ(cut.leftOut, 0U);
        EXPECT_NEAR(sumOfAreas(cut.pieces), CELL_AREA, 1e-14);
        for (const WarpPiece& piece : cut.pieces) {
            for (const WarpCorner& corner : piece.corners) {
                EXPECT_TRUE(corner.content[0] >= 0 && corner.content[0] <= 1);
            }
        }
        // Those beyond the middle of the panorama are moved to its other end.
        std::array<P2, 4> beside = contentsOf(u);
        for (P2& content : beside) {
            content[0] -= content[0] > 0.5 ? 1 : 0;
        }
        for (int i = 0; i < 200; ++i) {
            const double x = part(random);
            const double y = part(random);
            const P2 expected = x >= y ? beside[0] + x * (beside[1] - beside[0]) + y * (beside[2] - beside[1])
                                       : beside[0] + y * (beside[3] - beside[0]) + x * (beside[2] - beside[3]);
            const P2 shown = shownAt(cut.pieces, {0.2 + 0.4 * x, 0.4 + 0.1 * y}).content;
            EXPECT_NEAR(std::remainder(shown[0] - expected[0], 1.0), 0, 1e-12);
            EXPECT_NEAR(shown[1], expected[1], 1e-12);
        }
    }
}

TEST_F(CellCutterTest, GoesOnOverTheSeamInTwoTriangles) {
    loadAny("stereo-wall");
    const Bench bench(config(), channels()[0], InputKind::EQUIRECTANGULAR);
    const WarpCell cell = cellWith(contentsOf({0.9, 0.1, 0.15, 0.95}));
    const CellCutter::Cut cut = bench.cutter(Seam::CONTINUE).cut({&cell, 1}).front();
    ASSERT_EQ(cut.pieces.size(), 2U);
    EXPECT_NEAR(cut.pieces[0].corners[0].content[0], 0.9, 1e-15);
    EXPECT_NEAR(cut.pieces[0].corners[1].content[0], 1.1, 1e-15);
    EXPECT_NEAR(cut.pieces[0].corners[2].content[0], 1.15, 1e-15);
    EXPECT_NEAR(cut.pieces[1].corners[2].content[0], 0.95, 1e-15);
}

TEST_F(CellCutterTest, LeavesWholeCellsAlone) {
    loadAny("stereo-wall");
    const Bench bench(config(), channels()[0], InputKind::EQUIRECTANGULAR);
    const CellCutter cutter = bench.cutter(Seam::CUT);
    WarpCell cell = cellWith(contentsOf({0.4, 0.45, 0.45, 0.4}));
    EXPECT_EQ(cutter.kindOf(cell), Kind::WHOLE);
    EXPECT_FALSE(cutter.mustCut(cell, Kind::WHOLE));
    cell.nodes[2] = WarpNode();
    EXPECT_EQ(cutter.kindOf(cell), Kind::UNUSABLE);
    EXPECT_FALSE(cutter.mustCut(cell, Kind::UNUSABLE));
}

/// Around the zenith the pieces fill their cell but for what is left out, in which the pole lies.
TEST_F(CellCutterTest, DividesACellAtThePoleIntoWhatFillsIt) {
    loadAny("planetarium");
    const Bench bench(config(), channels()[0], InputKind::EQUIRECTANGULAR);
    const WarpGrid grid = bench.grid(6, 6);
    std::vector<double> errors;
    std::vector<std::size_t> pieces;
    for (const double error : {1e6, 0.25}) {
        const CellCutter cutter = bench.cutter(Seam::CUT, error);
        for (std::size_t number = 0; number < grid.cells(); ++number) {
            const WarpCell cell = WarpCell::of(grid, number);
            const Kind kind = cutter.kindOf(cell);
            if (kind != Kind::OVER_POLE) {
                continue;
            }
            const CellCutter::Cut cut = cutter.cut({&cell, 1}).front();
            const double area = (cell.picture[2][0] - cell.picture[0][0]) * (cell.picture[2][1] - cell.picture[0][1]);
            EXPECT_GE(cut.leftOut, 1U);
            EXPECT_LE(cut.leftOut, 4U) << "parts that meet in the pole";
            // Each no larger than a sixteenth of a pixel to each side.
            EXPECT_LE(cut.areaLeftOut, static_cast<double>(cut.leftOut) / (256.0 * 1920 * 1200));
            EXPECT_NEAR(sumOfAreas(cut.pieces), area - cut.areaLeftOut, 1e-12 * area);
            errors.push_back(cut.error.largest);
            EXPECT_GT(cut.error.places, 20U);
            pieces.push_back(cut.pieces.size());
            for (const WarpPiece& piece : cut.pieces) {
                for (const WarpCorner& corner : piece.corners) {
                    EXPECT_TRUE(corner.picture[0] >= cell.picture[0][0] - 1e-15 &&
                                corner.picture[0] <= cell.picture[2][0] + 1e-15 &&
                                corner.picture[1] >= cell.picture[0][1] - 1e-15 &&
                                corner.picture[1] <= cell.picture[2][1] + 1e-15);
                    // The zenith itself, an elevation of 90 degrees, belongs to no corner.
                    EXPECT_LT(corner.content[1], 1);
                }
            }
        }
    }
    ASSERT_EQ(errors.size(), 2U) << "one cell, cut twice";
    EXPECT_LT(errors[1], errors[0]) << "parts around the pole are divided too, as long as their error is too large";
    EXPECT_GT(pieces[1], 2 * pieces[0]);
}

/// What holds a pole and is as small as it may be is left out; it counts where something is lit in it.
TEST_F(CellCutterTest, LeavesOutAPoleThatIsLitAlone) {
    loadAny("inset");
    const Bench bench(config(), channels()[0], InputKind::EQUIRECTANGULAR);
    for (const auto& [place, leftOut] : {std::pair(P2{0.5, 0.4}, 1U), {P2{0.5, 0.99}, 0U}}) {
        SeenPlace seen;
        bench.sight.see({&place, 1}, {&seen, 1});
        ASSERT_EQ(seen.isSeen, leftOut == 1) << place;
        WarpCell cell = cellWith(contentsOf({0.1, 0.35, 0.6, 0.85}));
        const P2 size = 0.9 * bench.meter.zone().least();
        cell.picture = {place, place + P2{size[0], 0.0}, place + size, place + P2{0.0, size[1]}};
        cell.directions = {P3{-1.0, -1.0, 100.0}, P3{1.0, -1.0, 100.0}, P3{1.0, 1.0, 100.0}, P3{-1.0, 1.0, 100.0}};
        ASSERT_EQ(bench.cutter(Seam::CUT).kindOf(cell), Kind::OVER_POLE);
        const CellCutter::Cut cut = bench.cutter(Seam::CUT).cut({&cell, 1}).front();
        EXPECT_EQ(cut.leftOut, leftOut) << place;
        EXPECT_NEAR(cut.areaLeftOut, leftOut * size[0] * size[1], 1e-9 * size[0] * size[1]);
        EXPECT_TRUE(cut.pieces.empty());
        EXPECT_FALSE(cut.isDivided);
    }
}

/// Opposite to the axis of a fisheye no square keeps the error: there is an end to their number, and where the error is
/// largest they are smallest.
TEST_F(CellCutterTest, DividesNoMoreThanItMay) {
    loadAny("planetarium");
    const Bench bench(config(), channels()[0],
                      InputChoice{.kind = InputKind::FISHEYE,
                                  .direction = P3{0.0, 0.0, -1.0},
                                  .aperture = 2 * std::numbers::pi,
                                  .pixels = {4096, 4096}});
    const WarpGrid grid = bench.grid(12, 12);
    std::vector<WarpCell> cells;
    double area = 0;
    for (std::size_t number = 0; number < grid.cells(); ++number) {
        const WarpCell cell = WarpCell::of(grid, number);
        if (bench.cutter(Seam::CONTINUE).mustCut(cell, bench.cutter(Seam::CONTINUE).kindOf(cell))) {
            cells.push_back(cell);
            area += 1.0 / (11 * 11);
        }
    }
    constexpr double FINE = 0.02;
    std::size_t pieces = 0;
    double sum = 0;
    std::size_t beyond = 0;
    for (const CellCutter::Cut& cut : bench.cutter(Seam::CONTINUE, FINE).cut(cells)) {
        pieces += cut.pieces.size();
        sum += sumOfAreas(cut.pieces) + cut.areaLeftOut;
        beyond += cut.error.beyond;
    }
    EXPECT_GT(pieces, CellCutter::MOST_PARTS);
    EXPECT_LE(pieces, 2 * (cells.size() + CellCutter::MOST_PARTS));
    EXPECT_NEAR(sum, area, 1e-9);
    EXPECT_GT(beyond, 0U) << "what is not divided is counted";
}

/// What a piece of a cube shows lies on its face: the direction between the corners has its largest part there.
TEST_F(CellCutterTest, CutsAtTheEdgesOfACubeWhereTheDirectionsPass) {
    loadAny("planetarium");
    const Bench bench(config(), channels()[1], InputKind::CUBE);
    const WarpGrid grid = bench.grid(9, 9);
    const CellCutter cutter = bench.cutter(Seam::CONTINUE);
    std::mt19937 random(5);
    std::uniform_real_distribution<double> part(0, 1);
    int overFaces = 0;
    for (std::size_t number = 0; number < grid.cells(); ++number) {
        const WarpCell cell = WarpCell::of(grid, number);
        const Kind kind = cutter.kindOf(cell);
        if (kind != Kind::OVER_FACES) {
            continue;
        }
        ++overFaces;
        const CellCutter::Cut cut = cutter.cut({&cell, 1}).front();
        const P2 size = cell.picture[2] - cell.picture[0];
        EXPECT_NEAR(sumOfAreas(cut.pieces), size[0] * size[1], 1e-12);
        for (int i = 0; i < 50; ++i) {
            const double x = part(random);
            const double y = part(random);
            const auto& [a, b, c, d] = cell.directions;
            const P3 seen = x >= y ? a + x * (b - a) + y * (c - b) : a + y * (d - a) + x * (c - d);
            // Right, left, front, back, top, bottom of a cube whose front is +y.
            const std::array<double, 6> towards{seen[0], -seen[0], seen[1], -seen[1], seen[2], -seen[2]};
            std::uint8_t face = 9;
            const P2 shown =
                shownAt(cut.pieces, {cell.picture[0][0] + x * size[0], cell.picture[0][1] + y * size[1]}, &face)
                    .content;
            EXPECT_EQ(face, std::max_element(towards.begin(), towards.end()) - towards.begin());
            EXPECT_TRUE(shown[0] > -1e-9 && shown[0] < 1 + 1e-9 && shown[1] > -1e-9 && shown[1] < 1 + 1e-9);
        }
    }
    EXPECT_GT(overFaces, 4);
}

}  // namespace
