#include "ScreenManager/CollimatedTargetLocator.h"

#include "ScreenManager/ScreenManager.h"

#include <algorithm>
#include <array>
#include <memory>
#include <numbers>

namespace {

using Vector = Point<double, 3>;

/// The sphere lies around the origin; the mirror's own position is applied later.
SphericalScreen wholeSphere(double radius) {
    constexpr double PI = std::numbers::pi;
    return {Vector{}, radius, -PI, PI, -PI / 2, PI / 2};
}

/// Counts how many rays reach which side of the screen.
class SideCount {
public:
    void add(const std::pair<bool, int>& answer) {
        const auto [isHit, side] = answer;
        if (isHit) {
            ++(side == 1 ? m_front : m_other);
        }
    }

    [[nodiscard]] bool isEmpty() const { return m_front == 0 && m_other == 0; }
    [[nodiscard]] int normalSign() const { return m_front > m_other ? 1 : -1; }

private:
    std::size_t m_front = 0;
    std::size_t m_other = 0;
};

}  // namespace

CollimatedTargetLocatorParams::CollimatedTargetLocatorParams(const Point<double, 3>& eye, double left, double right,
                                                             double bottom, double top, double z, double x, double y,
                                                             const Point<double, 3>& orientationOfMirror,
                                                             const Point<double, 3>& positionOfMirror,
                                                             double radiusOfMirror, HeadingTable pitches,
                                                             HeadingTable yaws)
    : SphereTargetLocatorParams(eye, left, right, bottom, top, z, x, y, std::move(pitches), std::move(yaws)),
      mirrorOrientation(orientationOfMirror),
      mirrorPosition(positionOfMirror),
      mirrorRadius(radiusOfMirror) {}

bool CollimatedTargetLocatorParams::equals(const TargetLocatorParams& other) const {
    const auto& record = static_cast<const CollimatedTargetLocatorParams&>(other);
    return SphereTargetLocatorParams::equals(other) && mirrorOrientation == record.mirrorOrientation &&
           mirrorPosition == record.mirrorPosition && mirrorRadius == record.mirrorRadius;
}

CollimatedTargetLocator::CollimatedTargetLocator(const CollimatedTargetLocatorParams& params)
    : SphereTargetLocator(params),
      m_mirrorFrame(params.mirrorOrientation, params.mirrorPosition),
      m_mirror(wholeSphere(params.mirrorRadius)),
      m_collimatedParams(params) {}

const TargetLocatorParams& CollimatedTargetLocator::getTargetLocatorParams() const {
    return m_collimatedParams;
}

std::pair<bool, int> CollimatedTargetLocator::intersectWithTargetLocationSurface(const Point<double, 3>& from,
                                                                                 const Point<double, 3>& to,
                                                                                 Point<double, 3>& hit) const {
    constexpr std::pair<bool, int> MISS{false, 1};
    Vector mirrorPoint;
    Vector reflected;
    if (!GetRefDirectionAndMirrorIntersection(from, to, mirrorPoint, reflected)) {
        return MISS;
    }
    const std::shared_ptr<ScreenGeometry> screen = ScreenManager::getInstance()->getScreenGeometry();
    if (!screen) {
        return MISS;
    }
    const IntersectionSet intersections = screen->intersect(mirrorPoint, mirrorPoint + reflected);
    if (intersections.empty()) {
        return MISS;
    }
    hit = intersections.first().point;
    return {true, sideOfSurface(reflected, screen->getScreenNormal(hit))};
}

bool CollimatedTargetLocator::reflect(const Ray& ray, Ray& reflected) const {
    Vector mirrorPoint;
    Vector direction;
    if (!GetRefDirectionAndMirrorIntersection(ray.first, ray.second, mirrorPoint, direction)) {
        return false;
    }
    reflected = {mirrorPoint, mirrorPoint + direction};
    return true;
}

void CollimatedTargetLocator::reflect(std::span<const Ray> rays, std::vector<Ray>& reflected,
                                      std::vector<std::size_t>& places) const {
    // Few enough for the hits to stay in the nearest cache.
    std::array<SurfaceHit, 64> hits;
    for (std::size_t first = 0; first < rays.size(); first += hits.size()) {
        const auto next = rays.subspan(first, std::min(hits.size(), rays.size() - first));
        m_mirror.intersectRays(next, std::span(hits).first(next.size()));
        for (std::size_t i = 0; i < next.size(); ++i) {
            if (hits[i].hit) {
                const Vector start = m_mirrorFrame.toWorld(hits[i].point);
                reflected.emplace_back(start, start + directionOfReflection(next[i], hits[i].normal));
                places.push_back(first + i);
            }
        }
    }
}

std::vector<Point<double, 3>> CollimatedTargetLocator::intersectChannelBoundary(const std::vector<Ray>& boundary,
                                                                                const std::vector<Ray>& centre) const {
    SideCount sides;
    const auto count = [&](const std::vector<Ray>& rays) {
        Vector scratch;
        for (const auto& [origin, point] : rays) {
            sides.add(intersectWithTargetLocationSurface(origin, point, scratch));
        }
    };
    count(boundary);
    if (sides.isEmpty()) {
        count(centre);
    }
    std::vector<Vector> outline;
    if (sides.isEmpty()) {
        return outline;
    }
    for (const auto& [origin, point] : boundary) {
        Vector hit;
        if (intersectWithTargetLocationSurfaceExtrapolated(origin, point, hit, sides.normalSign())) {
            outline.push_back(hit);
        }
    }
    return outline;
}

std::vector<Point<double, 3>> CollimatedTargetLocator::calculateBoundaryPoints(Point<double, 3> a, Point<double, 3> b,
                                                                               Point<double, 3> c, Point<double, 3> d,
                                                                               int samplesPerEdge) const {
    std::vector<Ray> boundary;
    std::vector<Ray> centre;
    CreateRays(boundary, centre, a, b, c, d, samplesPerEdge);
    remapRays(boundary);
    remapRays(centre);
    return intersectChannelBoundary(boundary, centre);
}

bool CollimatedTargetLocator::intersectWithTargetLocationSurfaceExtrapolated(const Point<double, 3>& from,
                                                                             const Point<double, 3>& to,
                                                                             Point<double, 3>& hit,
                                                                             int normalSign) const {
    Vector mirrorPoint;
    Vector reflected;
    if (!GetRefDirectionAndMirrorIntersection(from, to, mirrorPoint, reflected)) {
        return false;
    }
    const std::shared_ptr<ScreenGeometry> screen = ScreenManager::getInstance()->getScreenGeometry();
    if (!screen) {
        return false;
    }
    const IntersectionSet intersections =
        screen->intersectExtrapolatedWithSpecifiedNormal(mirrorPoint, mirrorPoint + reflected, normalSign);
    if (intersections.empty()) {
        return false;
    }
    hit = intersections.first().point;
    return true;
}

bool CollimatedTargetLocator::GetRefDirectionAndMirrorIntersection(const Point<double, 3>& from,
                                                                   const Point<double, 3>& to,
                                                                   Point<double, 3>& mirrorPoint,
                                                                   Point<double, 3>& reflectedDirection) const {
    const IntersectionSet intersections = m_mirror.intersect(from, to);
    if (intersections.empty()) {
        return false;
    }
    const Vector onMirror = intersections.first().point;
    mirrorPoint = m_mirrorFrame.toWorld(onMirror);
    reflectedDirection = directionOfReflection({from, to}, m_mirror.getScreenNormal(onMirror));
    return true;
}

Point<double, 3> CollimatedTargetLocator::directionOfReflection(const Ray& ray,
                                                                const Point<double, 3>& outwardNormal) const {
    const Vector inward = -outwardNormal;
    const Vector back = m_mirrorFrame.rotation() * (ray.first - ray.second);
    // Turned already, and turned again below: intended, the tables and orientations of calibrated displays belong to
    // the two turns.
    return m_mirrorFrame.rotation() * (2 * dot(back, inward) * inward - back);
}
