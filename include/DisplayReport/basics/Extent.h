#pragma once

#include "Common/Point.h"

namespace Veltrani::DisplayReport {

/// The axis-parallel box around points. Empty until the first one; points with a component that is not finite are left
/// out.
class Extent {
public:
    void add(const Point<double, 3>& point);

    [[nodiscard]] bool empty() const { return m_empty; }
    /// Corners and their difference; zero while empty.
    [[nodiscard]] const Point<double, 3>& minimum() const { return m_minimum; }
    [[nodiscard]] const Point<double, 3>& maximum() const { return m_maximum; }
    [[nodiscard]] Point<double, 3> size() const { return m_maximum - m_minimum; }

private:
    Point<double, 3> m_minimum;
    Point<double, 3> m_maximum;
    bool m_empty = true;
};

}  // namespace Veltrani::DisplayReport
