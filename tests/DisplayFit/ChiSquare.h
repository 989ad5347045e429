#pragma once

#include <utility>
#include <vector>

/// Bounds of chi-square that hold 99 % of it, by the approximation of Wilson and Hilferty.
[[nodiscard]] std::pair<double, double> chiSquareBand(double degrees);

/// The square of an error in deviations: e^T C^-1 e.
/// @param covariance row by row
[[nodiscard]] double normalisedSquare(const std::vector<double>& error, const std::vector<double>& covariance);
