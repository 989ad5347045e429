#pragma once

#include "Common/Matrix.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigFile.h"
#include "DisplayExport/ContentInput.h"
#include "DisplayExport/RenderFrustum.h"
#include "DisplayReport/channels/ChannelChoice.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/ScreenManager.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

/// What belongs to a place of a display, by formulas of their own.
namespace belonging {

using namespace Veltrani::DisplayExport;
using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

constexpr double PI = std::numbers::pi;

inline double lengthOf(double x, double y, double z) {
    return std::sqrt(x * x + y * y + z * z);
}

/// How far the content that is shown is from the one that belongs to a direction, in pixels; by the formulas of each
/// input in the world's own axes, and for a frustum through the matrices of a file.
inline double errorOf(const ContentInput& input, const InputPlace& shown, const P3& point, const P3& direction) {
    const double width = input.pixels()[0];
    const double height = input.pixels()[1];
    const double x = direction[0];
    const double y = direction[1];
    const double z = direction[2];
    switch (input.kind()) {
        case InputKind::FRUSTUM: {
            const Matrix<double, 4> view = input.frustum()->viewMatrix({});
            const Matrix<double, 4> projection = input.frustum()->projectionMatrix({});
            const Point<double, 4> clip = projection * (view * Point<double, 4>{point[0], point[1], point[2], 1.0});
            return std::hypot(((clip[0] / clip[3] + 1) / 2 - shown.at[0]) * width,
                              ((clip[1] / clip[3] + 1) / 2 - shown.at[1]) * height);
        }
        case InputKind::FISHEYE: {
            // About +z or -z, with +y at the top; right is -x to a viewer who looks up, +x to one who looks down.
            const double side = (*input.choice().direction)[2] > 0 ? -1 : 1;
            const double aperture = input.choice().aperture;
            const double angle = std::acos(std::clamp(-side * z / lengthOf(x, y, z), -1.0, 1.0));
            if (angle <= PI / 2) {
                const double part = angle / aperture / std::max(std::hypot(x, y), 1e-300);
                return std::hypot((0.5 + side * part * x - shown.at[0]) * width,
                                  (0.5 + part * y - shown.at[1]) * height);
            }
            // Behind it, by the angle between what belongs there and what is shown.
            const P2 aside = shown.at - P2{0.5, 0.5};
            const double away = aperture * norm(aside);
            const double part = std::sin(away) / norm(aside);
            const P3 seen{side * part * aside[0], part * aside[1], -side * std::cos(away)};
            const P3 belongs = direction * (1 / lengthOf(x, y, z));
            return 2 * std::asin(norm(seen - belongs) / 2) / aperture * width;
        }
        case InputKind::EQUIRECTANGULAR: {
            const double elevation = std::asin(std::clamp(z / lengthOf(x, y, z), -1.0, 1.0));
            const double across = std::remainder(std::atan2(x, y) / (2 * PI) + 0.5 - shown.at[0], 1.0);
            return std::hypot(across * width * std::cos(elevation), (elevation / PI + 0.5 - shown.at[1]) * height);
        }
        case InputKind::CUBE: {
            // A place a little beyond the edge of the face that is shown is one of that face.
            const std::array<P3, 6> seen{P3{-y, x, z},  P3{y, -x, z}, P3{x, y, z},
                                         P3{-x, -y, z}, P3{x, z, -y}, P3{x, -z, y}};
            const P3& on = seen[shown.face];
            return std::hypot((on[0] / on[1] / 2 + 0.5 - shown.at[0]) * width,
                              (on[2] / on[1] / 2 + 0.5 - shown.at[1]) * height);
        }
        case InputKind::LAYOUT:
        case InputKind::SCREEN:
            break;
    }
    return 1e9;
}

inline InputChoice choiceOf(InputKind kind, double up = 1) {
    InputChoice choice;
    choice.kind = kind;
    if (kind == InputKind::FISHEYE) {
        choice.direction = P3{0.0, 0.0, up};
        choice.aperture = 2 * PI;
        choice.pixels = {4096, 4096};
    }
    return choice;
}

/// The same where the input is the layout plane: the place of the picture in the rectangle of its channel.
inline double errorOnLayout(const XMLConfigFile& config, const Veltrani::DisplayReport::ChannelChoice& channel,
                            const ContentInput& input, const P2& shown, const P2& picture) {
    P2 lower{1e9, 1e9};
    P2 upper{-1e9, -1e9};
    for (const std::wstring& id : config.getProjectorConfigIds()) {
        const ProjectorConfig& projector = *config.getProjectorConfig(id);
        lower = {std::min(lower[0], projector.getLayoutXMin()), std::min(lower[1], projector.getLayoutYMin())};
        upper = {std::max(upper[0], projector.getLayoutXMax()), std::max(upper[1], projector.getLayoutYMax())};
    }
    const ProjectorConfig& own = *channel.projector;
    const P2 place{own.getLayoutXMin() + picture[0] * (own.getLayoutXMax() - own.getLayoutXMin()),
                   own.getLayoutYMin() + picture[1] * (own.getLayoutYMax() - own.getLayoutYMin())};
    return std::hypot(((place[0] - lower[0]) / (upper[0] - lower[0]) - shown[0]) * input.pixels()[0],
                      ((place[1] - lower[1]) / (upper[1] - lower[1]) - shown[1]) * input.pixels()[1]);
}

/// The same where the input is the screen: how far from its light the content stands there, in steps of a pixel.
inline double errorOnScreen(const ContentInput& input, const P2& shown, const P3& point) {
    const auto surface = ScreenManager::getInstance()->getScreenGeometry();
    const auto stands = [&surface](const P2& at) {
        P3 there;
        return surface->mapInto3D(at, there, true) ? there : P3{1e9, 1e9, 1e9};
    };
    const P3 there = stands(shown);
    const double across = norm(stands(shown + P2{1.0 / input.pixels()[0], 0.0}) - there);
    const double upwards = norm(stands(shown + P2{0.0, 1.0 / input.pixels()[1]}) - there);
    // Where all of a side is one point, its pixels have no size.
    return norm(there - point) / std::max(across, upwards);
}

/// The mirror and the screen of the example "collimated", both spheres around one middle, traced here from the eye.
struct TracedMirror {
    static constexpr double MIRROR = 3;
    static constexpr double SCREEN = 1.6;
    P3 middle{0.0, 0.0, 1.9};
    P3 eye{0.0, -0.3, 1.4};

    /// The end of a ray at a sphere that lies nearest to a place.
    [[nodiscard]] P3 end(const P3& from, const P3& direction, double radius, const P3& near) const {
        const P3 start = from - middle;
        const P3 unit = direction * (1 / norm(direction));
        const double half = dot(start, unit);
        const double root = std::sqrt(half * half - dot(start, start) + radius * radius);
        const P3 first = from + (-half - root) * unit;
        const P3 second = from + (-half + root) * unit;
        return norm(first - near) < norm(second - near) ? first : second;
    }

    /// Where what the eye sees in a direction stands on the screen.
    [[nodiscard]] P3 seenIn(const P3& direction, const P3& near) const {
        const P3 onMirror = end(eye, direction, MIRROR, eye + 100.0 * direction);
        const P3 normal = (onMirror - middle) * (1 / MIRROR);
        return end(onMirror, direction - 2 * dot(direction, normal) * normal, SCREEN, near);
    }

    /// The one of a few directions in which the eye sees what is nearest to a place of the screen.
    [[nodiscard]] P3 roughDirectionOf(const P3& place) const {
        P3 nearest;
        double least = 1e9;
        for (int azimuth = -70; azimuth <= 70; azimuth += 10) {
            for (int elevation = -20; elevation <= 20; elevation += 10) {
                const double a = azimuth * PI / 180;
                const double e = elevation * PI / 180;
                const P3 direction{std::sin(a) * std::cos(e), std::cos(a) * std::cos(e), std::sin(e)};
                const double distance = norm(seenIn(direction, place) - place);
                nearest = distance < least ? direction : nearest;
                least = std::min(least, distance);
            }
        }
        return nearest;
    }

    /// The direction in which the eye sees a place of the screen, found step by step.
    [[nodiscard]] P3 directionOf(const P3& place) const {
        P3 direction = roughDirectionOf(place);
        constexpr int STEPS = 8;
        constexpr double ASIDE = 1e-6;
        for (int i = 0; i < STEPS; ++i) {
            direction = direction * (1 / norm(direction));
            const P3 right = cross(direction, P3{0.0, 0.0, 1.0}) * (1 / norm(cross(direction, P3{0.0, 0.0, 1.0})));
            const P3 up = cross(right, direction);
            const P3 there = seenIn(direction, place);
            const P3 across = (seenIn(direction + ASIDE * right, place) - there) * (1 / ASIDE);
            const P3 upwards = (seenIn(direction + ASIDE * up, place) - there) * (1 / ASIDE);
            // Both lie on the screen: least squares have no rest but its bend.
            const P3 rest = place - there;
            const double aa = dot(across, across);
            const double ab = dot(across, upwards);
            const double bb = dot(upwards, upwards);
            const double determinant = aa * bb - ab * ab;
            direction += ((dot(rest, across) * bb - dot(rest, upwards) * ab) / determinant) * right +
                         ((aa * dot(rest, upwards) - ab * dot(rest, across)) / determinant) * up;
        }
        return direction;
    }
};

}  // namespace belonging
