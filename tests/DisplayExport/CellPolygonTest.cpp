#include "DisplayExport/CellPolygon.h"

#include "DisplayExport/ContentInput.h"
#include "ExportDisplays.h"

#include <gmock/gmock.h>

#include <array>
#include <cmath>

namespace {

using namespace Veltrani::DisplayExport;

/// Content and direction by formulas that are linear in the place.
CellVertex vertexAt(double x, double y) {
    return {{x, y}, {0.1 + 0.2 * x - 0.3 * y, 0.5 * x + 0.7 * y}, {x - y, 1.0, 2 * x + y}};
}

/// By its corners, and each of these as its place has it.
void expectPolygon(const CellPolygon& polygon, const std::vector<Point<double, 2>>& corners) {
    ASSERT_EQ(polygon.size(), corners.size());
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const CellVertex expected = vertexAt(corners[i][0], corners[i][1]);
        EXPECT_LT(norm(polygon[i].picture - expected.picture), 1e-15) << i << ' ' << polygon[i].picture;
        EXPECT_LT(norm(polygon[i].content - expected.content), 1e-15) << i;
        EXPECT_LT(norm(polygon[i].direction - expected.direction), 1e-15) << i;
    }
}

const CellPolygon SQUARE{vertexAt(0, 0), vertexAt(1, 0), vertexAt(1, 1), vertexAt(0, 1)};

TEST(CellPolygon, EverythingOfAVertexIsInterpolated) {
    expectPolygon({between(vertexAt(0.2, 0.4), vertexAt(0.6, 0.8), 0.25)}, {{0.3, 0.5}});
}

TEST(CellPolygon, IsCutWhereTheHeightIsZero) {
    const auto cut = [](double ofX, double ofY, double constant) {
        return cutBy(SQUARE, [=](const CellVertex& vertex) {
            return ofX * vertex.picture[0] + ofY * vertex.picture[1] + constant;
        });
    };
    expectPolygon(cut(1, 0, -0.25), {{0.25, 0}, {1, 0}, {1, 1}, {0.25, 1}});
    expectPolygon(cut(0, -1, 0.75), {{0, 0}, {1, 0}, {1, 0.75}, {0, 0.75}});
    expectPolygon(cut(1, 0, 0), {{0, 0}, {1, 0}, {1, 1}, {0, 1}});
    expectPolygon(cut(1, -1, 0), {{0, 0}, {1, 0}, {1, 1}});
    expectPolygon(cut(-1, 0, 0), {{0, 0}, {0, 1}});
    expectPolygon(cut(1, 1, -1.5), {{1, 0.5}, {1, 1}, {0.5, 1}});
    expectPolygon(cut(1, 0, -2), {});
}

/// A corner that lies on the line of its neighbours makes a triangle without an area.
TEST(CellPolygon, IsAFanWithoutWhatHasNoArea) {
    const CellPolygon polygon{vertexAt(0, 0), vertexAt(0.5, 0), vertexAt(1, 0), vertexAt(1, 1), vertexAt(0, 1)};
    std::vector<WarpPiece> pieces;
    addFan(polygon, 3, pieces);
    ASSERT_EQ(pieces.size(), 2U);
    const auto expectPiece = [](const WarpPiece& piece, const std::array<Point<double, 2>, 3>& corners) {
        EXPECT_EQ(piece.face, 3);
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_EQ(piece.corners[i].picture, corners[i]) << i;
            EXPECT_EQ(piece.corners[i].content, vertexAt(corners[i][0], corners[i][1]).content) << i;
        }
    };
    expectPiece(pieces[0], {Point<double, 2>{0, 0}, {1, 0}, {1, 1}});
    expectPiece(pieces[1], {Point<double, 2>{0, 0}, {1, 1}, {0, 1}});
    addFan({SQUARE[0], SQUARE[3], SQUARE[2]}, 0, pieces);
    addFan({SQUARE[0], SQUARE[1]}, 0, pieces);
    EXPECT_EQ(pieces.size(), 2U) << "clockwise, and without a third corner";
}

class CellPolygonOnCubeTest : public ExportDisplayTest {};

/// Directions from (0.5, 1, -0.2) to (1.5, 1, 0.2): the left half of the cell lies on the front face, its right half on
/// the right one.
TEST_F(CellPolygonOnCubeTest, IsCutWhereDirectionsPassAnEdge) {
    loadAny("stereo-wall");
    const ChannelSight sight(config(), channels()[0]);
    const ContentInput cube(config(), sight, {.kind = InputKind::CUBE});
    const auto directionAt = [](const P2& place) {
        return P3{0.5 + (place[0] - 0.2) / 0.4, 1.0, -0.2 + 0.4 * (place[1] - 0.4) / 0.1};
    };
    WarpCell cell;
    cell.picture = {P2{0.2, 0.4}, P2{0.6, 0.4}, P2{0.6, 0.5}, P2{0.2, 0.5}};
    for (std::size_t i = 0; i < 4; ++i) {
        cell.directions[i] = directionAt(cell.picture[i]);
    }
    std::vector<WarpPiece> pieces;
    addPiecesAtFaces(cell, cube, pieces);
    std::array<double, 6> areas{};
    for (const WarpPiece& piece : pieces) {
        const auto& [a, b, c] = piece.corners;
        areas[piece.face] += areaOf(a.picture, b.picture, c.picture) / 2;
        for (const WarpCorner& corner : piece.corners) {
            const P3 seen = directionAt(corner.picture);
            const P2 expected = piece.face == static_cast<std::uint8_t>(CubeFace::FRONT)
                                    ? P2{0.5 + seen[0] / seen[1] / 2, 0.5 + seen[2] / seen[1] / 2}
                                    : P2{0.5 - seen[1] / seen[0] / 2, 0.5 + seen[2] / seen[0] / 2};
            EXPECT_LT(norm(corner.content - expected), 1e-12) << corner.picture;
        }
    }
    EXPECT_NEAR(areas[static_cast<std::size_t>(CubeFace::FRONT)], 0.02, 1e-12);
    EXPECT_NEAR(areas[static_cast<std::size_t>(CubeFace::RIGHT)], 0.02, 1e-12);
    EXPECT_NEAR(areas[0] + areas[1] + areas[2] + areas[3] + areas[4] + areas[5], 0.04, 1e-12);
    EXPECT_EQ(pieces.size(), 6U) << "of each half a triangle and a quadrangle";
}

}  // namespace
