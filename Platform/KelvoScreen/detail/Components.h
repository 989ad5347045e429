#pragma once

#include "Common/Point.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace KelvoScreenDetail {

/// True when all components are finite.
template <std::size_t N>
[[nodiscard]] bool isFinite(const Point<double, N>& point) {
    for (std::size_t i = 0; i < N; ++i) {
        if (!std::isfinite(point[i])) {
            return false;
        }
    }
    return true;
}

/// The largest absolute component: the size to which the rounding of the others is compared.
[[nodiscard]] inline double largestComponent(const Point<double, 3>& point) {
    return std::max({std::abs(point[0]), std::abs(point[1]), std::abs(point[2])});
}

}  // namespace KelvoScreenDetail
