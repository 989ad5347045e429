#pragma once

#include "Common/Matrix.h"
#include "Common/Point.h"

class TargetLocatorConfig;

/// The place of a collimating mirror: points beside the mirror, which lies around the origin of its own frame, are
/// moved by its position first and turned by its orientation then. The eye of a display with a mirror is such a point.
class MirrorFrame {
public:
    /// @param orientation the three angles (z, x, y) of `Veltrani::rotationZXY`, radians
    /// @param position native units, in the frame that is not turned yet
    MirrorFrame(const Point<double, 3>& orientation, const Point<double, 3>& position);
    explicit MirrorFrame(const TargetLocatorConfig& config);

    /// Returns a point beside the mirror in the world frame, native units.
    [[nodiscard]] Point<double, 3> toWorld(const Point<double, 3>& besideMirror) const {
        return m_world_from_mirror * (besideMirror + m_position);
    }
    /// Returns the middle of the mirror; world frame.
    [[nodiscard]] Point<double, 3> centre() const { return m_world_from_mirror * m_position; }
    /// Turns directions into world axes.
    [[nodiscard]] const Matrix<double, 3>& rotation() const { return m_world_from_mirror; }

private:
    Matrix<double, 3> m_world_from_mirror;
    Point<double, 3> m_position;
};
