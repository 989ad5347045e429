#pragma once

#include "DisplayLight/EyePlaces.h"
#include "DisplayLight/EyeView.h"
#include "DisplayLight/PlaceGrid.h"

#include <cstddef>

namespace Veltrani::DisplayLight {

/// A picture of an eye with the places of the screen that the middles of its pixels show.
/// Its rows begin at the bottom: width x height of the view.
struct EyeGrid : PlaceGrid {
    EyeView view;

    /// Where the middle of a pixel lies in the picture of the eye.
    [[nodiscard]] static Point<double, 2> middleOf(std::size_t column, std::size_t row) {
        constexpr double MIDDLE = 0.5;
        return {static_cast<double>(column) + MIDDLE, static_cast<double>(row) + MIDDLE};
    }

    [[nodiscard]] static EyeGrid of(const EyeView& view, const EyePlaces& eye);
};

}  // namespace Veltrani::DisplayLight
