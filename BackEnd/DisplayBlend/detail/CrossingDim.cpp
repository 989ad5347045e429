#include "DisplayBlend/detail/CrossingDim.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <utility>

namespace Veltrani::DisplayBlendDetail {

namespace {

/// Pixels from a crossing. What is dimmed is a mean that is read between pixels: in a smaller circle too few of them
/// lie, and a larger one dims what is right.
constexpr double REACH = 1.5;
constexpr double DEEPEST = 1.0 / 3;

double factorAt(double pixels) {
    const double rest = 1 - pixels * pixels / (REACH * REACH);
    return rest > 0 ? 1 - DEEPEST * rest * rest : 1;
}

}  // namespace

void dimCrossings(DisplayBlend::BlendPicture& weights, std::span<const P2> crossings) {
    // Where several are near, the nearest one counts.
    std::map<std::size_t, double> factors;
    const auto range = [](double middle, std::size_t count) {
        const auto clamped = [count](double place) {
            return static_cast<std::size_t>(std::clamp(place, 0.0, static_cast<double>(count)));
        };
        return std::pair(clamped(std::floor(middle - REACH)), clamped(std::ceil(middle + REACH)));
    };
    for (const P2& crossing : crossings) {
        const P2 middle{crossing[0] * static_cast<double>(weights.width),
                        crossing[1] * static_cast<double>(weights.height)};
        const auto [left, right] = range(middle[0], weights.width);
        const auto [bottom, top] = range(middle[1], weights.height);
        for (std::size_t row = bottom; row < top; ++row) {
            for (std::size_t column = left; column < right; ++column) {
                const P2 pixel{static_cast<double>(column) + 0.5, static_cast<double>(row) + 0.5};
                double& factor = factors.try_emplace(row * weights.width + column, 1).first->second;
                factor = std::min(factor, factorAt(norm(pixel - middle)));
            }
        }
    }
    for (const auto& [pixel, factor] : factors) {
        weights.light[pixel] = static_cast<float>(factor * weights.light[pixel]);
    }
}

}  // namespace Veltrani::DisplayBlendDetail
