#include "DisplayExport/RayWay.h"

#include "KelvoControl/ProjectionModel.h"
#include "ScreenManager/CollimatedTargetLocator.h"
#include "ScreenManager/SphereTargetLocator.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace Veltrani::DisplayExport {

namespace {

const SphereTargetLocatorParams& cameraOf(const SphereTargetLocator& locator) {
    return static_cast<const SphereTargetLocatorParams&>(locator.getTargetLocatorParams());
}

bool isBent(const SphereTargetLocatorParams& camera) {
    return !camera.pitchTable.empty() || !camera.yawTable.empty();
}

}  // namespace

RayWay::RayWay(const Point<double, 3>& origin, std::shared_ptr<const ScreenGeometry> surface)
    : m_origin(origin), m_surface(std::move(surface)) {}

void RayWay::follow(std::span<const Point<double, 2>> picture, std::span<Arrival> arrivals) const {
    m_rays.clear();
    m_hits.resize(picture.size());
    for (std::size_t i = 0; i < picture.size(); ++i) {
        // A picture point without a ray gets one of length zero, which meets nothing.
        Point<double, 3>& leaving = arrivals[i].leaving;
        leaving = directionOf(picture[i], leaving) ? leaving : Point<double, 3>();
        m_rays.emplace_back(m_origin, m_origin + leaving);
    }
    cast(m_rays, m_hits);
    for (std::size_t i = 0; i < picture.size(); ++i) {
        arrivals[i].arrives = m_hits[i].hit;
        arrivals[i].point = m_hits[i].point;
    }
}

Arrival RayWay::continued(const Point<double, 2>& picture) const {
    Arrival arrival;
    arrival.arrives = directionOf(picture, arrival.leaving) &&
                      castBeyond({m_origin, m_origin + arrival.leaving}, side(), arrival.point);
    return arrival;
}

void RayWay::cast(std::span<const Ray> rays, std::span<SurfaceHit> hits) const {
    m_surface->intersectRays(rays, hits);
}

bool RayWay::castBeyond(const Ray& ray, int side, Point<double, 3>& hit) const {
    const IntersectionSet met = m_surface->intersectExtrapolatedWithSpecifiedNormal(ray.first, ray.second, side);
    if (met.empty()) {
        return false;
    }
    hit = met.first().point;
    return true;
}

int RayWay::side() const {
    constexpr int PER_SIDE = 33;
    if (!m_side) {
        std::vector<Ray> rays;
        for (int row = 0; row < PER_SIDE; ++row) {
            for (int column = 0; column < PER_SIDE; ++column) {
                Point<double, 3> direction;
                if (directionOf({(column + 0.5) / PER_SIDE, (row + 0.5) / PER_SIDE}, direction)) {
                    rays.emplace_back(m_origin, m_origin + direction);
                }
            }
        }
        std::vector<SurfaceHit> hits(rays.size());
        cast(rays, hits);
        int sum = 0;
        for (const SurfaceHit& hit : hits) {
            sum += hit.hit ? hit.side : 0;
        }
        m_side = sum < 0 ? -1 : 1;
    }
    return *m_side;
}

FrustumWay::FrustumWay(std::shared_ptr<const SphereTargetLocator> locator,
                       std::shared_ptr<const ScreenGeometry> surface)
    : RayWay(cameraOf(*locator).eyepoint, std::move(surface)),
      m_locator(std::move(locator)),
      m_rays(cameraOf(*m_locator)),
      m_isBent(isBent(cameraOf(*m_locator))) {}

bool FrustumWay::directionOf(const Point<double, 2>& picture, Point<double, 3>& direction) const {
    if (m_isBent) {
        const Ray ray = m_locator->rayOf(picture);
        direction = ray.second - ray.first;
    } else {
        direction = m_rays.directionOf(picture);
    }
    return true;
}

MirrorWay::MirrorWay(std::shared_ptr<const CollimatedTargetLocator> locator,
                     std::shared_ptr<const ScreenGeometry> surface)
    : FrustumWay(locator, std::move(surface)), m_mirror(std::move(locator)) {}

std::optional<Point<double, 3>> MirrorWay::eyeOfMirror() const {
    return m_mirror->mirrorFrame().toWorld(origin());
}

Point<double, 3> MirrorWay::directionInMirror(const Arrival& arrival) const {
    return m_mirror->mirrorFrame().rotation() * arrival.leaving;
}

void MirrorWay::cast(std::span<const Ray> rays, std::span<SurfaceHit> hits) const {
    std::vector<Ray> reflected;
    std::vector<std::size_t> places;
    m_mirror->reflect(rays, reflected, places);
    std::vector<SurfaceHit> met(reflected.size());
    surface().intersectRays(reflected, met);
    std::fill(hits.begin(), hits.end(), SurfaceHit{});
    for (std::size_t i = 0; i < places.size(); ++i) {
        hits[places[i]] = met[i];
    }
}

bool MirrorWay::castBeyond(const Ray& ray, int side, Point<double, 3>& hit) const {
    return m_mirror->intersectWithTargetLocationSurfaceExtrapolated(ray.first, ray.second, hit, side);
}

LensWay::LensWay(std::shared_ptr<const ProjectionModel> model, std::shared_ptr<const ScreenGeometry> surface)
    : RayWay(model ? model->viewport().position : Point<double, 3>(), std::move(surface)), m_model(std::move(model)) {}

bool LensWay::directionOf(const Point<double, 2>& picture, Point<double, 3>& direction) const {
    return m_model && m_model->unproject(picture, direction);
}

FollowedWay::FollowedWay(std::shared_ptr<const SphereTargetLocator> locator) : m_locator(std::move(locator)) {}

void FollowedWay::follow(std::span<const Point<double, 2>> picture, std::span<Arrival> arrivals) const {
    for (std::size_t i = 0; i < picture.size(); ++i) {
        arrivals[i] = {};
        const Ray ray = m_locator->rayOf(picture[i]);
        arrivals[i].leaving = ray.second - ray.first;
        arrivals[i].arrives =
            m_locator->intersectWithTargetLocationSurface(ray.first, ray.second, arrivals[i].point).first;
    }
}

Arrival FollowedWay::continued(const Point<double, 2>& /*picture*/) const {
    return {};
}

}  // namespace Veltrani::DisplayExport
