#include "DisplayReport/scene/SceneCamera.h"

#include "DisplayReport/scene/SceneAxes.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Veltrani::DisplayReport {

namespace {

using P3 = Point<double, 3>;

/// Half of what the camera sees from top to bottom, radians.
constexpr double HALF_FIELD = 16 * std::numbers::pi / 180;
/// Share of the picture that stays free on each side.
constexpr double MARGIN = 0.06;
/// Home stands that far to the right of the audience and above it, radians: depth shows, and nothing is hidden.
constexpr double HOME_ASIDE = 28 * std::numbers::pi / 180;
constexpr double HOME_ABOVE = 24 * std::numbers::pi / 180;
/// A part of the size of the screen: an eye nearer to its middle than this does not show which side is the audience's.
constexpr double TELLING = 0.05;

P3 unit(const P3& direction) {
    return direction * (1 / norm(direction));
}

/// The middle of a box.
P3 middleOf(const Extent& box) {
    return box.minimum() + box.size() * 0.5;
}

/// Seen from above, where the audience is: on the side of the first eye, behind the origin when nothing shows it.
double audienceHeading(const DisplayScene& scene) {
    const Extent core = scene.core();
    if (!scene.eyes.empty() && !core.empty()) {
        const P3 towards = scene.eyes.front().point - middleOf(core);
        if (std::hypot(towards[0], towards[1]) > TELLING * norm(core.size())) {
            return std::atan2(towards[0], towards[1]);
        }
    }
    return std::numbers::pi;
}

P3 homeDirection(const DisplayScene& scene) {
    const double heading = audienceHeading(scene) - HOME_ASIDE;
    return {std::sin(heading) * std::cos(HOME_ABOVE), std::cos(heading) * std::cos(HOME_ABOVE), std::sin(HOME_ABOVE)};
}

}  // namespace

std::vector<std::string> SceneCamera::views() {
    return {"home", "front", "side", "top"};
}

P3 SceneCamera::directionOf(const std::string& view, const DisplayScene& scene) {
    if (view == "front") {
        return {0, -1, 0};
    }
    if (view == "side") {
        return {1, 0, 0};
    }
    return view == "top" ? P3{0, 0, 1} : homeDirection(scene);
}

SceneCamera::SceneCamera(const DisplayScene& scene, const std::string& view, double width, double height)
    : m_width(width), m_height(height) {
    const P3 towardsCamera = directionOf(view, scene);
    const Extent frame = scene.frame();
    m_middle = middleOf(frame);
    m_ahead = -towardsCamera;
    // From the top, forward is up.
    const bool isVertical = std::abs(m_ahead[2]) > std::cos(TELLING);
    m_right = unit(cross(m_ahead, isVertical ? P3{0, 1, 0} : P3{0, 0, 1}));
    m_up = cross(m_right, m_ahead);
    m_focus = height / 2 / std::tan(HALF_FIELD);
    const double size = norm(frame.size());
    constexpr double FAR_ENOUGH = 4;  // sizes of the frame: it surely is in the picture
    m_distance = size > 0 ? FAR_ENOUGH * size : 1;
    std::vector<P3> points = scene.framedPoints();
    const SceneAxes::Edges edges = SceneAxes::edgesFor(frame, towardsCamera);
    points.insert(points.end(), edges.ends.begin(), edges.ends.end());
    points.push_back(edges.corner);
    if (size > 0) {
        fit(points);
    }
    constexpr double NEAREST = 1e-3;  // of the distance: nothing that is framed stands nearer
    m_nearest = NEAREST * m_distance;
    m_position = m_middle - m_ahead * m_distance;
}

void SceneCamera::fit(const std::vector<P3>& points) {
    // The less is left, the more what stands near grows: after these, less than a pixel.
    constexpr int ROUNDS = 24;
    for (int round = 0; round < ROUNDS; ++round) {
        Extent box;
        double nearestAhead = m_distance;
        for (const P3& point : points) {
            const P3 place = seen(point);
            nearestAhead = std::min(nearestAhead, place[2]);
            box.add({place[0] / place[2], place[1] / place[2], 0.0});
        }
        const P3 middle = box.minimum() + box.size() * 0.5;
        m_middle += (m_right * middle[0] + m_up * middle[1]) * m_distance;
        const double share = std::max(box.size()[0] * m_focus / m_width, box.size()[1] * m_focus / m_height);
        // What stands nearest may come near, not behind.
        const double step = m_distance * (1 - share / (1 - 2 * MARGIN));
        m_distance -= std::min(step, nearestAhead / 2);
    }
}

P3 SceneCamera::seen(const P3& world) const {
    const P3 offset = world - m_middle;
    return {dot(offset, m_right), dot(offset, m_up), dot(offset, m_ahead) + m_distance};
}

P3 SceneCamera::placed(const P3& seen) const {
    return {m_width / 2 + m_focus * seen[0] / seen[2], m_height / 2 - m_focus * seen[1] / seen[2], 1 / seen[2]};
}

std::optional<P3> SceneCamera::place(const P3& world) const {
    const P3 point = seen(world);
    return point[2] >= m_nearest ? std::optional(placed(point)) : std::nullopt;
}

std::optional<std::pair<P3, P3>> SceneCamera::placeLine(const P3& from, const P3& to) const {
    P3 a = seen(from);
    P3 b = seen(to);
    if (a[2] < m_nearest && b[2] < m_nearest) {
        return std::nullopt;
    }
    if (a[2] < m_nearest || b[2] < m_nearest) {
        P3& behind = a[2] < m_nearest ? a : b;
        behind = a + (b - a) * ((m_nearest - a[2]) / (b[2] - a[2]));
    }
    return std::pair(placed(a), placed(b));
}

}  // namespace Veltrani::DisplayReport
