#pragma once

#include "Arrays.h"
#include "Common/Matrix.h"
#include "FitSession/MeasuredPoints.h"

#include <pybind11/pybind11.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

class XMLConfigFile;

/// Measurements of one channel from one station, as arrays.
class MeasuredArrays {
public:
    /// @param parts channel, picture, points, deviations, covariances, picture deviations, station; None for what is
    ///        not stated
    /// @param place the name of the argument
    MeasuredArrays(const pybind11::tuple& parts, const std::string& place);

    [[nodiscard]] std::size_t count() const { return m_picture.count(); }

    /// In an entry; throws `ArgumentFault`, with the name of the argument and the row, for numbers that no fit takes.
    void addTo(const XMLConfigFile& config, Veltrani::FitSession::MeasuredPoints& measured) const;

private:
    [[nodiscard]] Rows rows(pybind11::handle value, const char* name, pybind11::ssize_t columns) const;
    [[nodiscard]] Rows list(pybind11::handle value, const char* name, pybind11::ssize_t columns) const;
    [[nodiscard]] std::optional<Rows> some(pybind11::handle value, const char* name, pybind11::ssize_t columns) const;
    [[nodiscard]] std::optional<Matrix<double, 3>> covariance(std::size_t i) const;
    [[nodiscard]] std::optional<Point<double, 2>> pictureDeviation(std::size_t i) const;

    std::string m_place;
    std::string m_channel;
    Rows m_picture;
    Rows m_points;
    std::optional<Rows> m_deviations;
    std::optional<Rows> m_covariances;
    std::optional<Rows> m_pictureDeviations;
    std::string m_set;
};

/// Control points of one station, as arrays.
class ControlArrays {
public:
    /// @param parts measured, known, station
    ControlArrays(const pybind11::tuple& parts, const std::string& place);

    /// As that of `MeasuredArrays`.
    void addTo(Veltrani::FitSession::MeasuredPoints& points) const;

private:
    Rows m_measured;
    Rows m_known;
    std::string m_set;
};
