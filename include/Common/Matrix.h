#pragma once

#include "Common/Point.h"

#include <array>
#include <cstddef>

/// A square matrix of N x N numbers, stored row by row, acting on column vectors: `m * v` is the product with the
/// column v.
///
/// A default-constructed matrix is the identity. Element (r, c) is stored at `data()[N * r + c]`.
template <class T, std::size_t N>
class Matrix {
public:
    constexpr Matrix() {
        for (std::size_t i = 0; i < N; ++i) {
            (*this)(i, i) = T(1);
        }
    }

    /// Row r and column c, 0 <= r, c < N; not checked.
    [[nodiscard]] constexpr T& operator()(std::size_t r, std::size_t c) { return m_elements[N * r + c]; }
    [[nodiscard]] constexpr const T& operator()(std::size_t r, std::size_t c) const { return m_elements[N * r + c]; }

    /// N * N elements, row by row.
    [[nodiscard]] const T* data() const { return m_elements.data(); }

    friend constexpr bool operator==(const Matrix& a, const Matrix& b) { return a.m_elements == b.m_elements; }

private:
    std::array<T, N * N> m_elements{};
};

/// The product with a column vector; each component is summed from zero, first column first.
template <class T, std::size_t N>
[[nodiscard]] constexpr Point<T, N> operator*(const Matrix<T, N>& m, const Point<T, N>& v) {
    Point<T, N> product;
    for (std::size_t r = 0; r < N; ++r) {
        for (std::size_t c = 0; c < N; ++c) {
            product[r] += m(r, c) * v[c];
        }
    }
    return product;
}

/// The product of two matrices; (a * b) * v applies b first.
template <class T, std::size_t N>
[[nodiscard]] constexpr Matrix<T, N> operator*(const Matrix<T, N>& a, const Matrix<T, N>& b) {
    Matrix<T, N> product;
    for (std::size_t r = 0; r < N; ++r) {
        for (std::size_t c = 0; c < N; ++c) {
            T sum{};
            for (std::size_t k = 0; k < N; ++k) {
                sum += a(r, k) * b(k, c);
            }
            product(r, c) = sum;
        }
    }
    return product;
}

/// Returns the matrix with rows and columns exchanged: the inverse of a rotation.
template <class T, std::size_t N>
[[nodiscard]] constexpr Matrix<T, N> transpose(const Matrix<T, N>& m) {
    Matrix<T, N> result;
    for (std::size_t r = 0; r < N; ++r) {
        for (std::size_t c = 0; c < N; ++c) {
            result(r, c) = m(c, r);
        }
    }
    return result;
}

/// Its rows: "[(1, 0), (0, 1)]", with all digits.
template <class Char, class Traits, class T, std::size_t N>
std::basic_ostream<Char, Traits>& operator<<(std::basic_ostream<Char, Traits>& out, const Matrix<T, N>& m) {
    for (std::size_t r = 0; r < N; ++r) {
        Point<T, N> row;
        for (std::size_t c = 0; c < N; ++c) {
            row[c] = m(r, c);
        }
        out << (r == 0 ? "[" : ", ") << row;
    }
    return out << "]";
}

namespace Veltrani {

/// Returns the right-handed rotation by an angle (radians) about a unit axis k, in Rodrigues form: cos(angle) I +
/// sin(angle) [k]x + (1 - cos(angle)) k k^T.
[[nodiscard]] Matrix<double, 3> rotation(double angle, const Point<double, 3>& unitAxis);

/// Returns the orientation of a projector, a screen or a mirror from its three angles (radians): R(-z, Z) R(x, X) R(y,
/// Y), with R the right-handed rotation about the named world axis. A positive z turns to the right (growing azimuth),
/// a positive x tilts up, a positive y rolls the right side down.
[[nodiscard]] Matrix<double, 3> rotationZXY(double z, double x, double y);

}  // namespace Veltrani
