#pragma once

#include "Common/Point.h"

#include <iosfwd>
#include <string>

class ProjectorConfig;

/// The place of a channel's picture in space: on a plane one unit in front of the projector.
///
/// In the projector's own frame (+x right, +y forward, +z up) the normalised picture point (u, v) lies at
/// (ox + sx u, 1, oy + sy v): u = 0 is the left edge, v = 0 the bottom. With frustum angles that is
/// ox = tan(left), sx = tan(right) - tan(left), oy = tan(bottom), sy = tan(top) - tan(bottom).
struct Viewport {
    double ox = 0;                 ///< left edge
    double oy = 0;                 ///< bottom edge
    double sx = 1;                 ///< width; below zero for a picture that is mirrored
    double sy = 1;                 ///< height; below zero for a picture that hangs upside down
    Point<double, 3> position;     ///< of the projector, in the world frame, native units
    Point<double, 3> orientation;  ///< angles Z, X, Y for `Veltrani::rotationZXY`, radians
    int width = 1;                 ///< of the picture, pixels
    int height = 1;                ///< of the picture, pixels

    /// Returns the extents of a frustum, the rest as by default. Angles in radians, right and top positive, each below
    /// a right angle in size.
    [[nodiscard]] static Viewport fromFrustumAngles(double left, double right, double bottom, double top);

    /// Frustum, orientation and position of a configured projector. The size stays 1 x 1: a caller that works in pixels
    /// sets it.
    /// @param modelName the projection model that the viewport is for; empty for none. A model known by its name alone
    ///     has the picture of the frustum, whose edges must then lie ahead: throws `VeltraniException` naming one that
    ///     does not.
    [[nodiscard]] static Viewport of(const ProjectorConfig& projector, const std::wstring& modelName);
};

/// "extents (ox, sx, oy, sy), position (x, y, z), orientation (z, x, y), 1920 x 1200 pixels", with all digits.
std::ostream& operator<<(std::ostream& out, const Viewport& viewport);
