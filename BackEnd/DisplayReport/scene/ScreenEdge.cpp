#include "DisplayReport/scene/ScreenEdge.h"

#include "Common/Finite.h"
#include "DisplayReport/basics/GeometryText.h"
#include "KelvoScreen/ScreenGeometry.h"

namespace Veltrani::DisplayReport {

namespace {

/// Parts of the size of the screen: how far beside an edge still counts as on it, and how far before or behind a point
/// the surface may pass, which on a curved one is less than the former.
constexpr double BESIDE = 1e-4;
constexpr double BEFORE = 1e-3;

}  // namespace

ScreenEdge::ScreenEdge(const ScreenGeometry& surface) : m_surface(surface), m_size(norm(extentOf(surface).size())) {}

bool ScreenEdge::isWithin(const Point<double, 3>& point) const {
    const Point<double, 3> normal = m_surface.getScreenNormal(point);
    if (!(m_size > 0) || !isFinite(normal) || passes(point, normal)) {
        return true;
    }
    for (std::size_t axis = 0; axis < 3; ++axis) {
        for (const double way : {-BESIDE, BESIDE}) {
            Point<double, 3> beside = point;
            beside[axis] += way * m_size;
            if (passes(beside, normal)) {
                return true;
            }
        }
    }
    return false;
}

bool ScreenEdge::passes(const Point<double, 3>& point, const Point<double, 3>& normal) const {
    const Point<double, 3> way = normal * (BEFORE * m_size);
    const IntersectionSet hits = m_surface.intersect(point - way, point + way);
    return !hits.empty() && norm(hits.first().point - point) <= norm(way);
}

}  // namespace Veltrani::DisplayReport
