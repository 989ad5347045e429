#include "Common/Matrix.h"

#include <cmath>

namespace Veltrani {

Matrix<double, 3> rotation(double angle, const Point<double, 3>& unitAxis) {
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    const double x = unitAxis[0];
    const double y = unitAxis[1];
    const double z = unitAxis[2];

    Matrix<double, 3> r;
    r(0, 0) = x * x * (1 - c) + c;
    r(0, 1) = x * y * (1 - c) - s * z;
    r(0, 2) = x * z * (1 - c) + s * y;
    r(1, 0) = y * x * (1 - c) + s * z;
    r(1, 1) = y * y * (1 - c) + c;
    r(1, 2) = y * z * (1 - c) - s * x;
    r(2, 0) = z * x * (1 - c) - s * y;
    r(2, 1) = z * y * (1 - c) + s * x;
    r(2, 2) = z * z * (1 - c) + c;
    return r;
}

Matrix<double, 3> rotationZXY(double z, double x, double y) {
    return rotation(-z, {0.0, 0.0, 1.0}) * rotation(x, {1.0, 0.0, 0.0}) * rotation(y, {0.0, 1.0, 0.0});
}

}  // namespace Veltrani
