#include "DisplayReport/basics/Extent.h"

#include <algorithm>
#include <cmath>

namespace Veltrani::DisplayReport {

void Extent::add(const Point<double, 3>& point) {
    if (!std::isfinite(point[0]) || !std::isfinite(point[1]) || !std::isfinite(point[2])) {
        return;
    }
    if (m_empty) {
        m_minimum = point;
        m_maximum = point;
        m_empty = false;
        return;
    }
    for (std::size_t axis = 0; axis < 3; ++axis) {
        m_minimum[axis] = std::min(m_minimum[axis], point[axis]);
        m_maximum[axis] = std::max(m_maximum[axis], point[axis]);
    }
}

}  // namespace Veltrani::DisplayReport
