#include "DisplayFit/detail/PointShape.h"

#include "DisplayFit/detail/Median.h"
#include "DisplayFit/detail/Picker.h"

#include <Eigen/Eigenvalues>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace Veltrani::DisplayFitDetail {

namespace {

using Vector = Point<double, 3>;

/// What measured surfaces deviate from a plane or a line that they are meant to be, as a part of their extent.
constexpr double AS_BUILT = 1e-3;

/// Points further from the plane than this many deviations show depth.
constexpr double MOST_DEVIATIONS = 3;

/// Half of the points of a screen that is hardly bent are nearer than this to a plane, as a part of their extent.
constexpr double HARDLY_BENT = 0.05;

/// Of normal numbers, the deviation over the median size.
constexpr double DEVIATION_OF_MEDIAN = 1.4826;

/// A point that is so many times as far from the middle of the points as half of them are belongs to no screen.
constexpr double ABSURD = 30;

/// Planes and lines through some of the points that are tried: where a third of the points is wrong, one of three
/// such planes has none of these.
constexpr int TRIALS = 24;
/// Points by which they are compared.
constexpr std::size_t COMPARED = 100;

/// Wrong points that are expected: this part of all, and a few in any case where there are enough.
constexpr std::size_t ONE_WRONG_IN = 20;
constexpr std::size_t FEW = 3;
constexpr std::size_t ENOUGH_FOR_ONE = 10;

/// Which points are absurd.
std::vector<std::size_t> absurdOf(std::span<const Vector> points) {
    Vector middle;
    std::vector<double> numbers(points.size());
    for (std::size_t k = 0; k < 3; ++k) {
        std::transform(points.begin(), points.end(), numbers.begin(), [k](const Vector& point) { return point[k]; });
        middle[k] = medianOf(numbers);
    }
    std::transform(points.begin(), points.end(), numbers.begin(),
                   [&middle](const Vector& point) { return norm(point - middle); });
    const double typical = medianOf(numbers);
    std::vector<std::size_t> absurd;
    for (std::size_t i = 0; i < numbers.size() && typical > 0; ++i) {
        if (!(numbers[i] <= ABSURD * typical)) {
            absurd.push_back(i);
        }
    }
    return absurd;
}

/// The principal axes of some points.
void findAxes(std::span<const Vector> points, PointShape& shape) {
    shape.centre = {};
    for (const Vector& point : points) {
        shape.centre += point;
    }
    const double part = 1 / static_cast<double>(points.size());
    shape.centre *= part;
    Eigen::Matrix3d moments = Eigen::Matrix3d::Zero();
    for (const Vector& point : points) {
        const Vector from = point - shape.centre;
        const Eigen::Vector3d column(from[0], from[1], from[2]);
        moments += column * column.transpose();
    }
    const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> solver(moments * part);
    for (std::size_t i = 0; i < shape.axes.size(); ++i) {
        const auto column = static_cast<Eigen::Index>(shape.axes.size() - 1 - i);
        const Eigen::Vector3d axis = solver.eigenvectors().col(column);
        shape.axes[i] = {axis[0], axis[1], axis[2]};
        shape.extents[i] = std::sqrt(std::max(solver.eigenvalues()[column], 0.0));
    }
}

/// A plane or a line through a point: distances from it are those along its normals.
struct Through {
    Vector point;
    std::array<Vector, 2> normals;  ///< across each other, of length 1; the second one zero for a plane

    [[nodiscard]] double square(const Vector& to) const {
        const Vector from = to - point;
        const double first = dot(from, normals[0]);
        const double second = dot(from, normals[1]);
        return first * first + second * second;
    }
    [[nodiscard]] std::vector<double> distances(std::span<const Vector> points) const {
        std::vector<double> all(points.size());
        std::transform(points.begin(), points.end(), all.begin(),
                       [this](const Vector& to) { return std::sqrt(square(to)); });
        return all;
    }
    /// The median square of the distances.
    [[nodiscard]] double typical(std::span<const Vector> points, std::vector<double>& squares) const {
        squares.resize(points.size());
        std::transform(points.begin(), points.end(), squares.begin(), [this](const Vector& to) { return square(to); });
        const auto middle = squares.begin() + static_cast<std::ptrdiff_t>(squares.size() / 2);
        std::nth_element(squares.begin(), middle, squares.end());
        return *middle;
    }
};

/// The plane through three points; that through a line and any direction across it where they lie on one.
Through planeThrough(const Vector& a, const Vector& b, const Vector& c) {
    const Vector normal = cross(b - a, c - a);
    const double size = norm(normal);
    return {a, {size > 0 ? normal * (1 / size) : Vector{1, 0, 0}, Vector{}}};
}

Through lineThrough(const Vector& a, const Vector& b) {
    const double length = norm(b - a);
    const Vector along = length > 0 ? (b - a) * (1 / length) : Vector{1, 0, 0};
    Vector first = cross(along, std::abs(along[2]) < 0.5 ? Vector{0, 0, 1} : Vector{1, 0, 0});
    first *= 1 / norm(first);
    return {a, {first, cross(along, first)}};
}

/// Of some planes or lines through the points, and the first one, that from which half of the points are the least far
/// away: the distances of all points from it.
template <class Make>
std::vector<double> fromNearest(std::span<const Vector> points, const Through& first, Make&& make) {
    std::vector<Vector> some;
    const std::size_t count = std::min(points.size(), COMPARED);
    for (std::size_t i = 0; i < count; ++i) {
        some.push_back(points[i * points.size() / count]);
    }
    Picker pick(points.size());
    Through best = first;
    std::vector<double> squares;
    double least = best.typical(some, squares);
    for (int trial = 0; trial < TRIALS && least > 0; ++trial) {
        const Through other = make(points, pick);
        const double typical = other.typical(some, squares);
        if (typical < least) {
            best = other;
            least = typical;
        }
    }
    return best.distances(points);
}

/// The principal axes of the points that are no further away than most are by chance: few points alone, with their
/// noise, lead far away at the other end.
PointShape axesOfNear(std::span<const Vector> points, const std::vector<double>& distances) {
    const double most = MOST_DEVIATIONS * DEVIATION_OF_MEDIAN * medianOf(distances);
    std::vector<Vector> near;
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (distances[i] <= most) {
            near.push_back(points[i]);
        }
    }
    PointShape shape;
    findAxes(near, shape);
    return shape;
}

}  // namespace

PointShape PointShape::of(std::span<const Vector> points) {
    PointShape shape;
    if (points.empty()) {
        return shape;
    }
    shape.absurd = absurdOf(points);
    std::vector<Vector> kept;
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (!std::binary_search(shape.absurd.begin(), shape.absurd.end(), i)) {
            kept.push_back(points[i]);
        }
    }
    findAxes(kept, shape);
    shape.m_fromPlane =
        fromNearest(points, {shape.centre, {shape.axes[2], Vector{}}}, [](std::span<const Vector> of, Picker& pick) {
            const Vector& a = of[pick()];
            const Vector& b = of[pick()];
            return planeThrough(a, b, of[pick()]);
        });
    shape.m_fromLine = fromNearest(points, {shape.centre, {shape.axes[1], shape.axes[2]}},
                                   [](std::span<const Vector> of, Picker& pick) {
                                       const Vector& a = of[pick()];
                                       return lineThrough(a, of[pick()]);
                                   });
    const PointShape ofPlane = axesOfNear(points, shape.m_fromPlane);
    shape.m_fromPlane = Through{ofPlane.centre, {ofPlane.axes[2], Vector{}}}.distances(points);
    const PointShape ofLine = axesOfNear(points, shape.m_fromLine);
    shape.m_fromLine = Through{ofLine.centre, {ofLine.axes[1], ofLine.axes[2]}}.distances(points);
    return shape;
}

std::vector<bool> PointShape::besidePlane(double deviation) const {
    const double most =
        m_fromPlane.empty()
            ? 0
            : std::max(allowed(deviation), 2 * MOST_DEVIATIONS * DEVIATION_OF_MEDIAN * medianOf(m_fromPlane));
    std::vector<bool> beside;
    std::transform(m_fromPlane.begin(), m_fromPlane.end(), std::back_inserter(beside),
                   [most](double distance) { return !(distance <= most); });
    return beside;
}

bool PointShape::isNearlyFlat() const {
    return m_fromPlane.empty() || medianOf(m_fromPlane) <= HARDLY_BENT * extents[0];
}

std::size_t PointShape::few(std::size_t points) {
    return std::max(points / ONE_WRONG_IN, std::min(FEW, points / ENOUGH_FOR_ONE));
}

double PointShape::allowed(double deviation) const {
    return std::max(AS_BUILT * extents[0], MOST_DEVIATIONS * deviation);
}

std::size_t PointShape::beside(const std::vector<double>& distances, double allowed) {
    return static_cast<std::size_t>(
        std::count_if(distances.begin(), distances.end(), [allowed](double from) { return !(from <= allowed); }));
}

}  // namespace Veltrani::DisplayFitDetail
