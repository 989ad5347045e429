#include "DisplayFit/detail/LinearStart.h"

#include "DisplayFit/detail/PointShape.h"

#include <Eigen/Eigenvalues>
#include <Eigen/LU>
#include <Eigen/QR>
#include <Eigen/SVD>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <vector>

namespace Veltrani::DisplayFitDetail {

namespace {

using Vector = Point<double, 3>;
using Eigen::Matrix3d;
using Eigen::Vector3d;

/// A start needs no more points than these, spread over all of them.
constexpr std::size_t MOST_POINTS = 4000;

/// Points are left out in this many steps, down to this part of them.
constexpr int TRIMMINGS = 8;
constexpr double KEPT = 0.6;

/// One equation pair: tangents t of a ray that lies along M x, with x homogeneous of `size` numbers.
struct Pair {
    Point<double, 2> tangents;
    Eigen::Vector4d x = Eigen::Vector4d::Zero();
};

/// From the projector's frame (right, forward, up) to (right, up, forward), in which tangents are (x, y) over the last.
Matrix3d lastIsForward() {
    Matrix3d m;
    m << 1, 0, 0, 0, 0, 1, 0, 1, 0;
    return m;
}

/// Solves for the 3 x size matrix by the smallest eigenvector of its normal equations.
Eigen::Matrix<double, 3, 4> solvePairs(const std::vector<Pair>& pairs, Eigen::Index size) {
    const Eigen::Index unknowns = 3 * size;
    Eigen::MatrixXd normal = Eigen::MatrixXd::Zero(unknowns, unknowns);
    for (const Pair& pair : pairs) {
        const Eigen::VectorXd x = pair.x.head(size) / pair.x.head(size).norm();
        for (int row = 0; row < 2; ++row) {
            Eigen::VectorXd equation = Eigen::VectorXd::Zero(unknowns);
            equation.segment(row * size, size) = x;
            equation.segment(2 * size, size) = -pair.tangents[static_cast<std::size_t>(row)] * x;
            normal += equation * equation.transpose();
        }
    }
    const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> solver(normal);
    const Eigen::VectorXd found = solver.eigenvectors().col(0);
    Eigen::Matrix<double, 3, 4> m = Eigen::Matrix<double, 3, 4>::Zero();
    for (Eigen::Index row = 0; row < 3; ++row) {
        m.row(row).head(size) = found.segment(row * size, size).transpose();
    }
    return m;
}

double missOf(const Eigen::Matrix<double, 3, 4>& m, const Pair& pair) {
    const Vector3d there = m * pair.x;
    return std::hypot(there[0] / there[2] - pair.tangents[0], there[1] / there[2] - pair.tangents[1]);
}

/// Solves, and again from the better part of the points.
Eigen::Matrix<double, 3, 4> solveTrimmed(const std::vector<Pair>& pairs, Eigen::Index size, std::size_t least) {
    std::vector<Pair> kept = pairs;
    Eigen::Matrix<double, 3, 4> m = solvePairs(kept, size);
    for (int trimming = 1; trimming <= TRIMMINGS; ++trimming) {
        const double part = 1 - (1 - KEPT) * trimming / TRIMMINGS;
        const auto count = static_cast<std::size_t>(part * static_cast<double>(pairs.size()));
        if (count < 2 * least) {
            break;
        }
        kept = pairs;
        std::nth_element(kept.begin(), kept.begin() + static_cast<std::ptrdiff_t>(count), kept.end(),
                         [&](const Pair& a, const Pair& b) { return missOf(m, a) < missOf(m, b); });
        kept.resize(count);
        m = solvePairs(kept, size);
    }
    // Of the two signs, that with the points ahead.
    const auto ahead = std::count_if(kept.begin(), kept.end(), [&](const Pair& pair) { return (m * pair.x)[2] > 0; });
    return 2 * static_cast<std::size_t>(ahead) < kept.size() ? Eigen::Matrix<double, 3, 4>(-m) : m;
}

/// The rotation nearest to a matrix whose determinant is above zero.
Matrix3d nearestRotation(const Matrix3d& m) {
    const Eigen::JacobiSVD<Matrix3d> svd(m, Eigen::ComputeFullU | Eigen::ComputeFullV);
    Matrix3d between = Matrix3d::Identity();
    between(2, 2) = (svd.matrixU() * svd.matrixV().transpose()).determinant() < 0 ? -1 : 1;
    return svd.matrixU() * between * svd.matrixV().transpose();
}

Matrix<double, 3> fromEigen(const Matrix3d& m) {
    Matrix<double, 3> result;
    for (std::size_t r = 0; r < 3; ++r) {
        for (std::size_t c = 0; c < 3; ++c) {
            result(r, c) = m(static_cast<Eigen::Index>(r), static_cast<Eigen::Index>(c));
        }
    }
    return result;
}

Vector3d toEigen(const Vector& v) {
    return {v[0], v[1], v[2]};
}

/// Splits m = K * turn: K upper triangular with a diagonal above zero, and 1 last.
void splitTriangle(const Matrix3d& m, Matrix3d& triangle, Matrix3d& turn) {
    Matrix3d exchange = Matrix3d::Zero();
    exchange(0, 2) = exchange(1, 1) = exchange(2, 0) = 1;
    // The factorisation of the reversed and transposed matrix, reversed and transposed back.
    const Eigen::HouseholderQR<Matrix3d> factors((exchange * m).transpose());
    const Matrix3d upper = factors.matrixQR().triangularView<Eigen::Upper>();
    const Matrix3d orthogonal = factors.householderQ();
    triangle = exchange * upper.transpose() * exchange;
    turn = exchange * orthogonal.transpose();
    for (Eigen::Index i = 0; i < 3; ++i) {
        if (triangle(i, i) < 0) {
            triangle.col(i) *= -1;
            turn.row(i) *= -1;
        }
    }
    triangle /= triangle(2, 2);
}

/// Tangents of the rays of the picture points, by the lens as it is given.
std::vector<std::optional<Point<double, 2>>> tangentsOf(const FitPoints& points, const PictureView& given) {
    std::vector<std::optional<Point<double, 2>>> tangents;
    for (const Point<double, 2>& picture : points.picture) {
        Point<double, 2> found;
        const bool isFound = given.lens.tangentsOf(
            {(picture[0] - given.shift[0]) / given.factor[0], (picture[1] - given.shift[1]) / given.factor[1]}, found);
        tangents.push_back(isFound ? std::optional(found) : std::nullopt);
    }
    return tangents;
}

/// Builds the view from the part of the transform that turns directions.
LinearView viewOf(const Matrix3d& directions, const PictureView& given, const PictureModel::Held& held) {
    // Right, up and forward are left-handed: a picture that is not mirrored has a determinant below zero.
    if (directions.determinant() > 0) {
        return {given, true};
    }
    LinearView found{given, false};
    Matrix3d turn = -nearestRotation(-directions);
    if (held.solved.frustum && given.lens.isOfTangents()) {
        Matrix3d triangle;
        splitTriangle(directions, triangle, turn);
        const Point<double, 2> factor = given.factor;
        found.view.factor = {factor[0] * triangle(0, 0), factor[1] * triangle(1, 1)};
        found.view.shift = {given.shift[0] + (held.horizontalShift ? 0 : factor[0] * triangle(0, 2)),
                            given.shift[1] + factor[1] * triangle(1, 2)};
    }
    found.view.world_from_projector = fromEigen((lastIsForward().transpose() * turn).transpose());
    return found;
}

/// From points all around: a position and a triangle of its own.
std::optional<LinearView> fromSpace(const std::vector<std::optional<Point<double, 2>>>& tangents,
                                    const FitPoints& points, const PointShape& shape, const PictureView& given,
                                    const PictureModel::Held& held) {
    constexpr std::size_t LEAST = 6;
    std::vector<Pair> pairs;
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (tangents[i]) {
            const Vector near = (points.world[i] - shape.centre) * (1 / shape.extents[0]);
            pairs.push_back({*tangents[i], {near[0], near[1], near[2], 1}});
        }
    }
    if (pairs.size() < LEAST) {
        return std::nullopt;
    }
    const auto m = solveTrimmed(pairs, 4, LEAST);
    const Matrix3d directions = m.leftCols<3>();
    if (!(std::abs(directions.determinant()) > 1e-12 * std::pow(directions.norm(), 3))) {
        return std::nullopt;
    }
    LinearView found = viewOf(directions, given, held);
    const Vector3d position = -directions.inverse() * m.col(3) * shape.extents[0] + toEigen(shape.centre);
    if (!found.isMirrored) {
        found.view.position = {position[0], position[1], position[2]};
    }
    return found;
}

/// From points on a plane: by the lens as it is given.
std::optional<LinearView> fromPlane(const std::vector<std::optional<Point<double, 2>>>& tangents,
                                    const FitPoints& points, const PointShape& shape, const PictureView& given) {
    constexpr std::size_t LEAST = 4;
    std::vector<Pair> pairs;
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (tangents[i]) {
            const Vector near = (points.world[i] - shape.centre) * (1 / shape.extents[0]);
            pairs.push_back({*tangents[i], {dot(near, shape.axes[0]), dot(near, shape.axes[1]), 1, 0}});
        }
    }
    if (pairs.size() < LEAST) {
        return std::nullopt;
    }
    const auto m = solveTrimmed(pairs, 3, LEAST);
    const double scale = (m.col(0).norm() + m.col(1).norm()) / 2;
    if (!(scale > 0)) {
        return std::nullopt;
    }
    const Vector3d first = m.col(0) / scale;
    const Vector3d second = m.col(1) / scale;
    Matrix3d seen;
    seen << first, second, -first.cross(second);
    Matrix3d axes;
    axes << toEigen(shape.axes[0]), toEigen(shape.axes[1]), toEigen(cross(shape.axes[0], shape.axes[1]));
    const Matrix3d turn = -nearestRotation(-seen * axes.transpose());
    const Vector3d position =
        toEigen(shape.centre) - turn.transpose() * Vector3d(m.col(2)) * (shape.extents[0] / scale);
    LinearView found{given, false};
    found.view.world_from_projector = fromEigen((lastIsForward().transpose() * turn).transpose());
    found.view.position = {position[0], position[1], position[2]};
    return found;
}

/// From directions at a position that is known.
std::optional<LinearView> fromDirections(const std::vector<std::optional<Point<double, 2>>>& tangents,
                                         const FitPoints& points, const PictureView& given,
                                         const PictureModel::Held& held) {
    constexpr std::size_t LEAST = 4;
    std::vector<Pair> pairs;
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (tangents[i]) {
            const Vector from = points.world[i] - given.position;
            pairs.push_back({*tangents[i], {from[0], from[1], from[2], 0}});
        }
    }
    if (pairs.size() < LEAST) {
        return std::nullopt;
    }
    const Matrix3d directions = solveTrimmed(pairs, 3, LEAST).leftCols<3>();
    if (!(std::abs(directions.determinant()) > 1e-12 * std::pow(directions.norm(), 3))) {
        return std::nullopt;
    }
    return viewOf(directions, given, held);
}

bool isFinite(const PictureView& view) {
    double sum = view.position[0] + view.position[1] + view.position[2] + view.factor[0] + view.factor[1] +
                 view.shift[0] + view.shift[1];
    for (std::size_t i = 0; i < 3; ++i) {
        sum += view.world_from_projector(i, 0) + view.world_from_projector(i, 1) + view.world_from_projector(i, 2);
    }
    return std::isfinite(sum);
}

}  // namespace

std::optional<LinearView> linearStart(const FitPoints& all, const PictureView& given, const PictureModel::Held& held) {
    const FitPoints points = all.someOf(MOST_POINTS);
    const PointShape shape = PointShape::of(points.world);
    if (!held.solved.orientation || !(shape.extents[1] > 0)) {
        return std::nullopt;
    }
    const auto tangents = tangentsOf(points, given);
    std::optional<LinearView> found;
    if (!held.solved.position) {
        found = fromDirections(tangents, points, given, held);
    } else if (shape.isFlat(0)) {
        found = fromPlane(tangents, points, shape, given);
    } else {
        found = fromSpace(tangents, points, shape, given, held);
    }
    return found && isFinite(found->view) ? found : std::nullopt;
}

}  // namespace Veltrani::DisplayFitDetail
