#include "Arrays.h"
#include "Bindings.h"
#include "DisplayReport/targets/TargetPlacer.h"
#include "Refusals.h"

#include <string>

namespace py = pybind11;

namespace {

using namespace Veltrani::DisplayReport;

/// The grid of a channel as arrays of (rows, columns, ...), NaN where a target was missed.
py::tuple gridOf(const ChannelTargets& channel, const TargetPlan& plan) {
    const Shape shape{plan.rows, plan.columns};
    ResultRows<double> points(extended(shape, 3));
    ResultRows<double> picture(extended(shape, 2));
    ResultRows<bool> placed(shape);
    const auto columns = static_cast<std::size_t>(plan.columns);
    for (std::size_t i = 0; i < columns * static_cast<std::size_t>(plan.rows); ++i) {
        points.set(i, missing<3>());
        picture.set(i, missing<2>());
        *placed.at(i) = false;
    }
    for (const GridTarget& target : channel.grid) {
        const std::size_t i = static_cast<std::size_t>(target.row) * columns + static_cast<std::size_t>(target.column);
        points.set(i, target.point);
        picture.set(i, target.picture);
        *placed.at(i) = true;
    }
    return py::make_tuple(points.array(), picture.array(), placed.array());
}

int countOf(int value, const char* name) {
    constexpr int MOST = 10'000;
    if (value < 1 || value > MOST) {
        throw ArgumentFault{std::string(name) + ": expected 1 to " + std::to_string(MOST) + ", found " +
                            std::to_string(value)};
    }
    return value;
}

py::list place(DisplayState& display, int columns, int rows, int samples) {
    const TargetPlan plan{countOf(columns, "columns"), countOf(rows, "rows"), countOf(samples, "samples_per_edge")};
    const TargetSurvey survey = inEntry(&display, [&] {
        display.requireScreen();
        return TargetPlacer(plan, [](std::size_t, std::size_t) { Entry::pulse(); }).place(display.config());
    });
    py::list channels;
    for (const ChannelTargets& channel : survey.channels) {
        channels.append(py::make_tuple(channel.name, channel.projectorId, gridOf(channel, plan),
                                       arrayOf<double, 3>(channel.boundary), channel.boundaryMissed, channel.fault,
                                       channel.remark));
    }
    return channels;
}

}  // namespace

void bindTargets(DisplayClass& display) {
    display.def("place_targets", &place);
}
