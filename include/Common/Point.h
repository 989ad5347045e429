#pragma once

#include <array>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <iosfwd>
#include <limits>
#include <type_traits>

/// A fixed-size coordinate tuple: a position, a direction or a grid index.
///
/// `Point<double, 3>` is a position or direction in the world frame (+x right, +y forward, +z up, native length units),
/// `Point<double, 2>` a normalised picture or screen coordinate, `Point<int, 2>` a grid index (column, row) or a size
/// in pixels (width, height).
///
/// A default-constructed point is all zero. Equality is plain `==` per component: -0.0 equals 0.0, and a point with a
/// NaN is unequal even to itself. `operator<` is lexicographic, first component first, so that a point keys an ordered
/// map; it is a strict weak ordering only while no component is NaN.
template <class T, std::size_t N>
class Point {
    static_assert(N > 0, "a point has at least one component");

    template <class C>
    static constexpr bool IsComponent =
        std::convertible_to<C, T> && !(std::is_floating_point_v<C> && std::is_integral_v<T>);

public:
    using value_type = T;

    constexpr Point() = default;

    /// A point of exactly N components, whole numbers included: `Point<double, 3>{0, 0, z}`. A fraction for a
    /// whole-numbered component is refused.
    template <class... Components>
    requires(sizeof...(Components) == N && (IsComponent<Components> && ...)) constexpr Point(Components... components)
        : m_components{static_cast<T>(components)...} {}

    [[nodiscard]] static constexpr std::size_t size() { return N; }

    /// Component i, 0 <= i < N; not checked.
    [[nodiscard]] constexpr T& operator[](std::size_t i) { return m_components[i]; }
    [[nodiscard]] constexpr const T& operator[](std::size_t i) const { return m_components[i]; }

    friend constexpr bool operator==(const Point& a, const Point& b) {
        for (std::size_t i = 0; i < N; ++i) {
            if (!(a[i] == b[i])) {
                return false;
            }
        }
        return true;
    }

    friend constexpr bool operator<(const Point& a, const Point& b) {
        for (std::size_t i = 0; i < N; ++i) {
            if (a[i] < b[i]) {
                return true;
            }
            if (b[i] < a[i]) {
                return false;
            }
        }
        return false;
    }

    constexpr Point& operator+=(const Point& other) {
        for (std::size_t i = 0; i < N; ++i) {
            m_components[i] += other[i];
        }
        return *this;
    }

    constexpr Point& operator-=(const Point& other) {
        for (std::size_t i = 0; i < N; ++i) {
            m_components[i] -= other[i];
        }
        return *this;
    }

    constexpr Point& operator*=(T factor) {
        for (std::size_t i = 0; i < N; ++i) {
            m_components[i] *= factor;
        }
        return *this;
    }

    friend constexpr Point operator+(Point a, const Point& b) { return a += b; }
    friend constexpr Point operator-(Point a, const Point& b) { return a -= b; }
    friend constexpr Point operator-(Point a) { return a *= T(-1); }
    friend constexpr Point operator*(Point a, T factor) { return a *= factor; }
    friend constexpr Point operator*(T factor, Point a) { return a *= factor; }

private:
    std::array<T, N> m_components{};
};

/// Returns the inner product, summed from zero with the first component first; results that must match to the last bit
/// rely on this order.
template <class T, std::size_t N>
[[nodiscard]] constexpr T dot(const Point<T, N>& a, const Point<T, N>& b) {
    T sum{};
    for (std::size_t i = 0; i < N; ++i) {
        sum += a[i] * b[i];
    }
    return sum;
}

/// Returns the right-handed cross product a x b.
template <class T>
[[nodiscard]] constexpr Point<T, 3> cross(const Point<T, 3>& a, const Point<T, 3>& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

/// Returns the Euclidean length.
template <std::floating_point T, std::size_t N>
[[nodiscard]] T norm(const Point<T, N>& a) {
    return std::sqrt(dot(a, a));
}

/// "(1, 0.5, -2)", with all digits, so that a failing comparison shows where two points differ. Code that prints
/// includes the streams itself.
template <class Char, class Traits, class T, std::size_t N>
std::basic_ostream<Char, Traits>& operator<<(std::basic_ostream<Char, Traits>& out, const Point<T, N>& point) {
    const auto precision = out.precision(std::numeric_limits<T>::max_digits10);
    for (std::size_t i = 0; i < N; ++i) {
        out << (i == 0 ? "(" : ", ") << point[i];
    }
    out.precision(precision);
    return out << ")";
}
