#pragma once

#include "FitSession/FitReport.h"

#include <pybind11/pybind11.h>

#include <cstddef>

/// What came of a fit, as the records of the script take it, member by member.
/// @param firstRow the number of the first row that was measured: of rows of arrays, which are counted from 0
[[nodiscard]] pybind11::tuple tupleOf(const Veltrani::FitSession::FitReport& report, std::size_t firstRow);

/// Geometry of a channel: position, orientation, frustum, area, lens.
[[nodiscard]] pybind11::tuple tupleOf(const Veltrani::DisplayFit::ChannelValues& values);
/// The way back.
[[nodiscard]] Veltrani::DisplayFit::ChannelValues valuesFrom(const pybind11::tuple& values);
