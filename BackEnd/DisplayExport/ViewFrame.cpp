#include "DisplayExport/ViewFrame.h"

#include "Common/Finite.h"
#include "Common/VeltraniException.h"

#include <cmath>

namespace Veltrani::DisplayExport {

ViewFrame ViewFrame::looking(const Point<double, 3>& eye, const Point<double, 3>& forward, double roll) {
    const double length = norm(forward);
    if (!(length > 0) || !std::isfinite(length) || !isFinite(eye) || !std::isfinite(roll)) {
        throw VeltraniException(
            L"A direction of view needs a length, and eye and roll must be finite: state three "
            L"numbers that are not all zero");
    }
    constexpr Point<double, 3> ABOVE{0.0, 0.0, 1.0};
    constexpr Point<double, 3> AHEAD{0.0, 1.0, 0.0};
    ViewFrame frame;
    frame.eye = eye;
    frame.forward = forward * (1 / length);
    const bool isSteep = norm(cross(frame.forward, ABOVE)) < STEEP;
    const Point<double, 3> aside = cross(frame.forward, isSteep ? AHEAD : ABOVE);
    const Point<double, 3> right = aside * (1 / norm(aside));
    const Point<double, 3> up = cross(right, frame.forward);
    frame.right = std::cos(roll) * right - std::sin(roll) * up;
    frame.up = std::sin(roll) * right + std::cos(roll) * up;
    return frame;
}

Point<double, 3> ViewFrame::angles() const {
    const double z = std::atan2(forward[0], forward[1]);
    const double x = std::atan2(forward[2], std::hypot(forward[0], forward[1]));
    const Point<double, 3> level{std::cos(z), -std::sin(z), 0.0};
    const double y = std::atan2(-dot(right, cross(level, forward)), dot(right, level));
    return {z, x, y};
}

}  // namespace Veltrani::DisplayExport
