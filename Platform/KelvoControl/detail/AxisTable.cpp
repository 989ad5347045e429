#include "KelvoControl/detail/AxisTable.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace KelvoControlDetail {

namespace {

bool isGrowing(const std::vector<double>& values) {
    for (std::size_t i = 0; i + 1 < values.size(); ++i) {
        if (!(values[i] < values[i + 1])) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::optional<AxisTable> AxisTable::of(const std::vector<double>& values) {
    if (values.size() < 2) {
        return std::nullopt;
    }
    AxisTable table;
    table.m_values = values;
    if (values.back() < values.front()) {
        table.m_sign = -1;
        std::transform(values.begin(), values.end(), table.m_values.begin(), [](double value) { return -value; });
    }
    if (!isGrowing(table.m_values)) {
        return std::nullopt;
    }
    const std::size_t intervals = values.size() - 1;
    const double first = table.m_values.front();
    const double range = table.m_values.back() - first;
    table.m_guessesPerUnit = static_cast<double>(intervals) / range;
    for (std::size_t i = 0; i < intervals; ++i) {
        table.m_inverseWidths.push_back(1 / (table.m_values[i + 1] - table.m_values[i]));
        const double middle = first + range * ((static_cast<double>(i) + 0.5) / static_cast<double>(intervals));
        table.m_guesses.push_back(table.search(middle));
    }
    // One more: rounding may put the last value just behind the last part.
    table.m_guesses.push_back(intervals - 1);
    const auto isUsable = [](double number) { return std::isfinite(number) && number > 0; };
    const bool usable = isUsable(range) && isUsable(table.m_guessesPerUnit) &&
                        std::all_of(table.m_inverseWidths.begin(), table.m_inverseWidths.end(), isUsable);
    return usable ? std::optional(std::move(table)) : std::nullopt;
}

std::size_t AxisTable::search(double key) const {
    const auto after = std::upper_bound(m_values.begin() + 1, m_values.end() - 1, key);
    return static_cast<std::size_t>(after - m_values.begin()) - 1;
}

}  // namespace KelvoControlDetail
