#pragma once

#include <vector>

namespace KelvoControlDetail {

/// A polynomial in one variable by its coefficients, constant first. Empty is zero.
using Polynomial = std::vector<double>;

[[nodiscard]] double valueAt(const Polynomial& polynomial, double x);
[[nodiscard]] Polynomial derivative(const Polynomial& polynomial);
[[nodiscard]] Polynomial sum(const Polynomial& a, const Polynomial& b);
[[nodiscard]] Polynomial product(const Polynomial& a, const Polynomial& b);

/// Up to where a polynomial that is positive at zero stays so: its smallest root above zero, or `limit` when there is
/// none before it. Zero when it is not positive at zero.
[[nodiscard]] double positiveUpTo(const Polynomial& polynomial, double limit);

}  // namespace KelvoControlDetail
