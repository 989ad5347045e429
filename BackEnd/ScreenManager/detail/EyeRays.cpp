#include "ScreenManager/detail/EyeRays.h"

#include "Configuration/IScreenConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "KelvoControl/Frustum.h"
#include "KelvoControl/KelvoProjector.h"
#include "ScreenManager/CollimatedTargetLocator.h"
#include "ScreenManager/DisplayKinds.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/TargetLocator.h"
#include "ScreenManager/TargetLocatorManager.h"

#include <algorithm>
#include <typeinfo>

namespace Veltrani::ScreenManagerDetail {

namespace {

/// Returns the locator as one whose rays are reflected first; null for others.
const CollimatedTargetLocator* mirrorOf(const TargetLocator& locator, LocatorKind::Rays rays) {
    // Only this class has such rays, and no class derived from it.
    return rays == LocatorKind::Rays::REFLECTED ? static_cast<const CollimatedTargetLocator*>(&locator) : nullptr;
}

}  // namespace

RaysAtOnce::RaysAtOnce(const TargetLocator& locator) : m_mirror(nullptr) {
    const LocatorKind::Rays rays = LocatorKind::of(locator).rays;
    if (rays != LocatorKind::Rays::OWN) {
        const std::shared_ptr<const ScreenGeometry> screen = ScreenManager::getInstance()->getScreenGeometry();
        m_screen = screen && screen->raysAtOnce() > 0 ? screen : nullptr;
        m_mirror = mirrorOf(locator, rays);
    }
}

void RaysAtOnce::cast(std::span<const Ray> rays, std::span<SurfaceHit> hits) {
    if (m_mirror != nullptr) {
        castReflected(rays, hits);
    } else {
        m_screen->intersectRays(rays, hits);
    }
}

void RaysAtOnce::castReflected(std::span<const Ray> rays, std::span<SurfaceHit> hits) {
    m_reflected.clear();
    m_places.clear();
    std::fill(hits.begin(), hits.end(), SurfaceHit{});
    m_mirror->reflect(rays, m_reflected, m_places);
    m_reflectedHits.resize(m_reflected.size());
    m_screen->intersectRays(m_reflected, m_reflectedHits);
    for (std::size_t i = 0; i < m_places.size(); ++i) {
        hits[m_places[i]] = m_reflectedHits[i];
    }
}

namespace {

/// Bounds the memory for rays and hits, 120 bytes each: they stay in the processor's cache. Four rows of a large
/// picture are fewer: a mesh casts the rays of neighbouring rows together.
constexpr std::size_t MOST_AT_ONCE = 8192;

/// Returns how many of some picture points are mapped next: whole rows, where they are listed row by row.
std::size_t countOfNext(std::span<const Point<double, 2>> points) {
    if (points.size() <= MOST_AT_ONCE) {
        return points.size();
    }
    for (std::size_t count = MOST_AT_ONCE; count > MOST_AT_ONCE / 2; --count) {
        if (points[count][1] != points[count - 1][1]) {
            return count;
        }
    }
    return MOST_AT_ONCE;
}

}  // namespace

Point<double, 3> eyePointOf(const XMLConfigManager* config) {
    const IScreenConfig* const screen = config != nullptr ? config->getScreenConfig() : nullptr;
    return screen != nullptr ? screen->getEyePoint() : Point<double, 3>();
}

std::vector<std::shared_ptr<const TargetLocator>> targetLocators(const XMLConfigManager* config,
                                                                 const std::vector<ProjectorConfig*>& projectors) {
    std::vector<std::shared_ptr<const TargetLocator>> locators;
    for (const ProjectorConfig* projector : projectors) {
        locators.push_back(TargetLocatorManager::getInstance()->getTargetLocator(config, projector));
    }
    return locators;
}

EyeRays::EyeRays(const KelvoProjector& projector, const TargetLocator* locator, const Point<double, 3>& eyePoint)
    : m_projector(projector), m_locator(locator), m_eyePoint(eyePoint) {}

const Frustum& EyeRays::frustum() const {
    return m_projector.getBlend().getSphericalBlendExtents();
}

bool EyeRays::mapToLayout(const Point<double, 2>& channel, Point<double, 3>& layout) const {
    const Point<double, 3> to = pointOnRay(frustum(), channel);
    return m_locator != nullptr && m_locator->intersectWithTargetLocationSurface(m_eyePoint, to, layout).first;
}

bool EyeRays::mapToLayoutAtOnce(std::span<const Point<double, 2>> channel, std::span<LayoutPoint> layout) const {
    if (m_locator == nullptr) {
        return false;
    }
    RaysAtOnce caster(*m_locator);
    if (!caster.isPossible()) {
        return false;
    }
    // Only a class derived from `Blend` may change the frustum from one point to the next.
    const Blend& blend = m_projector.getBlend();
    const Frustum* const fixed = typeid(blend) == typeid(Blend) ? &frustum() : nullptr;
    const std::size_t most = std::min(channel.size(), MOST_AT_ONCE);
    std::vector<Ray> rays;
    rays.reserve(most);
    std::vector<SurfaceHit> hits(most);
    for (std::size_t begin = 0; begin < channel.size(); begin += rays.size()) {
        const std::size_t count = countOfNext(channel.subspan(begin));
        rays.clear();
        for (std::size_t i = 0; i < count; ++i) {
            rays.emplace_back(m_eyePoint, pointOnRay(fixed != nullptr ? *fixed : frustum(), channel[begin + i]));
        }
        caster.cast(rays, {hits.data(), count});
        for (std::size_t i = 0; i < count; ++i) {
            LayoutPoint& answer = layout[begin + i];
            answer.isMapped = hits[i].hit;
            if (hits[i].hit) {
                answer.point = hits[i].point;
            }
        }
    }
    return true;
}

Point<double, 3> EyeRays::pointOnRay(const Frustum& f, const Point<double, 2>& channel) const {
    const double a = f.sx * channel[0] + f.ox;
    const double b = f.sy * channel[1] + f.oy;
    // Evaluated in this order, so that results match to the last bit.
    const auto component = [&](std::size_t k) { return a * f.R(k, 0) + f.R(k, 1) + b * f.R(k, 2); };
    return m_eyePoint + Point<double, 3>{component(0), component(1), component(2)};
}

}  // namespace Veltrani::ScreenManagerDetail
