#include "KelvoScreen/detail/QuadricSheet.h"

#include <cmath>

namespace KelvoScreenDetail {

double QuadricSheet::height(const Point<double, 3>& point) const {
    const Point<double, 3> x = point - origin;
    return offset + dot(x, slope + multiply(bend, x));
}

Point<double, 3> QuadricSheet::gradient(const Point<double, 3>& point) const {
    return slope + 2.0 * multiply(bend, point - origin);
}

AlongRay QuadricSheet::alongRay(const Point<double, 3>& point, const Point<double, 3>& direction) const {
    return {height(point), dot(gradient(point), direction), dot(direction, multiply(bend, direction))};
}

Zeros::Zeros(const AlongRay& values) {
    const double discriminant = values.slope * values.slope - 4 * values.bend * values.value;
    if (!(discriminant >= 0)) {
        return;
    }
    // The sum of two numbers of one sign: nothing cancels.
    const double sum = -(values.slope + std::copysign(std::sqrt(discriminant), values.slope)) / 2;
    for (const double zero : {values.value / sum, sum / values.bend}) {
        if (std::isfinite(zero)) {
            tau[count++] = zero;
        }
    }
}

}  // namespace KelvoScreenDetail
