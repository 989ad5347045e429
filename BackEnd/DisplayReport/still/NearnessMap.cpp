#include "DisplayReport/still/NearnessMap.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

using Place = Drawing::Place;

/// Twice the area of the triangle; above zero when it turns to the right on the paper.
double turn(const Place& a, const Place& b, const Place& c) {
    return (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]);
}

/// The pixels that a triangle can cover along one axis.
std::pair<int, int> span(const Drawing::Triangle& triangle, std::size_t axis, int end) {
    const auto& [a, b, c] = triangle.corners;
    const auto [low, high] = std::minmax({a[axis], b[axis], c[axis]});
    return {static_cast<int>(std::clamp(std::floor(low), 0.0, static_cast<double>(end))),
            static_cast<int>(std::clamp(std::ceil(high), 0.0, static_cast<double>(end)))};
}

}  // namespace

NearnessMap::NearnessMap(const Drawing& drawing)
    : m_width(std::max(0, drawing.width)),
      m_height(std::max(0, drawing.height)),
      m_nearness(static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_height), 0.0F) {
    for (const Drawing::Triangle& triangle : drawing.triangles) {
        if (triangle.opacity >= 1) {
            add(triangle);
        }
    }
}

void NearnessMap::add(const Drawing::Triangle& triangle) {
    const auto& [a, b, c] = triangle.corners;
    const double twiceArea = turn(a, b, c);
    if (!(std::abs(twiceArea) > 0)) {
        return;
    }
    const auto [left, right] = span(triangle, 0, m_width);
    const auto [top, bottom] = span(triangle, 1, m_height);
    for (int row = top; row < bottom; ++row) {
        for (int column = left; column < right; ++column) {
            const Place middle{column + 0.5, row + 0.5, 0.0};
            const double shareA = turn(b, c, middle) / twiceArea;
            const double shareB = turn(c, a, middle) / twiceArea;
            const double shareC = turn(a, b, middle) / twiceArea;
            if (shareA >= 0 && shareB >= 0 && shareC >= 0) {
                float& nearest = m_nearness[static_cast<std::size_t>(row) * static_cast<std::size_t>(m_width) +
                                            static_cast<std::size_t>(column)];
                nearest = std::max(nearest, static_cast<float>(shareA * a[2] + shareB * b[2] + shareC * c[2]));
            }
        }
    }
}

bool NearnessMap::shows(const Drawing::Place& place) const {
    const bool isInside = place[0] >= 0 && place[0] < m_width && place[1] >= 0 && place[1] < m_height;
    if (!isInside) {
        return true;
    }
    const double lifted = place[2] * (1 + Drawing::LIFT);
    const int column = static_cast<int>(place[0]);
    const int row = static_cast<int>(place[1]);
    for (int y = std::max(0, row - 1); y <= std::min(m_height - 1, row + 1); ++y) {
        for (int x = std::max(0, column - 1); x <= std::min(m_width - 1, column + 1); ++x) {
            const auto pixel =
                static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) + static_cast<std::size_t>(x);
            if (lifted >= static_cast<double>(m_nearness[pixel])) {
                return true;
            }
        }
    }
    return false;
}

}  // namespace Veltrani::DisplayReport
