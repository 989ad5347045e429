#pragma once

#include <array>
#include <cstddef>

namespace Veltrani::DisplayBlendDetail {

/// A smooth function over a rectangle, by its values at three by three places: quadratic both ways. (0, 0) and (1, 1)
/// are two corners of the rectangle.
class ValuePatch {
public:
    static constexpr std::size_t SIDE = 3;

    /// By row from (0, 0): at 0, 1/2 and 1 each way.
    explicit ValuePatch(const std::array<double, SIDE * SIDE>& values) : m_values(values) {}

    [[nodiscard]] double at(double u, double v) const {
        const std::array<double, SIDE> across = partsAt(u);
        const std::array<double, SIDE> upwards = partsAt(v);
        double sum = 0;
        for (std::size_t row = 0; row < SIDE; ++row) {
            const double* const values = m_values.data() + row * SIDE;
            sum += upwards[row] * (across[0] * values[0] + across[1] * values[1] + across[2] * values[2]);
        }
        return sum;
    }

private:
    /// How much each of the three places counts: one at itself, nothing at the others.
    static std::array<double, SIDE> partsAt(double t) {
        return {(1 - t) * (1 - 2 * t), 4 * t * (1 - t), t * (2 * t - 1)};
    }

    std::array<double, SIDE * SIDE> m_values;
};

}  // namespace Veltrani::DisplayBlendDetail
