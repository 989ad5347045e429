#pragma once

#include "Common/Point.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace Veltrani::DisplayReport {

/// A rectangle of a picture, in normalised coordinates; the whole picture unless another one is stated.
struct PictureBox {
    Point<double, 2> minimum{0.0, 0.0};
    Point<double, 2> maximum{1.0, 1.0};

    /// One without any point: the first one makes it a rectangle.
    [[nodiscard]] static PictureBox none() { return {{1.0, 1.0}, {0.0, 0.0}}; }

    template <class Points>
    [[nodiscard]] static PictureBox around(const Points& points) {
        PictureBox box = none();
        for (const Point<double, 2>& point : points) {
            box.add(point);
        }
        return box;
    }

    [[nodiscard]] bool empty() const { return minimum[0] > maximum[0] || minimum[1] > maximum[1]; }

    /// Points outside of the picture count as on its edge.
    void add(const Point<double, 2>& point) {
        for (std::size_t axis = 0; axis < 2; ++axis) {
            const double within = std::clamp(point[axis], 0.0, 1.0);
            minimum[axis] = std::min(minimum[axis], within);
            maximum[axis] = std::max(maximum[axis], within);
        }
    }
};

/// Where in a picture pixels are likely to be the smallest and the largest, by the pieces of the surface that its light
/// was cut into: places that a lattice over the picture may pass by.
class PitchHints {
public:
    struct Hint {
        double ratio = 0;  ///< area on the screen, in square native units, by part of the picture
        PictureBox piece;  ///< around it
    };

    PitchHints();

    /// @param corners of a piece in the picture
    /// @param part of the picture that it is
    /// @param area on the screen
    void add(const std::array<Point<double, 2>, 3>& corners, double part, double area);

    /// At most so many from different parts of the picture, the most extreme one first.
    [[nodiscard]] std::vector<Hint> least(std::size_t most) const;
    [[nodiscard]] std::vector<Hint> greatest(std::size_t most) const;

private:
    std::vector<Hint> m_least;  ///< by cell of the picture; with an empty box where there is none
    std::vector<Hint> m_greatest;
};

}  // namespace Veltrani::DisplayReport
