#include "DisplayLight/EyeGrid.h"

#include <span>

namespace Veltrani::DisplayLight {

EyeGrid EyeGrid::of(const EyeView& view, const EyePlaces& eye) {
    EyeGrid grid;
    grid.view = view;
    grid.width = view.width();
    grid.places.resize(view.width() * view.height());
    std::vector<Point<double, 3>> directions(view.width());
    for (std::size_t row = 0; row < view.height(); ++row) {
        for (std::size_t column = 0; column < view.width(); ++column) {
            directions[column] = view.directionOf(middleOf(column, row)).value_or(Point<double, 3>());
        }
        eye.see(directions, std::span(grid.places).subspan(row * view.width(), view.width()));
    }
    return grid;
}

}  // namespace Veltrani::DisplayLight
