#include "KelvoScreen/detail/Box.h"

#include "KelvoScreen/detail/Rounding.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Veltrani::KelvoScreenDetail {

Point<double, 3> Box::centre() const {
    return 0.5 * lower + 0.5 * upper;
}

double Box::largestCoordinate() const {
    return std::max(largestComponent(lower), largestComponent(upper));
}

bool Box::clip(const Point<double, 3>& from, const Point<double, 3>& direction, double margin, double& first,
               double& second) const {
    first = 0;
    second = INFINITE;
    for (std::size_t i = 0; i < 3; ++i) {
        const double low = lower[i] - margin - from[i];
        const double high = upper[i] + margin - from[i];
        if (!std::isfinite(direction[i])) {
            return false;
        }
        if (direction[i] == 0) {
            if (!(low <= 0 && high >= 0)) {
                return false;
            }
            continue;
        }
        const double inverse = 1 / direction[i];
        first = std::max(first, std::min(low * inverse, high * inverse));
        second = std::min(second, std::max(low * inverse, high * inverse));
        // Written so that a NaN, wherever it comes from, ends here.
        if (!(low * inverse <= INFINITE && high * inverse <= INFINITE && first <= second)) {
            return false;
        }
    }
    return second < INFINITE;
}

}  // namespace Veltrani::KelvoScreenDetail
