#include "DisplayExport/CellPolygon.h"

#include "DisplayExport/ContentInput.h"

namespace Veltrani::DisplayExport {

namespace {

using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

}  // namespace

CellPolygon polygonOf(const WarpCell& cell, const std::array<P2, 4>& contents,
                      const std::array<std::size_t, 3>& corners) {
    CellPolygon polygon;
    for (const std::size_t i : corners) {
        polygon.push_back({cell.picture[i], contents[i], cell.directions[i]});
    }
    return polygon;
}

CellVertex between(const CellVertex& a, const CellVertex& b, double part) {
    return {a.picture + part * (b.picture - a.picture), a.content + part * (b.content - a.content),
            a.direction + part * (b.direction - a.direction)};
}

void addFan(const CellPolygon& polygon, std::uint8_t face, std::vector<WarpPiece>& pieces) {
    for (std::size_t i = 2; i < polygon.size(); ++i) {
        const CellVertex& a = polygon[0];
        const CellVertex& b = polygon[i - 1];
        const CellVertex& c = polygon[i];
        if (areaOf(a.picture, b.picture, c.picture) > 0) {
            pieces.push_back({{{{a.picture, a.content}, {b.picture, b.content}, {c.picture, c.content}}}, face});
        }
    }
}

void addPiecesAtFaces(const WarpCell& cell, const ContentInput& input, std::vector<WarpPiece>& pieces) {
    for (const auto& corners : HALVES_OF_CELL) {
        const CellPolygon half = polygonOf(cell, cell.contents(false), corners);
        for (std::uint8_t face = 0; face < input.faces(); ++face) {
            const ViewFrame view = input.frustumOf(static_cast<CubeFace>(face))->view;
            CellPolygon part = half;
            for (const P3& side : {view.right, -view.right, view.up, -view.up}) {
                const P3 inward = view.forward - side;
                part = cutBy(part, [&inward](const CellVertex& vertex) { return dot(vertex.direction, inward); });
            }
            for (CellVertex& vertex : part) {
                vertex.content = input.placeOnFace(vertex.direction, face).value_or(P2());
            }
            addFan(part, face, pieces);
        }
    }
}

}  // namespace Veltrani::DisplayExport
