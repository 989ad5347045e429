#include "DisplayFit/detail/PointShape.h"

#include <Eigen/Eigenvalues>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Veltrani::DisplayFitDetail {

namespace {

/// What measured surfaces deviate from a plane or a line that they are meant to be, as a part of their extent.
constexpr double AS_BUILT = 1e-3;

/// Points further from the plane than this many deviations show depth.
constexpr double MOST_DEVIATIONS = 3;

}  // namespace

PointShape PointShape::of(std::span<const Point<double, 3>> points) {
    PointShape shape;
    if (points.empty()) {
        return shape;
    }
    for (const auto& point : points) {
        shape.centre += point * (1 / static_cast<double>(points.size()));
    }
    Eigen::Matrix3d moments = Eigen::Matrix3d::Zero();
    for (const auto& point : points) {
        const Point<double, 3> from = point - shape.centre;
        const Eigen::Vector3d column(from[0], from[1], from[2]);
        moments += column * column.transpose() / static_cast<double>(points.size());
    }
    const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> solver(moments);
    for (std::size_t i = 0; i < shape.axes.size(); ++i) {
        const auto column = static_cast<Eigen::Index>(shape.axes.size() - 1 - i);
        const Eigen::Vector3d axis = solver.eigenvectors().col(column);
        shape.axes[i] = {axis[0], axis[1], axis[2]};
        shape.extents[i] = std::sqrt(std::max(solver.eigenvalues()[column], 0.0));
    }
    return shape;
}

double PointShape::allowed(double deviation) const {
    return std::max(AS_BUILT * extents[0], MOST_DEVIATIONS * deviation);
}

}  // namespace Veltrani::DisplayFitDetail
