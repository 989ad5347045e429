#include "Arrays.h"
#include "Bindings.h"
#include "Common/Utf8.h"
#include "Configuration/ProjectorConfig.h"
#include "DisplayReport/channels/ChannelChoice.h"
#include "Refusals.h"

#include <pybind11/stl.h>

#include <array>
#include <cmath>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace py = pybind11;

namespace {

using Numbers = std::vector<double>;

/// One number of a record.
struct Number {
    double (ProjectorConfig::*get)() const;
    void (ProjectorConfig::*set)(double);
};

/// Numbers of a record that are set together.
struct NumberGroup {
    std::string_view name;
    std::vector<Number> numbers;
};

const std::array<NumberGroup, 4>& numberGroups() {
    using P = ProjectorConfig;
    static const std::array<NumberGroup, 4> GROUPS{{{"orientation",
                                                     {{&P::getOrientationZ, &P::setOrientationZ},
                                                      {&P::getOrientationX, &P::setOrientationX},
                                                      {&P::getOrientationY, &P::setOrientationY}}},
                                                    {"frustum",
                                                     {{&P::getFrustumLeft, &P::setFrustumLeft},
                                                      {&P::getFrustumRight, &P::setFrustumRight},
                                                      {&P::getFrustumBottom, &P::setFrustumBottom},
                                                      {&P::getFrustumTop, &P::setFrustumTop}}},
                                                    {"screen_area",
                                                     {{&P::getScreenLeft, &P::setScreenLeft},
                                                      {&P::getScreenRight, &P::setScreenRight},
                                                      {&P::getScreenBottom, &P::setScreenBottom},
                                                      {&P::getScreenTop, &P::setScreenTop}}},
                                                    {"layout",
                                                     {{&P::getLayoutXMin, &P::setLayoutXMin},
                                                      {&P::getLayoutXMax, &P::setLayoutXMax},
                                                      {&P::getLayoutYMin, &P::setLayoutYMin},
                                                      {&P::getLayoutYMax, &P::setLayoutYMax}}}}};
    return GROUPS;
}

const NumberGroup& groupNamed(const std::string& name) {
    for (const NumberGroup& group : numberGroups()) {
        if (group.name == name) {
            return group;
        }
    }
    throw ArgumentFault{"a channel has no " + name};
}

/// All of them or, after a fault, none.
void setAll(ProjectorConfig& record, const std::vector<Number>& numbers, const Numbers& values) {
    Numbers before;
    for (const Number& number : numbers) {
        before.push_back((record.*number.get)());
    }
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        try {
            (record.*numbers[i].set)(values[i]);
        } catch (...) {
            for (std::size_t k = 0; k < i; ++k) {
                (record.*numbers[k].set)(before[k]);
            }
            throw;
        }
    }
}

std::vector<std::wstring> ids(DisplayState& display) {
    return inEntry(nullptr, [&] { return display.config().getProjectorConfigIds(); });
}

std::wstring find(DisplayState& display, const std::wstring& nameOrId) {
    return inEntry(nullptr, [&] {
        return Veltrani::DisplayReport::ChannelChoice::of(display.config(), Veltrani::toUtf8(nameOrId))
            .projector->getIdentity();
    });
}

Numbers numbers(DisplayState& display, const std::wstring& id, const std::string& group) {
    return inEntry(nullptr, [&] {
        const ProjectorConfig& record = display.channel(id);
        Numbers values;
        for (const Number& number : groupNamed(group).numbers) {
            values.push_back((record.*number.get)());
        }
        return values;
    });
}

void setNumbers(DisplayState& display, const std::wstring& id, const std::string& group, py::handle value) {
    const std::vector<Number>& numbers = groupNamed(group).numbers;
    const Numbers values = numbersOf(value, group.c_str(), static_cast<py::ssize_t>(numbers.size()));
    inEntry(nullptr, [&] {
        display.channelsChanged();
        setAll(display.channel(id), numbers, values);
    });
}

Numbers position(DisplayState& display, const std::wstring& id) {
    return inEntry(nullptr, [&] {
        const auto place = display.channel(id).getPosition();
        return Numbers{place[0], place[1], place[2]};
    });
}

void setPosition(DisplayState& display, const std::wstring& id, py::handle value) {
    const Numbers place = numbersOf(value, "position", 3);
    inEntry(nullptr, [&] {
        display.channelsChanged();
        display.channel(id).setPosition({place[0], place[1], place[2]});
    });
}

std::vector<int> resolution(DisplayState& display, const std::wstring& id) {
    return inEntry(nullptr, [&] {
        const ProjectorConfig& record = display.channel(id);
        return std::vector<int>{record.getWidth(), record.getHeight()};
    });
}

void setResolution(DisplayState& display, const std::wstring& id, py::handle value) {
    const Numbers size = numbersOf(value, "resolution", 2);
    for (const double pixels : size) {
        constexpr int MOST = std::numeric_limits<int>::max();
        if (std::trunc(pixels) != pixels || !(pixels >= 1 && pixels <= MOST)) {
            throw ArgumentFault{"resolution: expected two whole numbers from 1 to " + std::to_string(MOST) +
                                ", found " + textOf(std::span(size))};
        }
    }
    inEntry(nullptr, [&] {
        display.channelsChanged();
        ProjectorConfig& record = display.channel(id);
        const int width = record.getWidth();
        record.setWidth(static_cast<int>(size[0]));
        try {
            record.setHeight(static_cast<int>(size[1]));
        } catch (...) {
            record.setWidth(width);
            throw;
        }
    });
}

/// A text of a record.
struct Text {
    std::string_view name;
    std::wstring (ProjectorConfig::*get)() const;
    void (ProjectorConfig::*set)(const std::wstring&);  ///< null for one that cannot be set
};

const Text& textNamed(const std::string& name) {
    using P = ProjectorConfig;
    static const std::array<Text, 6> TEXTS{
        {{"name", &P::getName, &P::setName},
         {"section_id", &P::getSectionID, nullptr},
         {"old_id", &P::getOldUID, nullptr},
         {"device", &P::getDeviceSnippet, &P::setDeviceSnippet},
         {"projection_model", &P::getProjectionModelName, &P::setProjectionModelName},
         {"map_file", &P::getCustomPlanarFile, &P::setCustomPlanarFile}}};
    for (const Text& text : TEXTS) {
        if (text.name == name) {
            return text;
        }
    }
    throw ArgumentFault{"a channel has no " + name};
}

std::wstring text(DisplayState& display, const std::wstring& id, const std::string& name) {
    return inEntry(nullptr, [&] { return (display.channel(id).*textNamed(name).get)(); });
}

void setText(DisplayState& display, const std::wstring& id, const std::string& name, const std::wstring& value) {
    inEntry(nullptr, [&] {
        display.channelsChanged();
        ProjectorConfig& record = display.channel(id);
        (record.*textNamed(name).set)(value);
    });
}

}  // namespace

void bindChannels(DisplayClass& display) {
    display.def("channel_ids", &ids)
        .def("find_channel", &find)
        .def("channel_numbers", &numbers)
        .def("set_channel_numbers", &setNumbers)
        .def("channel_position", &position)
        .def("set_channel_position", &setPosition)
        .def("channel_resolution", &resolution)
        .def("set_channel_resolution", &setResolution)
        .def("channel_text", &text)
        .def("set_channel_text", &setText);
}
