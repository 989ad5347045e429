#include "MeasuredArrays.h"

#include "Configuration/XMLConfigFile.h"
#include "DisplayReport/channels/ChannelChoice.h"
#include "Entry.h"
#include "Refusals.h"

#include <algorithm>

namespace py = pybind11;

namespace {

using Veltrani::DisplayReport::ChannelChoice;
using Veltrani::FitSession::MeasuredPoint;
using Veltrani::FitSession::MeasuredPoints;

/// As fits take them: no coordinate, and no square of a deviation, is larger.
constexpr double LARGEST = 1e12;
constexpr double LARGEST_DEVIATION = 1e6;
/// Its square is a number that can be divided by.
constexpr double SMALLEST_DEVIATION = 1e-100;
/// Points between two looks at the clock.
constexpr std::size_t POINTS_AT_ONCE = 1024;

void requireShape(const Rows& rows, const std::vector<Shape>& shapes) {
    if (std::find(shapes.begin(), shapes.end(), rows.shape()) == shapes.end()) {
        const py::ssize_t columns = rows.columns();
        std::string expected;
        for (const Shape& shape : shapes) {
            expected += (expected.empty() ? "" : " or ") + textOf(extended(shape, columns));
        }
        throw ArgumentFault{rows.name() + ": expected an array of the shape " + expected + ", found " +
                            textOf(extended(rows.shape(), columns))};
    }
}

/// One row serves all points.
std::size_t rowFor(const Rows& rows, std::size_t i) {
    return rows.shape().empty() ? 0 : i;
}

Matrix<double, 3> diagonalOf(const Rows& deviations, std::size_t row) {
    Matrix<double, 3> matrix;
    const Point<double, 3> stated = deviations.at<3>(row);
    for (std::size_t axis = 0; axis < 3; ++axis) {
        if (!(stated[axis] >= SMALLEST_DEVIATION && stated[axis] <= LARGEST_DEVIATION)) {
            deviations.refuse(row, "numbers from 1e-100 to 1e6");
        }
        matrix(axis, axis) = stated[axis] * stated[axis];
    }
    return matrix;
}

}  // namespace

MeasuredArrays::MeasuredArrays(const py::tuple& parts, const std::string& place)
    : m_place(place),
      m_channel(parts[0].cast<std::string>()),
      m_picture(list(parts[1], "picture", 2)),
      m_points(list(parts[2], "points", 3)),
      m_deviations(some(parts[3], "deviations", 3)),
      m_covariances(some(parts[4], "covariances", 3)),
      m_pictureDeviations(some(parts[5], "picture_deviations", 2)),
      m_set(parts[6].cast<std::string>()) {
    const auto count = static_cast<py::ssize_t>(m_picture.count());
    requireShape(m_points, {{count}});
    if (m_deviations) {
        requireShape(*m_deviations, {{}, {count}});
    }
    if (m_covariances) {
        requireShape(*m_covariances, {{3}, {count, 3}});
    }
    if (m_pictureDeviations) {
        requireShape(*m_pictureDeviations, {{}, {count}});
    }
}

void MeasuredArrays::addTo(const XMLConfigFile& config, MeasuredPoints& measured) const {
    MeasuredPoint point;
    point.channel = ChannelChoice::of(config, m_channel).index;
    point.set = m_set;
    for (std::size_t i = 0; i < count(); ++i) {
        if (i % POINTS_AT_ONCE == 0) {
            Entry::pulse();
        }
        point.picture = m_picture.at<2>(i, LARGEST);
        point.world = m_points.at<3>(i, LARGEST);
        point.covariance = covariance(i);
        point.pictureDeviation = pictureDeviation(i);
        // Rows are known by their numbers from 1.
        point.row = ++measured.rows;
        measured.points.push_back(point);
    }
}

Rows MeasuredArrays::rows(py::handle value, const char* name, py::ssize_t columns) const {
    return {value, (m_place + '.' + name).c_str(), columns};
}

Rows MeasuredArrays::list(py::handle value, const char* name, py::ssize_t columns) const {
    Rows found = rows(value, name, columns);
    if (found.shape().size() != 1) {
        throw ArgumentFault{found.name() + ": expected an array of the shape (n, " + std::to_string(columns) +
                            "), found " + textOf(extended(found.shape(), columns))};
    }
    return found;
}

std::optional<Rows> MeasuredArrays::some(py::handle value, const char* name, py::ssize_t columns) const {
    return value.is_none() ? std::nullopt : std::optional(rows(value, name, columns));
}

std::optional<Matrix<double, 3>> MeasuredArrays::covariance(std::size_t i) const {
    if (m_deviations) {
        return diagonalOf(*m_deviations, rowFor(*m_deviations, i));
    }
    if (!m_covariances) {
        return std::nullopt;
    }
    Matrix<double, 3> matrix;
    for (std::size_t row = 0; row < 3; ++row) {
        const auto numbers = m_covariances->at<3>(m_covariances->shape().size() == 1 ? row : 3 * i + row, LARGEST);
        for (std::size_t column = 0; column < 3; ++column) {
            matrix(row, column) = numbers[column];
        }
    }
    return matrix;
}

std::optional<Point<double, 2>> MeasuredArrays::pictureDeviation(std::size_t i) const {
    if (!m_pictureDeviations) {
        return std::nullopt;
    }
    const std::size_t row = rowFor(*m_pictureDeviations, i);
    const auto deviation = m_pictureDeviations->at<2>(row, LARGEST);
    // A place that is exact needs a point that is not.
    const bool mayBeZero = m_deviations || m_covariances;
    if (!(std::min(deviation[0], deviation[1]) >= (mayBeZero ? 0 : SMALLEST_DEVIATION))) {
        m_pictureDeviations->refuse(
            row, mayBeZero ? "numbers that are not below 0" : "numbers above 0, as no other deviations are stated");
    }
    return deviation;
}

ControlArrays::ControlArrays(const py::tuple& parts, const std::string& place)
    : m_measured(parts[0], (place + ".measured").c_str(), 3),
      m_known(parts[1], (place + ".known").c_str(), 3),
      m_set(parts[2].cast<std::string>()) {
    if (m_measured.shape().size() != 1 || m_known.shape() != m_measured.shape()) {
        throw ArgumentFault{place + ": expected two arrays of the same shape (n, 3), found " +
                            textOf(extended(m_measured.shape(), 3)) + " and " + textOf(extended(m_known.shape(), 3))};
    }
}

void ControlArrays::addTo(MeasuredPoints& points) const {
    for (std::size_t i = 0; i < m_measured.count(); ++i) {
        if (i % POINTS_AT_ONCE == 0) {
            Entry::pulse();
        }
        const int number = static_cast<int>(points.controls.size()) + 1;
        points.controls.push_back({m_set, m_measured.at<3>(i, LARGEST), m_known.at<3>(i, LARGEST), number});
    }
}
