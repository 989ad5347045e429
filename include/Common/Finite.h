#pragma once

#include "Common/Point.h"

#include <cmath>
#include <cstddef>

/// Returns true when no component is infinite or NaN.
template <std::size_t N>
[[nodiscard]] bool isFinite(const Point<double, N>& point) {
    for (std::size_t i = 0; i < N; ++i) {
        if (!std::isfinite(point[i])) {
            return false;
        }
    }
    return true;
}
