#pragma once

#include "DisplayExport/WarpGrid.h"

#include <array>
#include <vector>

namespace Veltrani::DisplayExport {

/// A cell between four nodes: bottom left, bottom right, top right, top left.
struct WarpCell {
    enum class Kind {
        UNUSABLE,    ///< a corner has no content
        WHOLE,       ///< content is interpolated between its corners as they are
        OVER_SEAM,   ///< the same, once the contents of its corners are moved beside each other by whole widths
        OVER_FACES,  ///< its corners lie on several faces of a cube
        OVER_POLE,   ///< it holds a direction around which the input turns
    };

    std::array<Point<double, 2>, 4> picture;
    std::array<WarpNode, 4> nodes;
    std::array<Point<double, 3>, 4> directions;  ///< zero where none are kept

    [[nodiscard]] static WarpCell of(const WarpGrid& grid, std::size_t cell);

    /// The place of the picture at a part of the width and height of the cell.
    [[nodiscard]] Point<double, 2> at(const Point<double, 2>& part) const {
        return {picture[0][0] + part[0] * (picture[2][0] - picture[0][0]),
                picture[0][1] + part[1] * (picture[2][1] - picture[0][1])};
    }

    /// @param poles of the input
    [[nodiscard]] Kind kind(const std::vector<Point<double, 3>>& poles, bool wrapsAround) const;

    /// The contents of the corners, those of an input that wraps around moved beside that of the first.
    [[nodiscard]] std::array<Point<double, 2>, 4> contents(bool wrapsAround) const;

    /// Whether a direction lies between those of its corners.
    [[nodiscard]] bool holds(const Point<double, 3>& direction) const;
};

}  // namespace Veltrani::DisplayExport
