#include "Arrays.h"

#include "Refusals.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <new>
#include <utility>

namespace py = pybind11;

namespace {

/// The shortest text that reads back as the number.
std::string textOf(double number) {
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
    return {text.data(), end};
}

/// Looks into lists as deep as numpy has made axes of them, where it drops the masks.
bool hasMasked(py::handle value, py::handle maskedArray, py::ssize_t depth) {
    if (py::isinstance(value, maskedArray)) {
        return py::module_::import("numpy.ma").attr("is_masked")(value).cast<bool>();
    }
    if (depth == 0 || !(py::isinstance<py::list>(value) || py::isinstance<py::tuple>(value))) {
        return false;
    }
    return std::any_of(value.begin(), value.end(),
                       [&](py::handle part) { return hasMasked(part, maskedArray, depth - 1); });
}

void refuseMasked(py::handle value, const py::array& array, const std::string& name) {
    // Most are plain arrays.
    if (py::type::handle_of(value).is(py::type::handle_of(array))) {
        return;
    }
    if (hasMasked(value, py::module_::import("numpy.ma").attr("MaskedArray"), array.ndim())) {
        throw ArgumentFault{name + ": expected numbers of which none is masked: leave out the rows that are"};
    }
}

std::string typeOf(py::handle value) {
    return py::cast<std::string>(py::str(py::type::of(value).attr("__name__")));
}

/// The first of some objects that is no number, with its place: "NoneType at [1, 0]".
std::string firstOf(const py::array& objects) {
    const py::object flat = objects.attr("flat");
    for (py::ssize_t i = 0; i < objects.size(); ++i) {
        const py::object place = flat.attr("coords");
        const py::object one = flat.attr("__next__")();
        if (!PyFloat_Check(one.ptr()) && !PyLong_Check(one.ptr())) {
            return typeOf(one) + " at " + py::cast<std::string>(py::str(py::list(place)));
        }
    }
    return "whole numbers beyond 64 bits";
}

/// What numpy has made no numbers of.
std::string foundIn(py::handle value, const py::array& array) {
    if (array.ndim() == 0 && !py::isinstance<py::array>(value)) {
        return PyLong_CheckExact(value.ptr()) ? "a whole number beyond 64 bits" : typeOf(value);
    }
    if (array.dtype().kind() == 'O' && !py::isinstance<py::array>(value)) {
        return firstOf(array);
    }
    return "an array of " + py::cast<std::string>(py::str(array.dtype()));
}

/// Any array of whole numbers or fractions.
py::array numericArray(py::handle value, const std::string& name, const char* expected) {
    openNumpy();
    const py::array array = py::array::ensure(value);
    if (!array) {
        throw ArgumentFault{name + ": expected an array of numbers, in rows of equal length; found " + typeOf(value),
                            true};
    }
    if (const char kind = array.dtype().kind(); kind != 'f' && kind != 'i' && kind != 'u') {
        throw ArgumentFault{name + ": expected " + expected + ", found " + foundIn(value, array), true};
    }
    refuseMasked(value, array, name);
    return array;
}

DoubleArray doublesOf(py::handle value, const std::string& name, const char* expected = "numbers") {
    const py::array array = numericArray(value, name, expected);
    try {
        // Not `ensure`, which would hide that memory has run out.
        return py::reinterpret_borrow<DoubleArray>(
            py::array_t<double, py::array::c_style | py::array::forcecast>(py::reinterpret_borrow<py::object>(array)));
    } catch (const py::error_already_set& fault) {
        // A warning that counts as an error, such as that a longer number does not fit.
        if (!fault.matches(PyExc_Warning)) {
            throw;
        }
        throw ArgumentFault{name + ": expected numbers that doubles hold, found an array of " +
                            py::cast<std::string>(py::str(array.dtype()))};
    }
}

Shape shapeOf(const py::array& array) {
    return {array.shape(), array.shape() + array.ndim()};
}

}  // namespace

void openNumpy() {
    // Behind the lock of the interpreter.
    static bool isOpen = false;
    if (!isOpen) {
        // The lock is given up in here, by whichever threads get here first; behind it, all is there, and it is kept.
        py::module_::import("numpy.core.multiarray");
        static_cast<void>(py::detail::npy_api::get());
        isOpen = true;
    }
}

std::string textOf(const Shape& shape) {
    std::string text = "(";
    for (std::size_t i = 0; i < shape.size(); ++i) {
        text += (i > 0 ? ", " : "") + std::to_string(shape[i]);
    }
    return text + (shape.size() == 1 ? ",)" : ")");
}

const Shape& requireAddressable(const Shape& shape, std::size_t bytesEach) {
    std::size_t room = static_cast<std::size_t>(std::numeric_limits<py::ssize_t>::max()) / bytesEach;
    for (const py::ssize_t length : shape) {
        const auto times = std::max<std::size_t>(1, static_cast<std::size_t>(length));
        if (times > room) {
            throw std::bad_alloc();
        }
        room /= times;
    }
    return shape;
}

std::string textOf(std::span<const double> numbers) {
    std::string text;
    for (const double number : numbers) {
        text += (text.empty() ? "" : ", ") + textOf(number);
    }
    return '(' + text + ')';
}

Shape extended(Shape shape, py::ssize_t columns) {
    shape.push_back(columns);
    return shape;
}

Rows::Rows(py::handle value, const char* name, py::ssize_t columns)
    : m_name(name), m_array(doublesOf(value, name)), m_columns(static_cast<std::size_t>(columns)) {
    Shape shape = shapeOf(m_array);
    if (shape.empty() || shape.back() != columns) {
        throw ArgumentFault{m_name + ": expected an array of the shape (..., " + std::to_string(columns) + "), found " +
                            textOf(shape)};
    }
    shape.pop_back();
    m_shape = std::move(shape);
    m_count = static_cast<std::size_t>(m_array.size() / columns);
    m_numbers = m_array.data();
}

std::string Rows::expectedWithin(std::size_t i, double limit) const {
    const double* const row = m_numbers + i * m_columns;
    const bool isFinite = std::all_of(row, row + m_columns, [](double number) { return std::isfinite(number); });
    return isFinite ? "numbers up to " + textOf(limit) : "finite numbers";
}

void Rows::refuse(std::size_t i, const std::string& expected) const {
    const std::string numbers = textOf(std::span(m_numbers + i * m_columns, m_columns));
    std::string place;
    for (std::size_t axis = m_shape.size(); axis > 0; --axis) {
        const auto length = static_cast<std::size_t>(m_shape[axis - 1]);
        place = std::to_string(i % length) + (place.empty() ? "" : ", ") + place;
        i /= length;
    }
    throw ArgumentFault{m_name + (place.empty() ? "" : "[" + place + "]") + ": expected " + expected + ", found " +
                        numbers};
}

std::vector<double> numbersOf(py::handle value, const char* name, py::ssize_t length, double limit) {
    const DoubleArray array = doublesOf(value, name);
    if (array.ndim() != 1 || (length >= 0 && array.size() != length)) {
        throw ArgumentFault{std::string(name) + ": expected " +
                            (length < 0 ? "a list of numbers" : std::to_string(length) + " numbers") +
                            ", found an array of the shape " + textOf(shapeOf(array))};
    }
    std::vector<double> numbers(array.data(), array.data() + array.size());
    const auto wrong =
        std::find_if(numbers.begin(), numbers.end(), [limit](double number) { return !(std::abs(number) <= limit); });
    if (wrong != numbers.end()) {
        throw ArgumentFault{std::string(name) + '[' + std::to_string(wrong - numbers.begin()) + "]: expected a " +
                            (std::isfinite(*wrong) ? "number up to " + textOf(limit) : "finite number") + ", found " +
                            textOf(*wrong)};
    }
    return numbers;
}

double numberOf(py::handle value, const char* name) {
    const DoubleArray array = doublesOf(value, name, "a number");
    if (array.ndim() != 0) {
        throw ArgumentFault{std::string(name) + ": expected a number, found an array of the shape " +
                            textOf(shapeOf(array))};
    }
    if (!std::isfinite(*array.data())) {
        throw ArgumentFault{std::string(name) + ": expected a finite number, found " + textOf(*array.data())};
    }
    return *array.data();
}
