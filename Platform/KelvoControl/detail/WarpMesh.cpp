#include "KelvoControl/detail/WarpMesh.h"

#include <utility>

namespace KelvoControlDetail {

WarpMesh::WarpMesh(CellLattice lattice, const Point<double, 2>& pictureSize)
    : m_lattice(std::move(lattice)),
      m_picture(m_lattice, m_lattice.picture, pictureSize * EDGE_TOLERANCE),
      m_screen(m_lattice, m_lattice.screen, {EDGE_TOLERANCE, EDGE_TOLERANCE}) {}

bool WarpMesh::toScreen(const Point<double, 2>& pixel, Point<double, 2>& screen) const {
    CellPlace place;
    if (!m_picture.locate(pixel, place)) {
        return false;
    }
    screen = m_lattice.cell(m_lattice.screen, place.node).at(place.a, place.b);
    return true;
}

bool WarpMesh::toPicture(const Point<double, 2>& screen, Point<double, 2>& pixel) const {
    CellPlace place;
    if (!m_screen.locate(screen, place)) {
        return false;
    }
    pixel = m_lattice.cell(m_lattice.picture, place.node).at(place.a, place.b);
    return true;
}

}  // namespace KelvoControlDetail
