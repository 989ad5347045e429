#include "KelvoControl/detail/UnivariateFunctions.h"

#include <algorithm>
#include <cstddef>

namespace Veltrani::KelvoControlDetail {

namespace {

/// Finds where the sign changes between two places where it differs; returns the last place before the change.
double signChange(const Polynomial& polynomial, double low, double high) {
    const bool positiveAtLow = valueAt(polynomial, low) > 0;
    for (;;) {
        const double middle = low + (high - low) / 2;
        if (middle <= low || middle >= high) {
            return low;
        }
        ((valueAt(polynomial, middle) > 0) == positiveAtLow ? low : high) = middle;
    }
}

/// Returns all sign changes between 0 and `limit`, in order. Between two extrema a polynomial is monotone and has at
/// most one; the extrema are the sign changes of its derivative.
std::vector<double> signChanges(const Polynomial& polynomial, double limit) {
    if (polynomial.size() < 2) {
        return {};
    }
    std::vector<double> places = signChanges(derivative(polynomial), limit);
    places.push_back(limit);
    std::vector<double> changes;
    double low = 0;
    for (const double high : places) {
        if ((valueAt(polynomial, low) > 0) != (valueAt(polynomial, high) > 0)) {
            changes.push_back(signChange(polynomial, low, high));
        }
        low = high;
    }
    return changes;
}

}  // namespace

double valueAt(const Polynomial& polynomial, double x) {
    double value = 0;
    for (auto coefficient = polynomial.rbegin(); coefficient != polynomial.rend(); ++coefficient) {
        value = value * x + *coefficient;
    }
    return value;
}

Polynomial derivative(const Polynomial& polynomial) {
    Polynomial result;
    for (std::size_t power = 1; power < polynomial.size(); ++power) {
        result.push_back(static_cast<double>(power) * polynomial[power]);
    }
    return result;
}

Polynomial sum(const Polynomial& a, const Polynomial& b) {
    Polynomial result(std::max(a.size(), b.size()));
    std::copy(a.begin(), a.end(), result.begin());
    for (std::size_t power = 0; power < b.size(); ++power) {
        result[power] += b[power];
    }
    return result;
}

Polynomial product(const Polynomial& a, const Polynomial& b) {
    if (a.empty() || b.empty()) {
        return {};
    }
    Polynomial result(a.size() + b.size() - 1);
    for (std::size_t i = 0; i < a.size(); ++i) {
        for (std::size_t j = 0; j < b.size(); ++j) {
            result[i + j] += a[i] * b[j];
        }
    }
    return result;
}

double positiveUpTo(const Polynomial& polynomial, double limit) {
    if (!(valueAt(polynomial, 0) > 0)) {
        return 0;
    }
    const std::vector<double> changes = signChanges(polynomial, limit);
    return changes.empty() ? limit : changes.front();
}

}  // namespace Veltrani::KelvoControlDetail
