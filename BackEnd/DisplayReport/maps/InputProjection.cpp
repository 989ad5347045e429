#include "DisplayReport/maps/InputProjection.h"

#include "Configuration/IScreenConfig.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/TargetLocatorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayReport/channels/ChannelLocator.h"
#include "ScreenManager/DisplayKinds.h"
#include "ScreenManager/MirrorFrame.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

constexpr double PI = std::numbers::pi;
/// Radians, or parts of the input: what rounding adds to a point on the edge.
constexpr double EDGE_TOLERANCE = 1e-9;

const std::array<std::pair<const char*, Panorama>, 2> PANORAMAS{
    {{"fisheye", Panorama::FISHEYE}, {"equirectangular", Panorama::EQUIRECTANGULAR}}};

/// The edges belong to the input, rounded or not.
std::optional<P2> inRectangle(const P2& place) {
    P2 inside;
    for (std::size_t i = 0; i < P2::size(); ++i) {
        if (!(place[i] >= -EDGE_TOLERANCE && place[i] <= 1 + EDGE_TOLERANCE)) {
            return std::nullopt;
        }
        inside[i] = std::clamp(place[i], 0.0, 1.0);
    }
    return inside;
}

/// Nothing for a viewer who looks backwards.
std::optional<P2> inFisheye(const P3& direction) {
    const double aside = std::hypot(direction[0], direction[2]);
    const double angle = std::atan2(aside, direction[1]);
    if (!(angle <= PI / 2 + EDGE_TOLERANCE)) {
        return std::nullopt;
    }
    const double perUnit = aside > 0 ? std::min(angle, PI / 2) / PI / aside : 0;
    return P2{0.5 + perUnit * direction[0], 0.5 + perUnit * direction[2]};
}

P2 inEquirectangular(const P3& direction) {
    const double azimuth = std::atan2(direction[0], direction[1]);
    const double elevation = std::atan2(direction[2], std::hypot(direction[0], direction[1]));
    return {0.5 + azimuth / (2 * PI), 0.5 + elevation / PI};
}

/// The eye point of the screen; where the mirror is turned and moved, so is the eye.
P3 eyePointOf(const XMLConfigManager& config) {
    const IScreenConfig* const screen = config.getScreenConfig();
    const P3 eyePoint = screen != nullptr ? screen->getEyePoint() : P3();
    const TargetLocatorConfig* const targets = config.getTargetLocatorConfig();
    const DisplayKind* const kind = DisplayKind::of(config);
    if (targets == nullptr || kind == nullptr || !kind->hasMirror()) {
        return eyePoint;
    }
    return MirrorFrame(*targets).toWorld(eyePoint);
}

}  // namespace

std::optional<Panorama> panoramaOf(const std::string& name) {
    for (const auto& [known, panorama] : PANORAMAS) {
        if (name == known) {
            return panorama;
        }
    }
    return std::nullopt;
}

std::vector<std::string> panoramaNames() {
    std::vector<std::string> names;
    names.reserve(PANORAMAS.size());
    for (const auto& [name, panorama] : PANORAMAS) {
        names.emplace_back(name);
    }
    return names;
}

InputProjection::InputProjection(const XMLConfigManager& config, Panorama panorama)
    : m_kind(kindOf(config, panorama)), m_eyePoint(eyePointOf(config)) {
    constexpr double FARTHEST = std::numeric_limits<double>::max();
    m_lower = {FARTHEST, FARTHEST};
    m_upper = {-FARTHEST, -FARTHEST};
    for (const std::wstring& id : config.getProjectorConfigIds()) {
        const ProjectorConfig* const projector = config.getProjectorConfig(id);
        // A channel without a rectangle shows nothing of the layout.
        if (projector != nullptr && projector->getLayoutXMax() > projector->getLayoutXMin() &&
            projector->getLayoutYMax() > projector->getLayoutYMin()) {
            m_lower = {std::min(m_lower[0], projector->getLayoutXMin()),
                       std::min(m_lower[1], projector->getLayoutYMin())};
            m_upper = {std::max(m_upper[0], projector->getLayoutXMax()),
                       std::max(m_upper[1], projector->getLayoutYMax())};
        }
    }
}

std::optional<P2> InputProjection::place(const P3& layout) const {
    const P3 direction = layout - m_eyePoint;
    const bool hasDirection = dot(direction, direction) > 0;
    switch (m_kind) {
        case Kind::LAYOUT_PLANE:
            if (!(m_lower[0] < m_upper[0])) {
                return std::nullopt;
            }
            return inRectangle({(layout[0] - m_lower[0]) / (m_upper[0] - m_lower[0]),
                                (layout[1] - m_lower[1]) / (m_upper[1] - m_lower[1])});
        case Kind::SCREEN:
            return inRectangle({layout[0], layout[2]});
        case Kind::FISHEYE:
            return hasDirection ? inFisheye(direction) : std::nullopt;
        case Kind::EQUIRECTANGULAR:
            return hasDirection ? std::optional(inEquirectangular(direction)) : std::nullopt;
    }
    return std::nullopt;
}

bool InputProjection::hasPanorama(const XMLConfigManager& config) {
    const DisplayKind* const kind = DisplayKind::of(config);
    return kind == nullptr || kind->layout == DisplayKind::Layout::WORLD;
}

InputProjection::Kind InputProjection::kindOf(const XMLConfigManager& config, Panorama panorama) {
    if (hasPanorama(config)) {
        return panorama == Panorama::FISHEYE ? Kind::FISHEYE : Kind::EQUIRECTANGULAR;
    }
    return isPlanarDisplay(config) ? Kind::LAYOUT_PLANE : Kind::SCREEN;
}

}  // namespace Veltrani::DisplayReport
