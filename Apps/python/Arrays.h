#pragma once

#include "Common/Point.h"

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <span>
#include <string>
#include <vector>

using Shape = std::vector<pybind11::ssize_t>;
using DoubleArray = pybind11::array_t<double, pybind11::array::c_style>;
using BoolArray = pybind11::array_t<bool, pybind11::array::c_style>;

/// An argument of numbers whose last axis has a fixed length, such as points: (..., 3). An array of doubles in rows,
/// one behind the other, is used where it lies; anything else is copied.
class Rows {
public:
    /// Throws `ArgumentFault`, naming the argument, unless it is numbers of this shape.
    Rows(pybind11::handle value, const char* name, pybind11::ssize_t columns);

    [[nodiscard]] std::size_t count() const { return m_count; }
    /// Of the axes before the last.
    [[nodiscard]] const Shape& shape() const { return m_shape; }
    /// Of the last axis.
    [[nodiscard]] pybind11::ssize_t columns() const { return static_cast<pybind11::ssize_t>(m_columns); }
    [[nodiscard]] const std::string& name() const { return m_name; }

    /// The square of the square of a longer distance, which surfaces compute with, is hardly a number any more.
    static constexpr double FARTHEST = 1e60;

    /// Row i; throws `ArgumentFault`, naming argument and row, when one of its numbers is not finite or larger in size
    /// than the limit. Needs no Python.
    template <std::size_t N>
    [[nodiscard]] Point<double, N> at(std::size_t i, double limit = std::numeric_limits<double>::max()) const {
        Point<double, N> row;
        const double* const numbers = m_numbers + i * N;
        bool isWithin = true;
        for (std::size_t k = 0; k < N; ++k) {
            row[k] = numbers[k];
            isWithin = isWithin && std::abs(numbers[k]) <= limit;
        }
        if (!isWithin) {
            refuse(i, expectedWithin(i, limit));
        }
        return row;
    }

    /// Throws `ArgumentFault`, naming argument and row: what was expected, and the numbers that were found.
    [[noreturn]] void refuse(std::size_t i, const std::string& expected) const;

private:
    [[nodiscard]] std::string expectedWithin(std::size_t i, double limit) const;

    std::string m_name;
    DoubleArray m_array;
    Shape m_shape;
    std::size_t m_count = 0;
    std::size_t m_columns;
    const double* m_numbers = nullptr;
};

/// "(2, 3)", as Python writes it.
[[nodiscard]] std::string textOf(const Shape& shape);
/// "(0.5, nan)", each number as short as reads back as the same.
[[nodiscard]] std::string textOf(std::span<const double> numbers);

/// A shape with one more axis at its end.
[[nodiscard]] Shape extended(Shape shape, pybind11::ssize_t columns);

/// Returns the shape; throws `std::bad_alloc` for more elements than can be addressed.
[[nodiscard]] const Shape& requireAddressable(const Shape& shape, std::size_t bytesEach);

/// Before pybind11 makes or looks at an array: its tables of numpy must be filled by one thread, which would keep the
/// interpreter from the others while numpy is imported, and they it from that one.
void openNumpy();

/// A result that is filled row by row without Python.
template <class T>
class ResultRows {
public:
    /// Throws `std::bad_alloc` for more than any memory has.
    explicit ResultRows(const Shape& shape) : m_array(made(shape)), m_numbers(m_array.mutable_data()) {}

    [[nodiscard]] T* at(std::size_t i) { return m_numbers + i; }

    template <std::size_t N>
    void set(std::size_t i, const Point<T, N>& row) {
        for (std::size_t k = 0; k < N; ++k) {
            m_numbers[i * N + k] = row[k];
        }
    }

    [[nodiscard]] pybind11::array array() const { return m_array; }

private:
    using Array = pybind11::array_t<T, pybind11::array::c_style>;

    static Array made(const Shape& shape) {
        openNumpy();
        return Array(requireAddressable(shape, sizeof(T)));
    }

    Array m_array;
    T* m_numbers;
};

/// The result of a list of points: (n, N).
template <class T, std::size_t N>
[[nodiscard]] pybind11::array arrayOf(std::span<const Point<T, N>> points) {
    ResultRows<T> rows({static_cast<pybind11::ssize_t>(points.size()), static_cast<pybind11::ssize_t>(N)});
    for (std::size_t i = 0; i < points.size(); ++i) {
        rows.set(i, points[i]);
    }
    return rows.array();
}

/// A list of finite numbers: of this length, or of any when it is negative; none larger in size than the limit.
[[nodiscard]] std::vector<double> numbersOf(pybind11::handle value, const char* name, pybind11::ssize_t length,
                                            double limit = std::numeric_limits<double>::max());

/// A single finite number.
[[nodiscard]] double numberOf(pybind11::handle value, const char* name);

/// A row of nothing.
template <std::size_t N>
[[nodiscard]] Point<double, N> missing() {
    Point<double, N> row;
    for (std::size_t k = 0; k < N; ++k) {
        row[k] = std::numeric_limits<double>::quiet_NaN();
    }
    return row;
}
