#pragma once

#include "Common/Point.h"

#include <cstddef>

namespace Veltrani::DisplayReport {

/// What one place of a picture shows.
struct WarpSample {
    Point<double, 2> input;  ///< place in the picture that feeds it, (0, 0) bottom left; (0, 0) where there is none
    bool isMapped = false;
    double brightness = 1;  ///< of a node, code value 0 to 1
};

/// What the files of warps are written from: which part of its input each place of a channel's picture shows, as a grid
/// over the whole picture.
///
/// A grid of nodes reaches from edge to edge of the picture, as the corners of its pixels do; a grid of pixels has one
/// place in the middle of each.
class WarpGrid {
public:
    WarpGrid() = default;
    WarpGrid(const WarpGrid&) = default;
    WarpGrid& operator=(const WarpGrid&) = default;
    WarpGrid(WarpGrid&&) noexcept = default;
    WarpGrid& operator=(WarpGrid&&) noexcept = default;
    virtual ~WarpGrid() = default;

    /// Width and height of the channel's picture.
    [[nodiscard]] virtual Point<int, 2> pixels() const = 0;
    [[nodiscard]] virtual std::size_t columns() const = 0;
    [[nodiscard]] virtual std::size_t rows() const = 0;
    /// @param row 0 is the bottom one
    [[nodiscard]] virtual WarpSample at(std::size_t column, std::size_t row) const = 0;

    /// Where a node stands between the edges of a picture, -1 to 1, exactly so at both ends.
    /// @param count of nodes in a row or a column, two or more
    [[nodiscard]] static double fromMiddle(std::size_t node, std::size_t count);
    /// Width / height of a picture of so many pixels.
    [[nodiscard]] static double aspectOf(const Point<int, 2>& pixels);
};

}  // namespace Veltrani::DisplayReport
