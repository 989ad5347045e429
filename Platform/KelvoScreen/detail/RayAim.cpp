#include "KelvoScreen/detail/RayAim.h"

#include "KelvoScreen/detail/Rounding.h"

namespace Veltrani::KelvoScreenDetail {

RayAim RayAim::rescaled(Point<double, 3> direction) {
    RayAim aim(direction);
    const double largest = largestComponent(direction);
    if (!(largest > 0) || !isFinite(direction)) {
        return aim;
    }
    for (std::size_t i = 0; i < 3; ++i) {
        aim.direction[i] /= largest;
    }
    aim.length2 = dot(aim.direction, aim.direction);
    aim.scale = 1 / largest;
    return aim;
}

}  // namespace Veltrani::KelvoScreenDetail
