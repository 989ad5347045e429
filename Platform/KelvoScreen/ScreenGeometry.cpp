#include "KelvoScreen/ScreenGeometry.h"

#include "Common/VeltraniException.h"

#include <cstddef>
#include <ostream>
#include <string>

std::ostream& operator<<(std::ostream& out, const SurfaceHit& hit) {
    if (!hit.hit) {
        return out << "miss";
    }
    return out << Intersection{hit.point, hit.t} << ", side " << hit.side << ", normal " << hit.normal;
}

void ScreenGeometry::intersectRays(std::span<const Ray> rays, std::span<SurfaceHit> hits) const {
    if (rays.size() != hits.size()) {
        throw VeltraniException(__FILE__, __LINE__,
                                L"intersectRays: " + std::to_wstring(rays.size()) + L" rays but room for " +
                                    std::to_wstring(hits.size()) + L" hits");
    }
    for (std::size_t i = 0; i < rays.size(); ++i) {
        const auto& [from, to] = rays[i];
        hits[i] = SurfaceHit{};
        const IntersectionSet intersections = intersect(from, to);
        if (!intersections.empty()) {
            const Intersection& nearest = intersections.first();
            const Point<double, 3> normal = getScreenNormal(nearest.point);
            hits[i] = {nearest.point, normal, nearest.t, sideOfSurface(to - from, normal), true};
        }
    }
}

std::size_t ScreenGeometry::raysAtOnce() const {
    return 0;
}

const TriangleMesh* ScreenGeometry::triangleMesh() const {
    return nullptr;
}

bool ScreenGeometry::isParameterised() const {
    return true;
}

std::wstring ScreenGeometry::faultOfShape() const {
    return isValid() ? L"" : L"its shape has no extent or a number that is not finite";
}
