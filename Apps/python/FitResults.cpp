#include "FitResults.h"

#include "Arrays.h"

#include <pybind11/stl.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace py = pybind11;

namespace {

using namespace Veltrani::DisplayFit;
using namespace Veltrani::FitSession;
using Veltrani::LensNumbers;

/// Between two looks for signals, whose handlers may end the call.
constexpr std::size_t RESIDUALS_PER_CHECK = 4096;

template <class T, std::size_t N>
py::tuple coordinates(const Point<T, N>& point) {
    py::tuple numbers(N);
    for (std::size_t i = 0; i < N; ++i) {
        numbers[i] = point[i];
    }
    return numbers;
}

template <std::size_t N>
Point<double, N> pointFrom(py::handle value, const char* name) {
    const std::vector<double> numbers = numbersOf(value, name, static_cast<py::ssize_t>(N));
    Point<double, N> point;
    for (std::size_t i = 0; i < N; ++i) {
        point[i] = numbers[i];
    }
    return point;
}

py::array squareOf(const std::vector<double>& numbers, std::size_t side) {
    ResultRows<double> rows({static_cast<py::ssize_t>(side), static_cast<py::ssize_t>(side)});
    std::copy(numbers.begin(), numbers.end(), rows.at(0));
    return rows.array();
}

const char* nameOf(LensNumbers::Kind kind) {
    return kind == LensNumbers::Kind::FISHEYE ? "Fisheye" : "BrownConrady";
}

py::object lensOf(const std::optional<LensNumbers>& lens) {
    if (!lens) {
        return py::none();
    }
    return py::make_tuple(nameOf(lens->kind), py::make_tuple(lens->imageWidth, lens->imageHeight), lens->fx, lens->fy,
                          lens->cx, lens->cy, py::tuple(py::cast(lens->distortion)));
}

LensNumbers lensFrom(const py::tuple& parts) {
    LensNumbers lens;
    lens.kind = parts[0].cast<std::string>() == nameOf(LensNumbers::Kind::FISHEYE) ? LensNumbers::Kind::FISHEYE
                                                                                   : LensNumbers::Kind::BROWN_CONRADY;
    const auto size = parts[1].cast<std::pair<int, int>>();
    lens.imageWidth = size.first;
    lens.imageHeight = size.second;
    const auto numbers = numbersOf(py::make_tuple(parts[2], parts[3], parts[4], parts[5]), "lens", 4);
    lens.fx = numbers[0];
    lens.fy = numbers[1];
    lens.cx = numbers[2];
    lens.cy = numbers[3];
    lens.distortion = numbersOf(parts[6], "distortion", -1);
    return lens;
}

template <class List, class Make>
py::tuple tupleOfEach(const List& list, Make make) {
    py::tuple parts(list.size());
    std::size_t i = 0;
    for (const auto& part : list) {
        parts[i++] = make(part);
    }
    return parts;
}

py::tuple findingsOf(const std::vector<FitFinding>& findings) {
    return tupleOfEach(findings, [](const FitFinding& finding) {
        return py::make_tuple(FitFinding::nameOf(finding.kind), FitReport::nameOf(finding.outcome), finding.text,
                              finding.remedy);
    });
}

py::tuple valuesOf(const std::vector<FittedValue>& values) {
    return tupleOfEach(values, [](const FittedValue& value) {
        return py::make_tuple(value.name, FittedValue::nameOf(value.quantity), value.before, value.after,
                              py::cast(value.deviation));
    });
}

py::tuple summaryOf(const ResidualSummary& summary) {
    return py::make_tuple(summary.rms, summary.median, summary.largest, summary.unmapped);
}

py::object worstOf(const ChannelFit& fit) {
    if (!fit.isSolved) {
        return py::none();
    }
    const WorstCombination& worst = fit.worst;
    return py::make_tuple(worst.text, worst.remedy, worst.deviatingName, FittedValue::nameOf(worst.quantity),
                          worst.deviation, worst.scaledCondition, py::tuple(py::cast(worst.solvedNames)),
                          py::tuple(py::cast(worst.weights)));
}

/// Rows of a table, or of arrays that are counted from 0.
py::tuple rowsOf(const std::vector<std::size_t>& lines, std::size_t firstRow) {
    return tupleOfEach(lines, [firstRow](std::size_t line) { return py::int_(line - firstRow); });
}

/// The residuals of a channel as arrays.
py::tuple residualsOf(const FitReport& report, const ChannelFit& fit, std::size_t firstRow) {
    const Shape shape{static_cast<py::ssize_t>(fit.residuals.size())};
    ResultRows<double> picture(extended(shape, 2));
    ResultRows<double> points(extended(shape, 3));
    ResultRows<double> pixelsBefore(extended(shape, 2));
    ResultRows<double> pixelsAfter(extended(shape, 2));
    ResultRows<double> screenBefore(extended(shape, 3));
    ResultRows<double> screenAfter(extended(shape, 3));
    ResultRows<double> sizes(shape);
    ResultRows<bool> outliers(shape);
    py::tuple rows(fit.residuals.size());
    py::tuple sets(fit.residuals.size());
    for (std::size_t i = 0; i < fit.residuals.size(); ++i) {
        if (i % RESIDUALS_PER_CHECK == 0 && PyErr_CheckSignals() != 0) {
            throw py::error_already_set();
        }
        const PointResidual& residual = fit.residuals[i];
        const MeasuredPoint& point = report.combined.points.at(residual.point);
        rows[i] = rowsOf(report.combined.lines.at(residual.point), firstRow);
        sets[i] = point.set;
        picture.set(i, point.picture);
        points.set(i, point.world);
        pixelsBefore.set(i, residual.pixelsBefore);
        pixelsAfter.set(i, residual.pixelsAfter);
        screenBefore.set(i, residual.screenBefore);
        screenAfter.set(i, residual.screenAfter);
        *sizes.at(i) = residual.size;
        *outliers.at(i) = residual.isOutlier;
    }
    return py::make_tuple(rows, sets, picture.array(), points.array(), pixelsBefore.array(), pixelsAfter.array(),
                          screenBefore.array(), screenAfter.array(), sizes.array(), outliers.array());
}

py::tuple channelOf(const FitReport& report, const ChannelFit& fit, std::size_t firstRow) {
    const auto solved = static_cast<std::size_t>(std::lround(std::sqrt(fit.covariance.size())));
    return py::make_tuple(
        fit.name, fit.projectorId, FitReport::nameOf(fit.outcome), fit.isSolved,
        py::tuple(py::cast(FitReport::namesOf(fit.solved))), fit.holdsSquarePixels, fit.holdsHorizontalShift,
        fit.outliers, fit.degreesOfFreedom, fit.residualFactor, fit.hasStatedDeviations, fit.iterations,
        summaryOf(fit.pixelsBefore), summaryOf(fit.pixelsAfter), summaryOf(fit.screenBefore),
        summaryOf(fit.screenAfter), valuesOf(fit.values), squareOf(fit.covariance, solved), worstOf(fit),
        findingsOf(fit.findings), residualsOf(report, fit, firstRow), tupleOf(fit.before), tupleOf(fit.after));
}

py::tuple frameOf(const Registration& frame, std::size_t firstRow) {
    const Shape shape{static_cast<py::ssize_t>(frame.deviations.size())};
    ResultRows<double> distances(shape);
    std::vector<std::size_t> lines;
    for (std::size_t i = 0; i < frame.deviations.size(); ++i) {
        *distances.at(i) = frame.deviations[i].distance;
        lines.push_back(static_cast<std::size_t>(frame.deviations[i].line));
    }
    return py::make_tuple(frame.set, frame.scale, squareOf({frame.rotation.data(), frame.rotation.data() + 9}, 3),
                          coordinates(frame.translation), frame.rms, distances.array(), rowsOf(lines, firstRow),
                          py::tuple(py::cast(frame.remarks)));
}

}  // namespace

py::tuple tupleOf(const ChannelValues& values) {
    const FrustumAngles& frustum = values.frustum;
    const AreaBounds& area = values.area;
    return py::make_tuple(coordinates(values.position), coordinates(values.orientation),
                          py::make_tuple(frustum.left, frustum.right, frustum.bottom, frustum.top),
                          py::make_tuple(area.left, area.right, area.bottom, area.top), lensOf(values.lens));
}

ChannelValues valuesFrom(const py::tuple& values) {
    ChannelValues numbers;
    numbers.position = pointFrom<3>(values[0], "position");
    numbers.orientation = pointFrom<3>(values[1], "orientation");
    const auto frustum = pointFrom<4>(values[2], "frustum");
    numbers.frustum = {frustum[0], frustum[1], frustum[2], frustum[3]};
    const auto area = pointFrom<4>(values[3], "screen_area");
    numbers.area = {area[0], area[1], area[2], area[3]};
    if (!values[4].is_none()) {
        numbers.lens = lensFrom(values[4].cast<py::tuple>());
    }
    return numbers;
}

py::tuple tupleOf(const FitReport& report, std::size_t firstRow) {
    const auto measured = py::make_tuple(report.measured.rows, report.combined.points.size(),
                                         report.measured.points.size() - report.combined.points.size(),
                                         report.measured.controls.size(), report.measured.unmapped,
                                         report.measured.withoutPicture, py::tuple(py::cast(report.measured.ignored)));
    return py::make_tuple(
        FitReport::nameOf(report.result.outcome()), report.result.unit, measured,
        tupleOfEach(report.frames, [firstRow](const Registration& frame) { return frameOf(frame, firstRow); }),
        tupleOfEach(report.result.channels,
                    [&report, firstRow](const ChannelFit& fit) { return channelOf(report, fit, firstRow); }),
        findingsOf(report.result.findings));
}
