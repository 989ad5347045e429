#include "DisplayFit/detail/RationalStarts.h"

#include <Eigen/QR>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace Veltrani::DisplayFitDetail {

namespace {

using Cubic = std::array<double, 3>;  ///< of x, x^2, x^3 behind 1

/// Where the denominators that are tried are least, as parts of the largest square of the radius, and how small they
/// are there: further on they would be zero somewhere else.
constexpr std::array<double, 9> LEAST_AT{0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.75, 0.9, 1.1};
constexpr double LEAST = 0.02;

/// Places of the radius where a distortion is compared.
constexpr int SAMPLES = 60;

// Of k1 k2 p1 p2 k3 k4 k5 k6.
constexpr std::array<std::size_t, 3> ABOVE{0, 1, 4};
constexpr std::array<std::size_t, 3> BELOW{5, 6, 7};

double valueOf(const Cubic& cubic, double x) {
    return 1 + x * (cubic[0] + x * (cubic[1] + x * cubic[2]));
}

/// Square of the largest tangent of a ray to a point.
double largestSquare(const PictureView& view, const FitPoints& points) {
    double largest = 0;
    for (const Point<double, 3>& world : points.world) {
        const double square = squareOfTangent(view, world);
        if (std::isfinite(square)) {
            largest = std::max(largest, square);
        }
    }
    return largest;
}

/// The cubic that is nearest to a function from 0 to `square`.
template <class Function>
Cubic nearestTo(Function&& function, double square) {
    Eigen::Matrix<double, SAMPLES, 3> powers;
    Eigen::Matrix<double, SAMPLES, 1> values;
    for (int i = 0; i < SAMPLES; ++i) {
        const double part = (i + 1.0) / SAMPLES;
        powers.row(i) << part, part * part, part * part * part;
        values[i] = function(part * square) - 1;
    }
    const Eigen::Vector3d found = powers.colPivHouseholderQr().solve(values);
    return {found[0] / square, found[1] / (square * square), found[2] / (square * square * square)};
}

}  // namespace

bool isRational(const PictureModel& model) {
    return model.view().lens.kind() == LensFormula::Kind::BROWN_CONRADY && model.held().solved.distortion &&
           model.view().lens.coefficients() == LensFormula::MOST_COEFFICIENTS;
}

double squareOfTangent(const PictureView& view, const Point<double, 3>& world) {
    const Point<double, 3> ray = transpose(view.world_from_projector) * (world - view.position);
    return ray[1] > 0 ? (ray[0] * ray[0] + ray[2] * ray[2]) / (ray[1] * ray[1])
                      : std::numeric_limits<double>::infinity();
}

std::vector<PictureView> rationalStarts(const PictureView& view, const FitPoints& points) {
    const auto cubic = [&view](const std::array<std::size_t, 3>& places) {
        return Cubic{view.lens.coefficient(places[0]), view.lens.coefficient(places[1]),
                     view.lens.coefficient(places[2])};
    };
    const double square = largestSquare(view, points);
    if (!(square > 0)) {
        return {};
    }
    const Cubic above = cubic(ABOVE);
    const Cubic below = cubic(BELOW);
    const Cubic distortion = nearestTo([&](double x) { return valueOf(above, x) / valueOf(below, x); }, square);
    std::vector<Cubic> denominators{{0, 0, 0}};
    for (const double part : LEAST_AT) {
        // (1 - x / least)^2 with its lowest place raised, 1 at x = 0.
        const double least = part * square;
        denominators.push_back({-2 * (1 - LEAST) / least, (1 - LEAST) / (least * least), 0});
    }
    std::vector<PictureView> starts;
    for (const Cubic& denominator : denominators) {
        const Cubic numerator =
            nearestTo([&](double x) { return valueOf(distortion, x) * valueOf(denominator, x); }, square);
        PictureView start = view;
        for (std::size_t i = 0; i < ABOVE.size(); ++i) {
            start.lens.setCoefficient(ABOVE[i], numerator[i]);
            start.lens.setCoefficient(BELOW[i], denominator[i]);
        }
        starts.push_back(start);
    }
    return starts;
}

}  // namespace Veltrani::DisplayFitDetail
