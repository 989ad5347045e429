#pragma once

#include "Common/Matrix.h"
#include "KelvoScreen/detail/Numbers.h"

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
    /// The same for one direction or position, or for four.
    template <class Number>
    [[nodiscard, gnu::always_inline]] Triple<Number> toOwn(const Triple<Number>& vector) const {
        return m_isTurned ? turned(m_own_from_world, vector) : vector;
    }
    template <class Number>
    [[nodiscard, gnu::always_inline]] Triple<Number> toWorld(const Triple<Number>& vector) const {
        return m_isTurned ? turned(m_world_from_own, vector) : vector;
    }

private:
    template <class Number>
    [[nodiscard, gnu::always_inline]] static Triple<Number> turned(const Matrix<double, 3>& m,
                                                                   const Triple<Number>& vector) {
        return {0.0 + m(0, 0) * vector.x + m(0, 1) * vector.y + m(0, 2) * vector.z,
                0.0 + m(1, 0) * vector.x + m(1, 1) * vector.y + m(1, 2) * vector.z,
                0.0 + m(2, 0) * vector.x + m(2, 1) * vector.y + m(2, 2) * vector.z};
    }

    Point<double, 3> m_centre;
    Matrix<double, 3> m_world_from_own;
    Matrix<double, 3> m_own_from_world;
    bool m_isTurned = false;  ///< most displays are not: worth a test for every ray
};

}  // namespace Veltrani::KelvoScreenDetail
