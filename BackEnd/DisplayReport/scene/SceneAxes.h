#pragma once

#include "Common/Point.h"
#include "DisplayReport/basics/Extent.h"

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace Veltrani::DisplayReport {

/// Where the numbers and the title of a scale stand beside its axis in a picture: numbers nearer, the title beyond the
/// widest of them, so that none covers another from wherever the scale is seen.
///
/// Places are pixels to the right and down; boxes are (width, height) and given by their middle.
class AxisLayout {
public:
    using Place = Point<double, 2>;
    using Box = Point<double, 2>;

    /// @param start, end of the axis
    /// @param beside a place on the side of the axis where its numbers stand
    /// @param gap free space along the axis, where ticks stand, and around the title
    AxisLayout(const Place& start, const Place& end, const Place& beside, double gap);

    /// False when the axis is seen so much end on that numbers would cover each other.
    [[nodiscard]] bool hasRoomFor(std::size_t numbers, const Box& widest) const;

    [[nodiscard]] Place number(const Place& foot, const Box& box) const;
    /// Beside the middle of the axis, clear of numbers up to the size of `widest`.
    [[nodiscard]] Place title(const Box& box, const Box& widest) const;
    /// Beyond the end of the axis.
    [[nodiscard]] Place titleAtEnd(const Box& box, const Box& widest) const;

private:
    Place m_start;
    Place m_end;
    double m_gap;
    double m_length;
    Place m_along;   ///< of length 1; zero for an axis without a length
    Place m_across;  ///< of length 1, towards the side of the numbers
};

/// Scales along three edges of a box, for reading places off a picture.
struct SceneAxes {
    struct Tick {
        double value = 0;  ///< coordinate along the axis, native units
        std::string text;
    };
    struct Axis {
        std::string title;  ///< "x right [m]"
        std::vector<Tick> ticks;
    };

    /// Three edges of a box: where those of x and y meet, and where each starts and ends.
    struct Edges {
        Point<double, 3> corner;
        std::array<Point<double, 3>, 3> starts;
        std::array<Point<double, 3>, 3> ends;
        std::array<Point<double, 3>, 3> outwards;  ///< from the box, of length 1
    };

    Extent box;
    std::array<Axis, 3> axes;  ///< x, y, z

    /// The edges that a box does not hide from a camera in that direction: x in front below, y on the nearer side
    /// below, z at the left end.
    [[nodiscard]] static Edges edgesFor(const Extent& box, const Point<double, 3>& towardsCamera);

    /// Ticks at round numbers, one to about six along the longest side and equally far apart along the others.
    [[nodiscard]] static SceneAxes of(const Extent& box, const std::string& unit);
};

}  // namespace Veltrani::DisplayReport
