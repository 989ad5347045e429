#pragma once

#include "Common/Point.h"

#include <cstddef>
#include <vector>

namespace Veltrani::DisplayReport {

class ChannelLight;

/// Where a channel's picture lies on the screen: the places that a lattice over it lands on. World frame, native units.
///
/// It leads from a place on the screen back to the pixel that lights it, and shows how large pixels are there.
struct PictureLattice {
    std::size_t columns = 0;  ///< nodes along the width of the picture, from its left edge to its right one
    std::size_t rows = 0;     ///< from its lower edge to its upper one; both 0, or 2 and more
    std::vector<Point<double, 3>> places;  ///< row by row, columns x rows; the origin where nothing lands
    std::vector<bool> lands;               ///< as long as `places`

    [[nodiscard]] bool empty() const { return places.empty(); }

    /// @param columns at least 2
    /// @param rows at least 2
    [[nodiscard]] static PictureLattice of(const ChannelLight& light, std::size_t columns, std::size_t rows);
};

/// An arrow on the screen towards the upper edge of a channel's picture: its shaft, then its head, each a line of two
/// points and more. In the middle of the picture where that lands, else where there is room for it; empty where there
/// is none.
/// @param aspect width of the picture by its height
[[nodiscard]] std::vector<std::vector<Point<double, 3>>> upMarkOf(const ChannelLight& light, double aspect);

}  // namespace Veltrani::DisplayReport
