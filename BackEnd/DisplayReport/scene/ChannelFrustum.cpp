#include "DisplayReport/scene/ChannelFrustum.h"

#include "Common/Finite.h"
#include "Common/VeltraniException.h"
#include "Configuration/ProjectorConfig.h"
#include "KelvoControl/Frustum.h"
#include "KelvoControl/ProjectionModel.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/SphericalScreen.h"
#include "ScreenManager/CollimatedTargetLocator.h"
#include "ScreenManager/CustomProjectionTargetLocator.h"
#include "ScreenManager/DisplayKinds.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/SphereTargetLocator.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <numbers>
#include <optional>

namespace Veltrani::DisplayReport {

namespace {

using P3 = Point<double, 3>;
using Polyline = std::vector<P3>;

/// Rays along each edge of a picture: enough to show how a lens bends it.
constexpr std::size_t RIM_SAMPLES = 16;
/// Cells along each side of the part of the mirror that a channel uses.
constexpr std::size_t MIRROR_CELLS = 12;

/// The rays through points of a picture, (0, 0) at the bottom left corner, (1, 1) at the top right one.
class PictureRays {
public:
    PictureRays() = default;
    PictureRays(const PictureRays&) = delete;
    PictureRays& operator=(const PictureRays&) = delete;
    virtual ~PictureRays() = default;

    [[nodiscard]] virtual P3 apex() const = 0;
    /// The way of the light from the apex to where it ends; only the apex where the lens sends no light.
    [[nodiscard]] virtual Polyline path(const Point<double, 2>& picture, double reach) const = 0;
    [[nodiscard]] virtual bool usesMirror() const { return false; }
};

/// Straight to the current screen; `reach` far where it is missed, nowhere for a reach of 0.
Polyline straight(const P3& apex, const P3& direction, double reach) {
    const double length = norm(direction);
    if (!(length > 0) || !std::isfinite(length)) {
        return {apex};
    }
    const auto screen = ScreenManager::getInstance()->getScreenGeometry();
    if (screen) {
        const IntersectionSet hits = screen->intersect(apex, apex + direction);
        if (!hits.empty() && isFinite(hits.first().point)) {
            return {apex, hits.first().point};
        }
    }
    return reach > 0 ? Polyline{apex, apex + direction * (reach / length)} : Polyline{apex};
}

class ModelRays : public PictureRays {
public:
    explicit ModelRays(const ProjectionModel& model) : m_model(model) {}

    [[nodiscard]] P3 apex() const override { return m_model.viewport().position; }
    [[nodiscard]] Polyline path(const Point<double, 2>& picture, double reach) const override {
        P3 direction;
        return m_model.unproject(picture, direction) ? straight(apex(), direction, reach) : Polyline{apex()};
    }

private:
    const ProjectionModel& m_model;
};

class ViewportRays : public PictureRays {
public:
    explicit ViewportRays(const Viewport& viewport) : m_frustum(Frustum::of(viewport, {})) {}

    [[nodiscard]] P3 apex() const override { return m_frustum.position; }
    [[nodiscard]] Polyline path(const Point<double, 2>& picture, double reach) const override {
        const P3 direction =
            m_frustum.R * P3{m_frustum.ox + m_frustum.sx * picture[0], 1.0, m_frustum.oy + m_frustum.sy * picture[1]};
        return straight(apex(), direction, reach);
    }

private:
    Frustum m_frustum;
};

/// From the eye, bent as the targets of the channel are.
class EyeRays : public PictureRays {
public:
    /// Only the rays of the record are taken, whatever class of locator it belongs to.
    explicit EyeRays(const SphereTargetLocatorParams& params) : m_apex(params.eyepoint), m_rays(params) {}

    [[nodiscard]] P3 apex() const override { return m_apex; }
    [[nodiscard]] Polyline path(const Point<double, 2>& picture, double reach) const override {
        const auto [from, to] = rayOf(picture);
        return straight(from, to - from, reach);
    }

protected:
    [[nodiscard]] Ray rayOf(const Point<double, 2>& picture) const { return m_rays.rayOf(picture); }

private:
    P3 m_apex;
    SphereTargetLocator m_rays;
};

/// The eye is given relative to the middle of the mirror, which is moved and turned into the world here.
class MirrorRays : public EyeRays {
public:
    MirrorRays(const CollimatedTargetLocator& locator, const CollimatedTargetLocatorParams& params)
        : EyeRays(params),
          m_locator(locator),
          m_mirror({}, params.mirrorRadius, -std::numbers::pi, std::numbers::pi, -std::numbers::pi / 2,
                   std::numbers::pi / 2) {}

    [[nodiscard]] P3 apex() const override { return m_locator.mirrorFrame().toWorld(EyeRays::apex()); }
    [[nodiscard]] bool usesMirror() const override { return true; }
    [[nodiscard]] Polyline path(const Point<double, 2>& picture, double /*reach*/) const override {
        const auto [from, to] = rayOf(picture);
        Polyline way{apex()};
        const IntersectionSet onMirror = m_mirror.intersect(from, to);
        if (onMirror.empty()) {
            return way;
        }
        way.push_back(m_locator.mirrorFrame().toWorld(onMirror.first().point));
        P3 hit;
        if (m_locator.intersectWithTargetLocationSurface(from, to, hit).first) {
            way.push_back(hit);
        }
        return way;
    }

private:
    const CollimatedTargetLocator& m_locator;
    SphericalScreen m_mirror;
};

/// The rays of a locator of a class from elsewhere, which alone knows where they arrive.
class FollowedRays : public EyeRays {
public:
    FollowedRays(const ::TargetLocator& locator, const SphereTargetLocatorParams& params)
        : EyeRays(params), m_locator(locator) {}

    [[nodiscard]] Polyline path(const Point<double, 2>& picture, double /*reach*/) const override {
        const auto [from, to] = rayOf(picture);
        P3 hit;
        return m_locator.intersectWithTargetLocationSurface(from, to, hit).first ? Polyline{apex(), hit}
                                                                                 : Polyline{apex()};
    }

private:
    const ::TargetLocator& m_locator;
};

bool hasExtent(const ProjectorConfig& projector) {
    return projector.getFrustumLeft() != projector.getFrustumRight() &&
           projector.getFrustumBottom() != projector.getFrustumTop();
}

/// The rays that the configuration describes; null where it describes none.
std::unique_ptr<PictureRays> raysOf(const ProjectorConfig& projector) {
    // Written out, as in the others here: the static analysis takes a `?:` of two handles for a leak.
    if (!hasExtent(projector)) {
        return nullptr;
    }
    return std::make_unique<ViewportRays>(Viewport::of(projector, L""));
}

[[noreturn]] void refuse() {
    throw VeltraniException(__FILE__, __LINE__, L"no frustum is known for this kind of target locator");
}

std::unique_ptr<PictureRays> followedRays(const TargetLocator& locator) {
    // A class from elsewhere may have a record of its own.
    const auto* const params = dynamic_cast<const SphereTargetLocatorParams*>(&locator.getTargetLocatorParams());
    if (params == nullptr) {
        refuse();
    }
    return std::make_unique<FollowedRays>(locator, *params);
}

/// The record of a locator; its class follows from the kind, which goes by the exact class of the locator.
template <class Record>
const Record& recordOf(const TargetLocator& locator) {
    return static_cast<const Record&>(locator.getTargetLocatorParams());
}

/// Null where nothing describes the rays. Throws `VeltraniException` for a locator whose way of the rays is not known.
std::unique_ptr<PictureRays> raysOf(const TargetLocator& locator, const ProjectorConfig& projector) {
    using Path = LocatorKind::Path;
    switch (LocatorKind::of(locator).path) {
        case Path::LENS: {
            const auto& model = recordOf<CustomProjectionTargetLocatorParams>(locator).projectionModel;
            if (!model) {
                return nullptr;
            }
            return std::make_unique<ModelRays>(*model);
        }
        case Path::MIRROR:
            return std::make_unique<MirrorRays>(static_cast<const CollimatedTargetLocator&>(locator),
                                                recordOf<CollimatedTargetLocatorParams>(locator));
        case Path::FRUSTUM:
            return std::make_unique<EyeRays>(recordOf<SphereTargetLocatorParams>(locator));
        case Path::FOLLOWED:
            return followedRays(locator);
        case Path::SCREEN_AREA:
        case Path::MAP_FILE:
            return raysOf(projector);
        case Path::UNKNOWN:
            break;
    }
    refuse();
}

std::unique_ptr<PictureRays> raysOf(const TargetLocator* locator, const ProjectorConfig& projector) {
    if (locator == nullptr) {
        return raysOf(projector);
    }
    return raysOf(*locator, projector);
}

/// Around the border from the top left corner clockwise, `RIM_SAMPLES` a side.
std::vector<Point<double, 2>> borderOfPicture() {
    std::vector<Point<double, 2>> places;
    const auto addSide = [&places](const Point<double, 2>& from, const Point<double, 2>& to) {
        for (std::size_t i = 0; i < RIM_SAMPLES; ++i) {
            const double part = static_cast<double>(i) / static_cast<double>(RIM_SAMPLES);
            places.push_back(from * (1 - part) + to * part);
        }
    };
    addSide({0, 1}, {1, 1});
    addSide({1, 1}, {1, 0});
    addSide({1, 0}, {0, 0});
    addSide({0, 0}, {0, 1});
    return places;
}

/// What was found of the border between (0, 0) and the corner before it or behind it, from (0, 0) on.
Polyline edgeFromOrigin(const std::vector<std::optional<P3>>& border, bool isBackwards) {
    constexpr std::size_t ORIGIN = 3 * RIM_SAMPLES;
    Polyline edge;
    for (std::size_t i = 0; i <= RIM_SAMPLES; ++i) {
        const auto& end = border[isBackwards ? ORIGIN - i : (ORIGIN + i) % border.size()];
        if (end) {
            edge.push_back(*end);
        }
    }
    return edge;
}

/// Distance from the apex to the farthest place of the screen that is met; 0 where none is.
double longestHit(const PictureRays& rays, const std::vector<Point<double, 2>>& places) {
    double longest = 0;
    for (const auto& place : places) {
        constexpr double HITS_ALONE = 0;
        const Polyline way = rays.path(place, HITS_ALONE);
        const double length = norm(way.back() - way.front());
        longest = std::isfinite(length) ? std::max(longest, length) : longest;
    }
    return longest;
}

void addMirror(const PictureRays& rays, double reach, ChannelFrustum& frustum) {
    std::vector<bool> isMet;
    for (std::size_t row = 0; row <= MIRROR_CELLS; ++row) {
        for (std::size_t column = 0; column <= MIRROR_CELLS; ++column) {
            const Polyline way = rays.path({static_cast<double>(column) / static_cast<double>(MIRROR_CELLS),
                                            static_cast<double>(row) / static_cast<double>(MIRROR_CELLS)},
                                           reach);
            isMet.push_back(way.size() > 1 && isFinite(way[1]));
            frustum.mirrorVertices.push_back(isMet.back() ? way[1] : frustum.apex);
        }
    }
    for (std::size_t row = 0; row < MIRROR_CELLS; ++row) {
        for (std::size_t column = 0; column < MIRROR_CELLS; ++column) {
            const std::size_t a = row * (MIRROR_CELLS + 1) + column;
            const std::size_t above = a + MIRROR_CELLS + 1;
            if (isMet[a] && isMet[a + 1] && isMet[above] && isMet[above + 1]) {
                const auto index = [](std::size_t i) { return static_cast<std::uint32_t>(i); };
                frustum.mirrorTriangles.push_back({index(a), index(a + 1), index(above + 1)});
                frustum.mirrorTriangles.push_back({index(a), index(above + 1), index(above)});
            }
        }
    }
}

}  // namespace

FrustumTracer::FrustumTracer(const TargetLocator* locator, const ProjectorConfig& projector, double reach)
    : m_locator(locator), m_projector(projector), m_reach(reach) {}

std::optional<ChannelFrustum> FrustumTracer::trace() const {
    const auto rays = raysOf(m_locator, m_projector);
    if (!rays || !isFinite(rays->apex())) {
        return std::nullopt;
    }
    ChannelFrustum frustum;
    frustum.apex = rays->apex();
    const auto places = borderOfPicture();
    std::vector<std::optional<P3>> ends(places.size());
    const double longest = longestHit(*rays, places);
    const double reach = longest > 0 ? longest : m_reach;
    for (std::size_t i = 0; i < places.size(); ++i) {
        const Polyline way = rays->path(places[i], reach);
        if (way.size() < 2 || !std::all_of(way.begin(), way.end(), isFinite<3>)) {
            continue;
        }
        if (i % RIM_SAMPLES == 0) {
            frustum.edges.push_back(way);
        }
        frustum.rim.push_back(way.back());
        ends[i] = way.back();
    }
    frustum.lowerEdge = edgeFromOrigin(ends, true);
    frustum.leftEdge = edgeFromOrigin(ends, false);
    if (frustum.rim.empty()) {
        return std::nullopt;
    }
    if (rays->usesMirror()) {
        addMirror(*rays, reach, frustum);
    }
    return frustum;
}

}  // namespace Veltrani::DisplayReport
