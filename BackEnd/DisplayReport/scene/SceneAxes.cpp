#include "DisplayReport/scene/SceneAxes.h"

#include "DisplayReport/basics/NumberText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace Veltrani::DisplayReport {

namespace {

/// How far a box reaches from its middle in a direction.
double reach(const AxisLayout::Box& box, const AxisLayout::Place& direction) {
    return (std::abs(direction[0]) * box[0] + std::abs(direction[1]) * box[1]) / 2;
}

constexpr double MOST_STEPS = 6;
/// A part of a step: a tick that rounding pushes past the end of the box counts as on it.
constexpr double ROUNDING = 1e-6;

/// 1, 2 or 5 times a power of ten, so that no more than `MOST_STEPS` fit.
double stepOf(double length) {
    const double least = length / MOST_STEPS;
    const double power = std::pow(10.0, std::floor(std::log10(least)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * power >= least) {
            return factor * power;
        }
    }
    return 10.0 * power;
}

/// With as many decimals as the step has, so that 0.30000000000000004 does not appear.
std::string textOf(double value, double step) {
    constexpr double MOST_DECIMALS = 12;
    constexpr double LARGEST = 1e15;  // beyond, every digit is written by the exponent
    const double decimals = std::max(0.0, -std::floor(std::log10(step)));
    if (decimals > MOST_DECIMALS || std::abs(value) > LARGEST) {
        return exactText(value);
    }
    std::array<char, 32> text{};
    const auto written = std::to_chars(text.data(), text.data() + text.size(), value + 0.0, std::chars_format::fixed,
                                       static_cast<int>(decimals));
    return {text.data(), written.ptr};
}

}  // namespace

AxisLayout::AxisLayout(const Place& start, const Place& end, const Place& beside, double gap)
    : m_start(start), m_end(end), m_gap(gap), m_length(norm(end - start)) {
    if (m_length > 0) {
        m_along = (end - start) * (1 / m_length);
    }
    m_across = {-m_along[1], m_along[0]};
    if (dot(beside - start, m_across) < 0) {
        m_across = -m_across;
    }
}

bool AxisLayout::hasRoomFor(std::size_t numbers, const Box& widest) const {
    // Two boxes are apart when they are so along one of their sides.
    const double steps = static_cast<double>(std::max<std::size_t>(numbers, 1));
    const double across = m_length * std::abs(m_along[0]);
    const double down = m_length * std::abs(m_along[1]);
    return m_length > m_gap && (across >= steps * widest[0] || down >= steps * widest[1]);
}

AxisLayout::Place AxisLayout::number(const Place& foot, const Box& box) const {
    return foot + m_across * (m_gap + reach(box, m_across));
}

AxisLayout::Place AxisLayout::title(const Box& box, const Box& widest) const {
    const Place middle = (m_start + m_end) * 0.5;
    return middle + m_across * (2 * m_gap + 2 * reach(widest, m_across) + reach(box, m_across));
}

AxisLayout::Place AxisLayout::titleAtEnd(const Box& box, const Box& widest) const {
    return m_end + m_along * (m_gap + reach(widest, m_along) + reach(box, m_along));
}

SceneAxes::Edges SceneAxes::edgesFor(const Extent& box, const Point<double, 3>& towardsCamera) {
    using P3 = Point<double, 3>;
    const P3& low = box.minimum();
    const P3& high = box.maximum();
    const bool isFromRight = towardsCamera[0] > 0;
    const bool isFromFront = towardsCamera[1] > 0;
    const double nearX = isFromRight ? high[0] : low[0];
    const double nearY = isFromFront ? high[1] : low[1];
    const P3 aside{isFromRight ? 1.0 : -1.0, 0.0, 0.0};
    const P3 before{0.0, isFromFront ? 1.0 : -1.0, 0.0};
    // To the right of the picture, as seen from above. Of two corners equally far left the nearer one is the outer one.
    const double rightX = -towardsCamera[1];
    const double rightY = towardsCamera[0];
    const double leftX = rightX == 0 ? nearX : rightX > 0 ? low[0] : high[0];
    const double leftY = rightY == 0 ? nearY : rightY > 0 ? low[1] : high[1];
    const P3 leftwards = std::abs(rightX) >= std::abs(rightY) ? P3{rightX > 0 ? -1.0 : 1.0, 0.0, 0.0}
                                                              : P3{0.0, rightY > 0 ? -1.0 : 1.0, 0.0};
    Edges edges;
    edges.corner = {nearX, nearY, low[2]};
    edges.starts = {P3{low[0], nearY, low[2]}, P3{nearX, low[1], low[2]}, P3{leftX, leftY, low[2]}};
    edges.ends = {P3{high[0], nearY, low[2]}, P3{nearX, high[1], low[2]}, P3{leftX, leftY, high[2]}};
    edges.outwards = {before, aside, leftwards};
    return edges;
}

SceneAxes SceneAxes::of(const Extent& box, const std::string& unit) {
    SceneAxes scales;
    scales.box = box;
    const std::string suffix = unit.empty() ? "" : " [" + unit + "]";
    const Point<double, 3> size = box.size();
    const double longest = std::max({size[0], size[1], size[2]});
    const std::array<const char*, 3> names{"x right", "y forward", "z up"};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        scales.axes[axis].title = names[axis] + suffix;
        if (!(longest > 0) || !std::isfinite(longest)) {
            continue;
        }
        const double step = stepOf(longest);
        const double first = std::ceil(box.minimum()[axis] / step - ROUNDING);
        const auto count = static_cast<int>(std::floor(box.maximum()[axis] / step + ROUNDING) - first) + 1;
        for (int i = 0; i < count; ++i) {
            const double value = (first + i) * step;
            scales.axes[axis].ticks.push_back({value, textOf(value, step)});
        }
    }
    return scales;
}

}  // namespace Veltrani::DisplayReport
