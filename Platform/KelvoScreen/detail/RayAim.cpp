#include "KelvoScreen/detail/RayAim.h"

#include "KelvoScreen/detail/Components.h"

namespace KelvoScreenDetail {

void RayAim::rescale() {
    const double largest = largestComponent(direction);
    length2 = 0;
    if (!(largest > 0) || !isFinite(direction)) {
        return;
    }
    for (std::size_t i = 0; i < 3; ++i) {
        direction[i] /= largest;
    }
    length2 = dot(direction, direction);
    scale = 1 / largest;
}

}  // namespace KelvoScreenDetail
