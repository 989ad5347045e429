#include "DisplayExport/RenderFrustum.h"

#include "Common/VeltraniException.h"

#include <array>
#include <cmath>

namespace Veltrani::DisplayExport {

namespace {

/// Which way along its z axis the camera looks.
double aheadOf(const RenderConvention& convention) {
    return convention.handed == RenderConvention::Handed::RIGHT ? -1.0 : 1.0;
}

/// The depth after the division by w is `factor` + `offset` / w, w being the distance along the direction of view.
struct DepthTerms {
    double factor, offset;
};

DepthTerms depthTermsOf(const RenderConvention& convention) {
    const double near = convention.nearPlane;
    const double far = convention.farPlane;
    switch (convention.depth) {
        case RenderConvention::Depth::OPENGL:
            return {(far + near) / (far - near), -2 * far * near / (far - near)};
        case RenderConvention::Depth::DIRECT3D:
            return {far / (far - near), -far * near / (far - near)};
        case RenderConvention::Depth::REVERSED_Z:
            return {-near / (far - near), far * near / (far - near)};
    }
    return {0, 0};
}

}  // namespace

bool RenderFrustum::placeOf(const Point<double, 3>& direction, Point<double, 2>& place) const {
    const Point<double, 3> seen = view.inFrame(direction);
    if (!(seen[1] > 0)) {
        return false;
    }
    place = {(seen[0] / seen[1] - left) / (right - left), (seen[2] / seen[1] - bottom) / (top - bottom)};
    return true;
}

Point<double, 3> RenderFrustum::directionOf(const Point<double, 2>& place) const {
    return view.inWorld({left + (right - left) * place[0], 1.0, bottom + (top - bottom) * place[1]});
}

Matrix<double, 4> RenderFrustum::viewMatrix(const RenderConvention& convention) const {
    const Matrix<double, 3> engine_from_world = convention.engineFromWorld();
    const Point<double, 3> eye = engine_from_world * view.eye;
    const std::array<Point<double, 3>, 3> axes{engine_from_world * view.right, engine_from_world * view.up,
                                               aheadOf(convention) * (engine_from_world * view.forward)};
    Matrix<double, 4> matrix;
    for (std::size_t r = 0; r < axes.size(); ++r) {
        for (std::size_t c = 0; c < 3; ++c) {
            matrix(r, c) = axes[r][c];
        }
        matrix(r, 3) = -dot(axes[r], eye);
    }
    return matrix;
}

Matrix<double, 4> RenderFrustum::projectionMatrix(const RenderConvention& convention) const {
    if (!(convention.nearPlane > 0 && convention.nearPlane < convention.farPlane &&
          std::isfinite(convention.farPlane))) {
        throw VeltraniException(L"The near plane lies at " + std::to_wstring(convention.nearPlane) +
                                L" and the far plane at " + std::to_wstring(convention.farPlane) +
                                L": state 0 < near < far");
    }
    const double ahead = aheadOf(convention);
    const DepthTerms depth = depthTermsOf(convention);
    Matrix<double, 4> matrix;
    matrix(0, 0) = 2 / (right - left);
    matrix(0, 2) = -ahead * (right + left) / (right - left);
    matrix(1, 1) = 2 / (top - bottom);
    matrix(1, 2) = -ahead * (top + bottom) / (top - bottom);
    matrix(2, 2) = ahead * depth.factor;
    matrix(2, 3) = depth.offset;
    matrix(3, 2) = ahead;
    matrix(3, 3) = 0;
    return matrix;
}

}  // namespace Veltrani::DisplayExport
