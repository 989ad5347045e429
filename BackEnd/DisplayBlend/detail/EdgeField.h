#pragma once

#include "Common/Point.h"

#include <array>
#include <cstddef>
#include <vector>

namespace Veltrani::DisplayBlendDetail {

/// How near a place is to those parts of the edge of one channel's light that lie inside another picture: the potential
///
///     p = (integral of ds / r^3 over these parts) / 2
///
/// in 1 / square native units. Next to a part, at the distance d, it is 1 / d^2; on it, infinite; of no parts, 0. Off
/// the parts it is smooth to every order, and the square 1 / p of a distance has no slope on them.
///
/// Parts of the sides of the picture are measured in the picture, which counts as a rectangle of its mean size on the
/// screen: there they are straight however the screen is bent. The edges of shadows are measured in space.
class EdgeField {
public:
    enum Side { LEFT, RIGHT, BOTTOM, TOP };

    EdgeField() = default;
    /// @param size mean width and height of the picture on the screen, native units, more than 0
    explicit EdgeField(const Point<double, 2>& size) : m_size(size) {}

    /// A part of a side of the picture, from the bottom up or from the left to the right, 0 to 1.
    void addSide(Side side, double from, double to);
    /// A straight piece of the edge of a shadow; world frame, native units.
    void addShadow(const Point<double, 3>& from, const Point<double, 3>& to);

    [[nodiscard]] bool hasShadows() const { return !m_shadows.empty(); }
    [[nodiscard]] bool empty() const { return m_sides.empty() && m_shadows.empty(); }
    [[nodiscard]] const Point<double, 2>& size() const { return m_size; }

    /// @param picture the picture point of the place, (0, 0) to (1, 1)
    /// @param place on the screen; only used where there are shadows
    [[nodiscard]] double potential(const Point<double, 2>& picture, const Point<double, 3>& place) const;

private:
    /// Along one axis of the rectangle, at a place of the other.
    struct Part {
        std::size_t along = 0;
        double from = 0, to = 0;
        double at = 0;
    };
    struct Piece {
        Point<double, 3> from;
        Point<double, 3> direction;  ///< of length 1
        double length = 0;
    };

    Point<double, 2> m_size{1.0, 1.0};
    std::vector<Part> m_sides;
    std::vector<Piece> m_shadows;
};

}  // namespace Veltrani::DisplayBlendDetail
