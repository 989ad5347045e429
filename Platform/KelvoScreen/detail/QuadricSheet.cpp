#include "KelvoScreen/detail/QuadricSheet.h"

#include "KelvoScreen/detail/Rounding.h"

#include <Eigen/Cholesky>
#include <Eigen/Core>
#include <Eigen/Eigenvalues>

#include <cmath>
#include <cstddef>

namespace Veltrani::KelvoScreenDetail {

namespace {

/// Rounds of fitting, each in the frame of the one before. On a sphere the error shrinks tenfold in each where the
/// points reach a third of the radius, and by half at three quarters.
constexpr int MOST_ROUNDS = 40;
/// The change of all coefficients, those of lengths in units of the radius, below which no further round is needed.
constexpr double SETTLED = 1e-13;

/// The same change after the last round, above which the fit does not determine the surface.
constexpr double UNSETTLED = 1e-2;

/// Information per point about a curvature, in units of the radius, that is too little to determine it: that of a strip
/// about a tenth as wide as long. (A half disc has 1e-3, a disc 1e-2.)
constexpr double LEAST_INFORMATION = 2e-6;
/// The same for a slope: that of points on a line.
constexpr double LEAST_SPREAD = 1e-8;

/// Curvature, in units of the radius, above which a fit is not that of a surface that is nearly flat here.
constexpr double LARGEST_CURVATURE = 1.5;

/// The frame of a fit: heights along `z`.
struct Frame {
    Point<double, 3> origin;
    Point<double, 3> x;
    Point<double, 3> y;
    Point<double, 3> z;

    Frame(const Point<double, 3>& theOrigin, const Point<double, 3>& normal)
        : origin(theOrigin), z(normal * (1 / norm(normal))) {
        const bool isUpright = std::abs(z[2]) < 0.7;
        const Point<double, 3> across =
            cross(isUpright ? Point<double, 3>{0.0, 0.0, 1.0} : Point<double, 3>{1.0, 0.0, 0.0}, z);
        x = across * (1 / norm(across));
        y = cross(z, x);
    }
};

/// Lengths in units of the radius: z = height + slopeX x + slopeY y + (xx x^2 + 2 xy x y + yy y^2 + k z^2) / 2
struct Coefficients {
    double height = 0;
    double slopeX = 0;
    double slopeY = 0;
    double xx = 0;
    double xy = 0;
    double yy = 0;

    /// Returns the curvature across for which spheres and cylinders come out exact: (p^3 + q^3) / (p^2 + q^2) of the
    /// principal curvatures p and q.
    [[nodiscard]] double across() const {
        const double squares = xx * xx + 2 * xy * xy + yy * yy;
        return squares > 0 ? (xx * xx * xx + 3 * xy * xy * (xx + yy) + yy * yy * yy) / squares : 0;
    }
};

using Vector3 = Eigen::Vector3d;
using Matrix3 = Eigen::Matrix3d;

/// The sums of the normal equations: of (1, x, y), of (x^2 / 2, x y, y^2 / 2), and between them.
class Equations {
public:
    void add(double x, double y, double z) {
        const Vector3 flat(1, x, y);
        const Vector3 bent(x * x / 2, x * y, y * y / 2);
        m_flat += flat * flat.transpose();
        m_mixed += flat * bent.transpose();
        m_bent += bent * bent.transpose();
        m_flatSide += z * flat;
        m_bentSide += z * bent;
    }

    /// Returns false when the points do not spread in two directions.
    [[nodiscard]] bool solve(double count, Coefficients& out) const {
        if (!(Eigen::SelfAdjointEigenSolver<Matrix3>(m_flat, Eigen::EigenvaluesOnly).eigenvalues()[0] >
              LEAST_SPREAD * count)) {
            return false;
        }
        const Eigen::LDLT<Matrix3> flat(m_flat);
        const Matrix3 information = m_bent - m_mixed.transpose() * flat.solve(m_mixed);
        const Vector3 side = m_bentSide - m_mixed.transpose() * flat.solve(m_flatSide);
        const Eigen::SelfAdjointEigenSolver<Matrix3> parts(information);
        Vector3 bend = Vector3::Zero();
        for (int i = 0; i < 3; ++i) {
            if (parts.eigenvalues()[i] > LEAST_INFORMATION * count) {
                const Vector3 part = parts.eigenvectors().col(i);
                bend += part * (part.dot(side) / parts.eigenvalues()[i]);
            }
        }
        const Vector3 plane = flat.solve(m_flatSide - m_mixed * bend);
        out = {plane[0], plane[1], plane[2], bend[0], bend[1], bend[2]};
        return plane.allFinite() && bend.allFinite();
    }

private:
    Matrix3 m_flat = Matrix3::Zero();
    Matrix3 m_mixed = Matrix3::Zero();
    Matrix3 m_bent = Matrix3::Zero();
    Vector3 m_flatSide = Vector3::Zero();
    Vector3 m_bentSide = Vector3::Zero();
};

bool solveIn(const Frame& frame, std::span<const Point<double, 3>> points, double radius, double across,
             Coefficients& out) {
    Equations equations;
    for (const Point<double, 3>& point : points) {
        const Point<double, 3> offset = (point - frame.origin) * (1 / radius);
        const double z = dot(offset, frame.z);
        equations.add(dot(offset, frame.x), dot(offset, frame.y), z - across * z * z / 2);
    }
    return equations.solve(static_cast<double>(points.size()), out);
}

/// Adds half of factor a b^T + factor b a^T.
void addProduct(SymmetricMatrix& sum, const Point<double, 3>& a, const Point<double, 3>& b, double factor) {
    std::size_t k = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = i; j < 3; ++j) {
            sum[k++] += factor * (a[i] * b[j] + a[j] * b[i]) / 2;
        }
    }
}

QuadricSheet sheetOf(const Frame& frame, const Coefficients& c, double across, double radius) {
    QuadricSheet sheet;
    sheet.origin = frame.origin;
    sheet.offset = -c.height * radius;
    sheet.slope = frame.z - c.slopeX * frame.x - c.slopeY * frame.y;
    const double factor = -0.5 / radius;
    addProduct(sheet.bend, frame.x, frame.x, factor * c.xx);
    addProduct(sheet.bend, frame.x, frame.y, 2 * factor * c.xy);
    addProduct(sheet.bend, frame.y, frame.y, factor * c.yy);
    addProduct(sheet.bend, frame.z, frame.z, factor * across);
    return sheet;
}

double largestHeight(const QuadricSheet& sheet, std::span<const Point<double, 3>> points) {
    double largest = 0;
    for (const Point<double, 3>& point : points) {
        largest = std::max(largest, std::abs(sheet.height(point)));
    }
    return largest;
}

double errorOf(const QuadricSheet& sheet, std::span<const Point<double, 3>> points) {
    constexpr double FREEDOMS = 6;
    double sum = 0;
    for (const Point<double, 3>& point : points) {
        sum += sheet.height(point) * sheet.height(point);
    }
    return std::sqrt(sum / (static_cast<double>(points.size()) - FREEDOMS));
}

Frame turned(const Frame& frame, const Coefficients& c, double radius) {
    return {frame.origin + (c.height * radius) * frame.z, frame.z - c.slopeX * frame.x - c.slopeY * frame.y};
}

/// Returns the plane of the points when they lie in one. It takes two rounds, since the first one rounds in a tilted
/// frame.
std::optional<QuadricSheet> fitPlane(std::span<const Point<double, 3>> points, Frame frame, double radius,
                                     double noise) {
    Coefficients c;
    for (int round = 0; round < 2; ++round) {
        if (!solveIn(frame, points, radius, 0, c)) {
            return std::nullopt;
        }
        c.xx = c.xy = c.yy = 0;
        frame = turned(frame, c, radius);
    }
    const QuadricSheet plane = sheetOf(frame, {}, 0, radius);
    return largestHeight(plane, points) <= noise ? std::optional(plane) : std::nullopt;
}

double change(const Coefficients& c, double across, double acrossBefore) {
    return std::max({std::abs(c.height), std::abs(c.slopeX), std::abs(c.slopeY), std::abs(across - acrossBefore)});
}

}  // namespace

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

std::optional<FittedSheet> fitSheet(std::span<const Point<double, 3>> points, const Point<double, 3>& origin,
                                    const Point<double, 3>& normal, double radius, double noise) {
    if (points.size() < FEWEST_FIT_POINTS || !(radius > 0) || !(norm(normal) > 0)) {
        return std::nullopt;
    }
    Frame frame(origin, normal);
    if (const std::optional<QuadricSheet> plane = fitPlane(points, frame, radius, noise)) {
        return FittedSheet{*plane, 0};
    }
    double across = 0;
    double moved = 1;
    Coefficients c;
    for (int round = 0; round < MOST_ROUNDS; ++round) {
        if (!solveIn(frame, points, radius, across, c)) {
            return std::nullopt;
        }
        const double before = across;
        across = c.across();
        moved = change(c, across, before);
        if (!(moved > SETTLED)) {
            break;
        }
        frame = turned(frame, c, radius);
    }
    const double curvature = std::max({std::abs(c.xx), std::abs(c.xy), std::abs(c.yy)});
    if (!(moved <= UNSETTLED && curvature <= LARGEST_CURVATURE)) {
        return std::nullopt;
    }
    const QuadricSheet sheet = sheetOf(frame, c, across, radius);
    return FittedSheet{sheet, errorOf(sheet, points)};
}

}  // namespace Veltrani::KelvoScreenDetail
