#include "KelvoScreen/detail/BorderBlend.h"

#include "KelvoScreen/detail/Box.h"

#include <algorithm>
#include <cmath>

namespace KelvoScreenDetail {

namespace {

/// Rounds of solving, each with the weights at the point of the one before. The weights change so little between two
/// rounds that each gains two digits or more.
constexpr int MOST_ROUNDS = 12;
/// The move, as a part of the distance between vertices, below which no further round is needed.
constexpr double SETTLED = 1e-9;

/// Stretches count up to so many times the distance of the nearest, squared.
constexpr double REACH2 = 4;
/// The distance, in those between vertices, over which a step at the border fades.
constexpr double FADING = 1;

/// The squared distance of a stretch; never less than its own reach, so that the nearest one does not rule alone.
double distance2(const BorderStretch& stretch, const Point<double, 3>& point) {
    const Point<double, 3> away = point - stretch.sheet.origin;
    return dot(away, away) + stretch.reach * stretch.reach + stretch.bounds.radius * stretch.bounds.radius;
}

}  // namespace

/// Sums over the stretches, each with its weight.
struct BorderBlend::Sum {
    double weight = 0;
    AlongRay heights;
    double borderHeight = 0;
    Point<double, 3> gradient;
};

std::uint32_t BorderBlend::nearestStretch(const Point<double, 3>& point) const {
    std::uint32_t nearest = m_first;
    double smallest = Box::INFINITE;
    for (std::uint32_t i = m_first; i < m_last; ++i) {
        const double distance = norm(point - m_border.stretches[i].bounds.centre);
        if (distance < smallest) {
            smallest = distance;
            nearest = i;
        }
    }
    return nearest;
}

/// The point of the triangles of a stretch that is nearest to `point`, when nearer than the one before.
bool BorderBlend::approach(const BorderStretch& stretch, const Point<double, 3>& point, Point<double, 3>& nearest,
                           double& smallest) const {
    bool isNearer = false;
    for (std::uint32_t i = stretch.first; i < stretch.last; ++i) {
        const BorderTriangle& border = m_border.triangles[i];
        if (!(border.bounds.leastDistance(point) < smallest)) {
            continue;
        }
        const Point<double, 3> candidate = closestPoint(border.corners, point);
        const double distance = norm(candidate - point);
        if (distance < smallest) {
            smallest = distance;
            nearest = candidate;
            isNearer = true;
        }
    }
    return isNearer;
}

Point<double, 3> BorderBlend::nearestOnBorder(const Point<double, 3>& point, double& spacing) const {
    Point<double, 3> nearest = point;
    double smallest = Box::INFINITE;
    // With a good one first, few others need a look at their triangles.
    const std::uint32_t first = nearestStretch(point);
    (void)approach(m_border.stretches[first], point, nearest, smallest);
    spacing = m_border.stretches[first].spacing;
    for (std::uint32_t i = m_first; i < m_last; ++i) {
        const BorderStretch& stretch = m_border.stretches[i];
        if (stretch.bounds.leastDistance(point) < smallest && approach(stretch, point, nearest, smallest)) {
            spacing = stretch.spacing;
        }
    }
    return nearest;
}

double BorderBlend::smallestDistance2(const Point<double, 3>& point) const {
    double smallest = Box::INFINITE;
    for (std::uint32_t i = m_first; i < m_last; ++i) {
        if (dot(m_border.stretches[i].sheet.slope, m_normal) > 0) {
            smallest = std::min(smallest, distance2(m_border.stretches[i], point));
        }
    }
    return smallest;
}

BorderBlend::Sum BorderBlend::blendAt(const Point<double, 3>& point, const Point<double, 3>& direction) const {
    double spacing = 0;
    const Point<double, 3> onBorder = nearestOnBorder(point, spacing);
    const double away = norm(point - onBorder) / (FADING * spacing);
    const double limit = 1 / (REACH2 * smallestDistance2(point));
    Sum sum;
    for (std::uint32_t i = m_first; i < m_last; ++i) {
        const BorderStretch& stretch = m_border.stretches[i];
        const double nearness = 1 / distance2(stretch, point) - limit;
        const double likeness = dot(stretch.sheet.slope, m_normal);
        if (!(nearness > 0 && likeness > 0)) {
            continue;
        }
        const double weight = nearness * nearness * likeness * likeness;
        const AlongRay heights = stretch.sheet.alongRay(point, direction);
        sum.weight += weight;
        sum.heights.value += weight * heights.value;
        sum.heights.slope += weight * heights.slope;
        sum.heights.bend += weight * heights.bend;
        sum.borderHeight += weight * stretch.sheet.height(onBorder);
        sum.gradient += weight * stretch.sheet.gradient(point);
    }
    sum.heights.value -= sum.borderHeight / (1 + away * away);
    return sum;
}

std::optional<BlendedHit> BorderBlend::meet(const Point<double, 3>& start, const Point<double, 3>& direction) const {
    BlendedHit hit;
    const double length = norm(direction);
    for (int round = 0; round < MOST_ROUNDS; ++round) {
        const Sum sum = blendAt(start + hit.tau * direction, direction);
        const Zeros zeros(sum.heights);
        if (zeros.count == 0) {
            return std::nullopt;
        }
        hit.tau += zeros.tau[0];
        hit.normal = sum.gradient;
        if (std::abs(zeros.tau[0]) * length <= SETTLED * m_border.stretches[m_first].spacing) {
            break;
        }
    }
    return hit;
}

}  // namespace KelvoScreenDetail
