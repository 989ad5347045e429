#include "DisplayBlend/detail/EdgeField.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Veltrani::DisplayBlendDetail {

namespace {

/// (1 - t / r) / h^2 with r^2 = t^2 + h^2, for t >= 0: without the difference of what is nearly equal.
double beyond(double t, double r) {
    return 1 / (r * (r + t));
}

/// Half the integral of ds / r^3 over a straight line from `from` to `to`, as seen from the distance `squared`^(1/2)
/// beside its place 0.
double ofLine(double from, double to, double squared) {
    const double rFrom = std::sqrt(from * from + squared);
    const double rTo = std::sqrt(to * to + squared);
    if (from > 0.0) {
        return (beyond(from, rFrom) - beyond(to, rTo)) / 2;
    }
    if (to < 0.0) {
        return (beyond(-to, rTo) - beyond(-from, rFrom)) / 2;
    }
    const double sum = to * rFrom - from * rTo;
    return sum > 0.0 ? sum / (2 * squared * rFrom * rTo) : std::numeric_limits<double>::infinity();
}

}  // namespace

void EdgeField::addSide(Side side, double from, double to) {
    if (!(to > from)) {
        return;
    }
    const std::size_t along = side == LEFT || side == RIGHT ? 1 : 0;
    const double at = side == LEFT || side == BOTTOM ? 0.0 : m_size[1 - along];
    m_sides.push_back({along, from * m_size[along], to * m_size[along], at});
}

void EdgeField::addShadow(const Point<double, 3>& from, const Point<double, 3>& to) {
    const double length = norm(to - from);
    if (length > 0.0) {
        m_shadows.push_back({from, (to - from) * (1 / length), length});
    }
}

double EdgeField::potential(const Point<double, 2>& picture, const Point<double, 3>& place) const {
    const std::array<double, 2> scaled{picture[0] * m_size[0], picture[1] * m_size[1]};
    double sum = 0;
    for (const Part& part : m_sides) {
        const double away = scaled[1 - part.along] - part.at;
        sum += ofLine(part.from - scaled[part.along], part.to - scaled[part.along], away * away);
    }
    for (const Piece& piece : m_shadows) {
        const Point<double, 3> way = place - piece.from;
        const double along = dot(way, piece.direction);
        sum += ofLine(-along, piece.length - along, std::max(dot(way, way) - along * along, 0.0));
    }
    return sum;
}

}  // namespace Veltrani::DisplayBlendDetail
