#include "DisplayReport/maps/WarpGrid.h"

namespace Veltrani::DisplayReport {

double WarpGrid::fromMiddle(std::size_t node, std::size_t count) {
    return 2.0 * static_cast<double>(node) / static_cast<double>(count - 1) - 1.0;
}

double WarpGrid::aspectOf(const Point<int, 2>& pixels) {
    return static_cast<double>(pixels[0]) / pixels[1];
}

}  // namespace Veltrani::DisplayReport
