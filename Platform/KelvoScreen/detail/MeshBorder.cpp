#include "KelvoScreen/detail/MeshBorder.h"

#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/detail/BorderBlend.h"
#include "KelvoScreen/detail/Components.h"
#include "KelvoScreen/detail/RayAim.h"
#include "KelvoScreen/detail/Rounding.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace KelvoScreenDetail {

namespace {

/// Finds the sheet that the ray meets nearest to its own stretch of the border.
class NearestSheet {
public:
    NearestSheet(const BorderStretches& border, const Point<double, 3>& from, const RayAim& aim, int side)
        : m_border(border), m_from(from), m_direction(aim.direction), m_length2(aim.length2), m_side(side) {}

    void visit(std::uint32_t index) {
        const BorderStretch& candidate = m_border.stretches[index];
        const double middle = dot(candidate.centre - m_from, m_direction) / m_length2;
        const Point<double, 3> nearby = m_from + middle * m_direction;
        // A hit lies on the ray: it is no nearer to the triangles than the ray is.
        if (!(norm(nearby - candidate.centre) - candidate.radius <= m_distance)) {
            return;
        }
        const AlongRay heights = candidate.sheet.alongRay(nearby, m_direction);
        if (candidate.sheet.isPlane() && std::abs(heights.slope) <= ROUNDING * std::sqrt(m_length2)) {
            return;
        }
        const Zeros zeros(heights);
        for (int i = 0; i < zeros.count; ++i) {
            offer(index, middle + zeros.tau[static_cast<std::size_t>(i)]);
        }
    }

    /// In units of the direction of the aim; negative until a sheet was met.
    double tau = -1;
    std::uint32_t stretch = 0;
    std::uint32_t triangle = 0;

private:
    void offer(std::uint32_t index, double position) {
        const BorderStretch& candidate = m_border.stretches[index];
        const Point<double, 3> point = m_from + position * m_direction;
        if (!(position >= 0) || !isFinite(point) ||
            sideOfSurface(m_direction, candidate.sheet.gradient(point)) != m_side ||
            !(norm(point - candidate.centre) - candidate.radius <= m_distance)) {
            return;
        }
        for (std::uint32_t i = candidate.first; i < candidate.last; ++i) {
            const BorderTriangle& border = m_border.triangles[i];
            const double distance = norm(closestPoint(border.corners, point) - point);
            if (distance < m_distance || (distance == m_distance && tau >= 0 && border.triangle < triangle)) {
                m_distance = distance;
                tau = position;
                stretch = index;
                triangle = border.triangle;
            }
        }
    }

    const BorderStretches& m_border;
    Point<double, 3> m_from;
    Point<double, 3> m_direction;
    double m_length2;
    int m_side;
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
    NearestSheet nearest(m_border, from, aim, side);
    for (std::uint32_t i = 0; i < m_border.stretches.size(); ++i) {
        nearest.visit(i);
    }
    if (nearest.tau < 0) {
        return std::nullopt;
    }
    const Face& face = faceOf(nearest.stretch);
    double tau = nearest.tau;
    Point<double, 3> normal = m_border.stretches[nearest.stretch].sheet.slope;
    if (face.isCurved) {
        const BorderBlend blend(m_border, face.first, face.last, normal);
        const std::optional<BlendedHit> hit = blend.meet(from + tau * aim.direction, aim.direction);
        tau += hit ? hit->tau : 0;
        if (!hit || !(tau >= 0) || sideOfSurface(aim.direction, hit->normal) != side) {
            return std::nullopt;
        }
        normal = hit->normal;
    }
    const double t = tau * aim.scale;
    const Point<double, 3> point = from + t * (to - from);
    return isFinite(point) ? std::optional(MeshPoint{point, normal, t, nearest.triangle}) : std::nullopt;
}

}  // namespace KelvoScreenDetail
