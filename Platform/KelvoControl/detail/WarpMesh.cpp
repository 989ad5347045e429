#include "KelvoControl/detail/WarpMesh.h"

#include <utility>

namespace KelvoControlDetail {

namespace {

constexpr Point<double, 2> SCREEN_SIZE{1.0, 1.0};

/// The mean of two nodes on an edge may round to beyond it.
double ontoEdge(double value, double last) {
    const double tolerance = last * WarpMesh::EDGE_TOLERANCE;
    if (value < 0) {
        return value >= -tolerance ? 0 : value;
    }
    return value > last && value <= last + tolerance ? last : value;
}

Point<double, 2> ontoEdges(const Point<double, 2>& place, const Point<double, 2>& size) {
    return {ontoEdge(place[0], size[0]), ontoEdge(place[1], size[1])};
}

}  // namespace

WarpMesh::WarpMesh(CellLattice lattice, const Point<double, 2>& pictureSize)
    : m_lattice(std::move(lattice)),
      m_pictureSize(pictureSize),
      m_picture(m_lattice, m_lattice.picture, pictureSize * EDGE_TOLERANCE),
      m_screen(m_lattice, m_lattice.screen, SCREEN_SIZE * EDGE_TOLERANCE) {}

bool WarpMesh::toScreen(const Point<double, 2>& pixel, Point<double, 2>& screen) const {
    CellPlace place;
    if (!m_picture.locate(pixel, place)) {
        return false;
    }
    screen = ontoEdges(m_lattice.cell(m_lattice.screen, place.node).at(place.a, place.b), SCREEN_SIZE);
    return true;
}

bool WarpMesh::toPicture(const Point<double, 2>& screen, Point<double, 2>& pixel) const {
    CellPlace place;
    if (!m_screen.locate(screen, place)) {
        return false;
    }
    pixel = ontoEdges(m_lattice.cell(m_lattice.picture, place.node).at(place.a, place.b), m_pictureSize);
    return true;
}

}  // namespace KelvoControlDetail
