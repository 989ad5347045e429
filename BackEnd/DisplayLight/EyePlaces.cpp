#include "DisplayLight/EyePlaces.h"

#include "DisplayReport/channels/ChannelLocator.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/CollimatedTargetLocator.h"
#include "ScreenManager/DisplayKinds.h"

#include <cstddef>
#include <utility>

namespace Veltrani::DisplayLight {

namespace {

std::shared_ptr<const CollimatedTargetLocator> mirrorOf(const XMLConfigManager& config,
                                                        const DisplayReport::ChannelChoice& channel) {
    const auto locator = DisplayReport::ChannelLocator::of(config, *channel.projector).locator;
    const bool isMirror = locator && LocatorKind::of(*locator).path == LocatorKind::Path::MIRROR;
    return isMirror ? std::static_pointer_cast<const CollimatedTargetLocator>(locator) : nullptr;
}

}  // namespace

EyePlaces::EyePlaces(const XMLConfigManager& config, const DisplayReport::ChannelChoice& channel,
                     std::shared_ptr<const ScreenGeometry> surface, const Point<double, 3>& eye)
    : m_surface(std::move(surface)), m_mirror(mirrorOf(config, channel)), m_eye(eye) {
    if (m_mirror) {
        m_eye = static_cast<const SphereTargetLocatorParams&>(m_mirror->getTargetLocatorParams()).eyepoint;
    }
}

EyePlaces::~EyePlaces() = default;

void EyePlaces::see(std::span<const Point<double, 3>> directions, std::span<EyePlace> places) const {
    std::vector<Ray> rays;
    rays.reserve(directions.size());
    // Rays start beside the mirror, in its frame.
    const Matrix<double, 3> turned = m_mirror ? transpose(m_mirror->mirrorFrame().rotation()) : Matrix<double, 3>();
    for (const Point<double, 3>& direction : directions) {
        rays.emplace_back(m_eye, m_eye + (m_mirror ? turned * direction : direction));
    }
    std::vector<std::size_t> numbers;
    if (m_mirror) {
        std::vector<Ray> reflected;
        m_mirror->reflect(rays, reflected, numbers);
        rays.swap(reflected);
    }
    std::vector<SurfaceHit> hits(rays.size());
    m_surface->intersectRays(rays, hits);
    for (EyePlace& place : places) {
        place = {};
    }
    for (std::size_t i = 0; i < hits.size(); ++i) {
        if (hits[i].hit) {
            // Whichever side of the screen a mirror shows, light is not known to come from one there.
            places[m_mirror ? numbers[i] : i] = {hits[i].point, static_cast<std::int8_t>(m_mirror ? 0 : hits[i].side),
                                                 true};
        }
    }
}

}  // namespace Veltrani::DisplayLight
