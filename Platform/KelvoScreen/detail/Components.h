#pragma once

#include "Common/Finite.h"
#include "Common/Point.h"

#include <algorithm>
#include <cmath>

namespace KelvoScreenDetail {

/// The largest absolute component: the size to which the rounding of the others is compared.
[[nodiscard]] inline double largestComponent(const Point<double, 3>& point) {
    return std::max({std::abs(point[0]), std::abs(point[1]), std::abs(point[2])});
}

}  // namespace KelvoScreenDetail
