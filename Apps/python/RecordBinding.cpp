#include "Arrays.h"
#include "Bindings.h"
#include "Common/VeltraniException.h"
#include "Configuration/IScreenConfig.h"
#include "Configuration/TargetLocatorConfig.h"
#include "Refusals.h"

#include <pybind11/stl.h>

#include <array>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace py = pybind11;

namespace {

using Numbers = std::vector<double>;
using P3 = Point<double, 3>;
using Table = std::vector<std::pair<double, double>>;

Numbers coordinatesOf(const P3& point) {
    return {point[0], point[1], point[2]};
}

P3 pointOf(const Numbers& numbers) {
    return {numbers[0], numbers[1], numbers[2]};
}

IScreenConfig& screenOf(DisplayState& display) {
    IScreenConfig* const screen = display.config().getMutableScreenConfig();
    if (screen == nullptr) {
        throw VeltraniException(L"the configuration describes no screen: add a Screen element");
    }
    return *screen;
}

TargetLocatorConfig& targetsOf(DisplayState& display) {
    TargetLocatorConfig* const targets = display.config().getMutableTargetLocatorConfig();
    if (targets == nullptr) {
        throw VeltraniException(L"the configuration names no kind of target data: add a TargetData element");
    }
    return *targets;
}

/// Numbers of the description of the screen that are set together.
struct ScreenField {
    std::string_view name;
    py::ssize_t length;
    Numbers (*get)(const IScreenConfig&);
    void (*set)(IScreenConfig&, const Numbers&);
    bool isOfShape = true;  ///< whether the surface follows from it
};

using S = IScreenConfig;

const std::array<ScreenField, 8> SCREEN_FIELDS{
    {{"eye_point", 3, [](const S& s) { return coordinatesOf(s.getEyePoint()); },
      [](S& s, const Numbers& n) { s.setEyePoint(pointOf(n)); }, false},
     {"centre", 3, [](const S& s) { return coordinatesOf(s.getCentre()); },
      [](S& s, const Numbers& n) { s.setCentre(pointOf(n)); }},
     {"orientation", 3, [](const S& s) { return coordinatesOf(s.getOrientation()); },
      [](S& s, const Numbers& n) { s.setOrientation(pointOf(n)); }},
     {"radius", 1, [](const S& s) { return Numbers{s.getRadius()}; },
      [](S& s, const Numbers& n) { s.setRadius(n[0]); }},
     {"width", 1, [](const S& s) { return Numbers{s.getWidth()}; }, [](S& s, const Numbers& n) { s.setWidth(n[0]); }},
     {"height", 1, [](const S& s) { return Numbers{s.getHeight()}; },
      [](S& s, const Numbers& n) { s.setHeight(n[0]); }},
     {"azimuth", 2,
      [](const S& s) {
          return Numbers{s.getAzimuthMin(), s.getAzimuthMax()};
      },
      [](S& s, const Numbers& n) { s.setAzimuth(n[0], n[1]); }},
     {"elevation", 2,
      [](const S& s) {
          return Numbers{s.getElevationMin(), s.getElevationMax()};
      },
      [](S& s, const Numbers& n) { s.setElevation(n[0], n[1]); }}}};

/// Numbers of the target data that are set together.
struct TargetField {
    std::string_view name;
    py::ssize_t length;
    Numbers (*get)(const TargetLocatorConfig&);
    void (*set)(TargetLocatorConfig&, const Numbers&);
};

using T = TargetLocatorConfig;

const std::array<TargetField, 4> TARGET_FIELDS{
    {{"position", 3, [](const T& t) { return coordinatesOf(t.getTargetPosition()); },
      [](T& t, const Numbers& n) { t.setTargetPosition(pointOf(n)); }},
     {"mirror_orientation", 3, [](const T& t) { return coordinatesOf(t.getMirrorOrientation()); },
      [](T& t, const Numbers& n) { t.setMirrorOrientation(pointOf(n)); }},
     {"mirror_position", 3, [](const T& t) { return coordinatesOf(t.getMirrorPosition()); },
      [](T& t, const Numbers& n) { t.setMirrorPosition(pointOf(n)); }},
     {"mirror_radius", 1, [](const T& t) { return Numbers{t.getMirrorRadius()}; },
      [](T& t, const Numbers& n) { t.setMirrorRadius(n[0]); }}}};

template <class Fields>
const typename Fields::value_type& fieldNamed(const Fields& fields, const std::string& name) {
    for (const auto& field : fields) {
        if (field.name == name) {
            return field;
        }
    }
    throw ArgumentFault{"there is no " + name};
}

/// A single number comes alone.
Numbers valuesOf(py::handle value, const std::string& name, py::ssize_t length) {
    return length == 1 ? Numbers{numberOf(value, name.c_str())} : numbersOf(value, name.c_str(), length);
}

Numbers screenNumbers(DisplayState& display, const std::string& name) {
    return inEntry(nullptr, [&] { return fieldNamed(SCREEN_FIELDS, name).get(screenOf(display)); });
}

void setScreenNumbers(DisplayState& display, const std::string& name, py::handle value) {
    const ScreenField& field = fieldNamed(SCREEN_FIELDS, name);
    const Numbers values = valuesOf(value, name, field.length);
    inEntry(nullptr, [&] {
        field.set(screenOf(display), values);
        if (field.isOfShape) {
            display.screenChanged();
        } else {
            display.channelsChanged();
        }
    });
}

std::wstring shape(DisplayState& display) {
    return inEntry(nullptr, [&] { return screenOf(display).getShape(); });
}

py::tuple rails(DisplayState& display) {
    std::vector<P3> lower;
    std::vector<P3> upper;
    inEntry(nullptr, [&] {
        lower = screenOf(display).getLowerRail();
        upper = screenOf(display).getUpperRail();
    });
    return py::make_tuple(arrayOf<double, 3>(lower), arrayOf<double, 3>(upper));
}

std::vector<P3> railOf(const Rows& rows) {
    if (rows.shape().size() != 1) {
        throw ArgumentFault{rows.name() + ": expected an array of the shape (n, 3), found " +
                            textOf(extended(rows.shape(), 3))};
    }
    std::vector<P3> rail;
    for (std::size_t i = 0; i < rows.count(); ++i) {
        rail.push_back(rows.at<3>(i));
    }
    return rail;
}

void setRails(DisplayState& display, py::handle lower, py::handle upper) {
    const std::vector<P3> below = railOf(Rows(lower, "lower rail", 3));
    const std::vector<P3> above = railOf(Rows(upper, "upper rail", 3));
    inEntry(nullptr, [&] {
        screenOf(display).setRails(below, above);
        display.screenChanged();
    });
}

std::wstring targetType(DisplayState& display) {
    return inEntry(nullptr, [&] { return targetsOf(display).getTargetDataType(); });
}

Numbers targetNumbers(DisplayState& display, const std::string& name) {
    return inEntry(nullptr, [&] { return fieldNamed(TARGET_FIELDS, name).get(targetsOf(display)); });
}

void setTargetNumbers(DisplayState& display, const std::string& name, py::handle value) {
    const TargetField& field = fieldNamed(TARGET_FIELDS, name);
    const Numbers values = valuesOf(value, name, field.length);
    inEntry(nullptr, [&] {
        field.set(targetsOf(display), values);
        display.channelsChanged();
    });
}

py::array headingTable(DisplayState& display, bool isYaw) {
    const Table table = inEntry(nullptr, [&] {
        const TargetLocatorConfig& targets = targetsOf(display);
        return isYaw ? targets.getYawTable() : targets.getPitchTable();
    });
    std::vector<Point<double, 2>> rows;
    for (const auto& [measured, corrected] : table) {
        rows.emplace_back(measured, corrected);
    }
    return arrayOf<double, 2>(rows);
}

void setHeadingTable(DisplayState& display, bool isYaw, py::handle value) {
    const Rows rows(value, isYaw ? "yaw_table" : "pitch_table", 2);
    Table table;
    for (std::size_t i = 0; i < rows.count(); ++i) {
        const Point<double, 2> pair = rows.at<2>(i);
        table.emplace_back(pair[0], pair[1]);
    }
    inEntry(nullptr, [&] {
        TargetLocatorConfig& targets = targetsOf(display);
        if (isYaw) {
            targets.setYawTable(table);
        } else {
            targets.setPitchTable(table);
        }
        display.channelsChanged();
    });
}

}  // namespace

void bindRecords(DisplayClass& display) {
    display.def("screen_numbers", &screenNumbers)
        .def("set_screen_numbers", &setScreenNumbers)
        .def("screen_shape", &shape)
        .def("rails", &rails)
        .def("set_rails", &setRails)
        .def("target_type", &targetType)
        .def("target_numbers", &targetNumbers)
        .def("set_target_numbers", &setTargetNumbers)
        .def("heading_table", &headingTable)
        .def("set_heading_table", &setHeadingTable);
}
