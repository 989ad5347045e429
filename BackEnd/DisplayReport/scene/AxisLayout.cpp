#include "DisplayReport/scene/AxisLayout.h"

#include <algorithm>
#include <cmath>

namespace Veltrani::DisplayReport {

namespace {

/// How far a box reaches from its middle in a direction.
double reach(const AxisLayout::Box& box, const AxisLayout::Place& direction) {
    return (std::abs(direction[0]) * box[0] + std::abs(direction[1]) * box[1]) / 2;
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

}  // namespace Veltrani::DisplayReport
