#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace Veltrani::DisplayFitDetail {

/// Returns the median of at least one number; of an even count the larger of the two in the middle.
[[nodiscard]] inline double medianOf(std::vector<double> numbers) {
    const auto middle = numbers.begin() + static_cast<std::ptrdiff_t>(numbers.size() / 2);
    std::nth_element(numbers.begin(), middle, numbers.end());
    return *middle;
}

}  // namespace Veltrani::DisplayFitDetail
