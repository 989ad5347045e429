#include "DisplayBlend/detail/ValuePatch.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>

namespace {

using Veltrani::DisplayBlendDetail::ValuePatch;

TEST(ValuePatch, IsEveryQuadraticBothWaysExactly) {
    const auto value = [](double u, double v) { return (1 - 3 * u + 2 * u * u) * (0.5 + v - 4 * v * v) + 0.25 * u; };
    std::array<double, 9> values{};
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] = value(0.5 * static_cast<double>(i % 3), 0.5 * static_cast<double>(i / 3));
    }
    const ValuePatch patch(values);
    for (double u = 0; u <= 1; u += 0.0625) {
        for (double v = 0; v <= 1; v += 0.0625) {
            EXPECT_NEAR(patch.at(u, v), value(u, v), 1e-12) << u << ' ' << v;
        }
    }
}

}  // namespace
