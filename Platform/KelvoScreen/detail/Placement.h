#pragma once

#include "Common/Matrix.h"

namespace Veltrani::KelvoScreenDetail {

/// The place of the own frame of a shape in the world: its centre and its orientation.
class Placement {
public:
    /// The placement at the origin, unrotated.
    Placement() = default;
    /// @param angles about Z (sign reversed), X and Y, radians, as `Veltrani::rotationZXY` takes them
    Placement(const Point<double, 3>& centre, const Point<double, 3>& angles)
        : m_centre(centre),
          m_world_from_own(Veltrani::rotationZXY(angles[0], angles[1], angles[2])),
          m_own_from_world(transpose(m_world_from_own)),
          m_isTurned(m_world_from_own != Matrix<double, 3>{}) {}

    [[nodiscard]] const Point<double, 3>& centre() const { return m_centre; }

    /// A direction, or a position relative to the centre, in the own frame; and back.
    [[nodiscard]] Point<double, 3> toOwn(const Point<double, 3>& vector) const {
        return m_isTurned ? m_own_from_world * vector : vector;
    }
    [[nodiscard]] Point<double, 3> toWorld(const Point<double, 3>& vector) const {
        return m_isTurned ? m_world_from_own * vector : vector;
    }

private:
    Point<double, 3> m_centre;
    Matrix<double, 3> m_world_from_own;
    Matrix<double, 3> m_own_from_world;
    bool m_isTurned = false;  ///< most displays are not: worth a test for every ray
};

}  // namespace Veltrani::KelvoScreenDetail
