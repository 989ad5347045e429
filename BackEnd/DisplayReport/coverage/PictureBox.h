#pragma once

#include "Common/Point.h"

#include <algorithm>

namespace Veltrani::DisplayReport {

/// A rectangle of a picture, in normalised coordinates; the whole picture when nothing else is said.
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

}  // namespace Veltrani::DisplayReport
