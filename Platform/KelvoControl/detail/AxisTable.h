#pragma once

#include <cstddef>
#include <optional>
#include <vector>

namespace KelvoControlDetail {

/// Finds the interval of a growing or falling series of numbers that holds a number, in constant time where the numbers
/// are evenly spaced.
class AxisTable {
public:
    /// None unless there are at least two numbers, finite, each above the one before, or each below, and not so near to
    /// each other that no number tells how many of them fit into one unit.
    [[nodiscard]] static std::optional<AxisTable> of(const std::vector<double>& values);

    /// The interval between values `index` and `index + 1`, and the part of it that lies before `value`, 0 to 1; false
    /// outside of the series and for NaN. A value of the series belongs to the interval that begins there.
    [[nodiscard]] bool find(double value, std::size_t& index, double& part) const {
        const double key = value * m_sign;
        if (!(key >= m_values.front() && key <= m_values.back())) {
            return false;
        }
        index = m_guesses[static_cast<std::size_t>((key - m_values.front()) * m_guessesPerUnit)];
        if (!(key >= m_values[index] && key < m_values[index + 1])) {
            index = search(key);
        }
        part = partOf(value, index);
        return true;
    }

    /// The part of an interval that lies before `value`: 0 before the interval, 1 behind it.
    [[nodiscard]] double partOf(double value, std::size_t index) const {
        const double part = (value * m_sign - m_values[index]) * m_inverseWidths[index];
        return part > 0 ? (part < 1 ? part : 1) : 0;
    }

private:
    AxisTable() = default;
    [[nodiscard]] std::size_t search(double key) const;

    double m_sign = 1;  ///< -1 for a falling series: it is kept negated, growing
    std::vector<double> m_values;
    std::vector<double> m_inverseWidths;
    std::vector<std::size_t> m_guesses;  ///< the interval in the middle of each even part of the range
    double m_guessesPerUnit = 0;
};

}  // namespace KelvoControlDetail
