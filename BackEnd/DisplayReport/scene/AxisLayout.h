#pragma once

#include "Common/Point.h"

#include <cstddef>

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

}  // namespace Veltrani::DisplayReport
