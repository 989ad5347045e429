#include "KelvoScreen/detail/MeshBorder.h"

#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/detail/MeshTopology.h"
#include "KelvoScreen/detail/RayAim.h"
#include "KelvoScreen/detail/Rounding.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Veltrani::KelvoScreenDetail {

namespace {

/// A point where the ray meets a sheet on the wanted side.
struct SheetHit {
    double tau = 0;
    Point<double, 3> point;
};

/// A ray, to be met with the sheets.
class SheetRay {
public:
    SheetRay(const Point<double, 3>& from, const RayAim& aim, int side)
        : m_from(from), m_direction(aim.direction), m_length2(aim.length2), m_side(side) {}

    /// Returns the place along the ray where it passes a point nearest.
    [[nodiscard]] double nearestTo(const Point<double, 3>& point) const {
        return dot(point - m_from, m_direction) / m_length2;
    }

    [[nodiscard]] Point<double, 3> at(double tau) const { return m_from + tau * m_direction; }

    /// Calls `use` for each hit, none to two.
    template <class Use>
    void meet(const BorderStretch& stretch, double middle, const Use& use) const {
        const AlongRay heights = stretch.sheet.alongRay(at(middle), m_direction);
        if (stretch.sheet.isPlane() && std::abs(heights.slope) <= ROUNDING * std::sqrt(m_length2)) {
            return;
        }
        const Zeros zeros(heights);
        for (std::size_t i = 0; i < zeros.count; ++i) {
            const double tau = middle + zeros.tau[i];
            const Point<double, 3> point = at(tau);
            if (tau >= 0 && isFinite(point) && sideOfSurface(m_direction, stretch.sheet.gradient(point)) == m_side) {
                use(SheetHit{tau, point});
            }
        }
    }

private:
    Point<double, 3> m_from;
    Point<double, 3> m_direction;
    double m_length2;
    int m_side;
};

/// Finds the sheet that the ray meets nearest to its own stretch of the border.
class NearestSheet {
public:
    NearestSheet(const BorderStretches& border, const SheetRay& ray) : m_border(border), m_ray(ray) {
        // With a good stretch first, the triangles of few others need to be examined.
        const std::uint32_t first = roughlyNearest();
        if (first < m_border.stretches.size()) {
            visit(first);
        }
        for (std::uint32_t i = 0; i < m_border.stretches.size(); ++i) {
            if (i != first) {
                visit(i);
            }
        }
    }

    /// The position in units of the direction of the aim; negative when no sheet was met.
    double tau = -1;
    std::uint32_t stretch = 0;
    std::uint32_t triangle = 0;

private:
    [[nodiscard]] std::uint32_t roughlyNearest() const {
        double smallest = Box::INFINITE;
        std::uint32_t nearest = MeshTopology::NONE;
        for (std::uint32_t i = 0; i < m_border.stretches.size(); ++i) {
            const BorderStretch& candidate = m_border.stretches[i];
            const double middle = m_ray.nearestTo(candidate.bounds.centre);
            if (candidate.bounds.leastDistance(m_ray.at(middle)) < smallest) {
                m_ray.meet(candidate, middle, [&](const SheetHit& hit) {
                    const double distance = norm(hit.point - candidate.bounds.centre);
                    nearest = distance < smallest ? i : nearest;
                    smallest = std::min(smallest, distance);
                });
            }
        }
        return nearest;
    }

    void visit(std::uint32_t index) {
        const BorderStretch& candidate = m_border.stretches[index];
        const double middle = m_ray.nearestTo(candidate.bounds.centre);
        // A hit lies on the ray: it is no nearer to the triangles than the ray is.
        if (candidate.bounds.leastDistance(m_ray.at(middle)) <= m_distance) {
            m_ray.meet(candidate, middle, [&](const SheetHit& hit) { offer(index, hit); });
        }
    }

    void offer(std::uint32_t index, const SheetHit& hit) {
        const BorderStretch& candidate = m_border.stretches[index];
        if (!(candidate.bounds.leastDistance(hit.point) <= m_distance)) {
            return;
        }
        for (std::uint32_t i = candidate.first; i < candidate.last; ++i) {
            const BorderTriangle& border = m_border.triangles[i];
            if (!(border.bounds.leastDistance(hit.point) <= m_distance)) {
                continue;
            }
            const double distance = norm(closestPoint(border.corners, hit.point) - hit.point);
            if (distance < m_distance || (distance == m_distance && tau >= 0 && border.triangle < triangle)) {
                m_distance = distance;
                tau = hit.tau;
                stretch = index;
                triangle = border.triangle;
            }
        }
    }

    const BorderStretches& m_border;
    const SheetRay& m_ray;
    double m_distance = Box::INFINITE;
};

}  // namespace

MeshBorder::MeshBorder(const TriangleMesh& mesh) : m_border(borderStretches(mesh)) {
    for (std::uint32_t i = 0; i < m_border.stretches.size(); ++i) {
        if (i == 0 || m_border.stretches[i].face != m_border.stretches[i - 1].face) {
            m_faces.push_back({i, i, false});
        }
        ++m_faces.back().last;
        m_faces.back().isCurved = m_faces.back().isCurved || !m_border.stretches[i].sheet.isPlane();
    }
}

std::vector<std::uint32_t> MeshBorder::triangles() const {
    std::vector<std::uint32_t> triangles;
    for (const BorderTriangle& border : m_border.triangles) {
        triangles.push_back(border.triangle);
    }
    std::sort(triangles.begin(), triangles.end());
    return triangles;
}

const MeshBorder::Face& MeshBorder::faceOf(std::uint32_t stretch) const {
    return *std::partition_point(m_faces.begin(), m_faces.end(),
                                 [stretch](const Face& face) { return face.last <= stretch; });
}

std::optional<MeshPoint> MeshBorder::continuedHit(const Point<double, 3>& from, const Point<double, 3>& to,
                                                  int side) const {
    const RayAim aim(from, to);
    if (!aim.isUsable() || !isFinite(from)) {
        return std::nullopt;
    }
    const SheetRay ray(from, aim, side);
    const NearestSheet nearest(m_border, ray);
    if (nearest.tau < 0) {
        return std::nullopt;
    }
    const Face& face = faceOf(nearest.stretch);
    double tau = nearest.tau;
    Point<double, 3> normal = m_border.stretches[nearest.stretch].sheet.slope;
    if (face.isCurved) {
        const BorderBlend blend(m_border, face.first, face.last, normal);
        const std::optional<BlendedHit> hit = blend.meet(ray.at(tau), aim.direction);
        tau += hit ? hit->tau : 0;
        if (!hit || !(tau >= 0) || sideOfSurface(aim.direction, hit->normal) != side) {
            return std::nullopt;
        }
        normal = hit->normal;
    }
    const MeshPoint hit{ray.at(tau), normal, tau * aim.scale, nearest.triangle};
    return isFinite(hit.point) && std::isfinite(hit.t) ? std::optional(hit) : std::nullopt;
}

}  // namespace Veltrani::KelvoScreenDetail
