#include "Bindings.h"
#include "Configuration/IUnitsConfig.h"

#include <string>

namespace py = pybind11;

namespace {

DisplayPointer held(std::unique_ptr<XMLConfigFile> config) {
    return {new DisplayState(std::move(config)), &Entry::retire};
}

DisplayPointer load(const std::string& path) {
    return inEntry(nullptr, [&] { return held(XMLConfigFile::load(path)); });
}

DisplayPointer parse(const std::string& text, const std::string& name) {
    return inEntry(nullptr, [&] { return held(XMLConfigFile::parse(text, name)); });
}

void save(DisplayState& display, const std::string& path) {
    inEntry(nullptr, [&] { display.config().save(path); });
}

DisplayPointer movedTo(DisplayState& display, const std::string& path) {
    return inEntry(nullptr, [&] { return held(display.config().movedTo(path)); });
}

std::string text(DisplayState& display) {
    return inEntry(nullptr, [&] { return display.config().text(); });
}

std::wstring unit(DisplayState& display) {
    return inEntry(nullptr, [&] { return display.config().getNativeUnitsConfig()->getUnitName(); });
}

std::wstring folder(DisplayState& display) {
    return inEntry(nullptr, [&] { return display.config().processPath(L""); });
}

void addChannel(DisplayState& display, const std::wstring& id) {
    inEntry(nullptr, [&] {
        display.config().addProjectorConfig(id);
        display.channelsChanged();
    });
}

bool renameChannel(DisplayState& display, const std::wstring& id, const std::wstring& newId) {
    return inEntry(nullptr, [&] {
        static_cast<void>(display.channel(id));
        display.channelsChanged();
        return display.config().renameProjectorConfig(id, newId);
    });
}

bool moveChannel(DisplayState& display, const std::wstring& id, int direction) {
    return inEntry(nullptr, [&] {
        static_cast<void>(display.channel(id));
        display.channelsChanged();
        return display.config().moveProjectorConfig(id, direction);
    });
}

bool removeChannel(DisplayState& display, const std::wstring& id) {
    return inEntry(nullptr, [&] {
        static_cast<void>(display.channel(id));
        display.channelsChanged();
        return display.config().removeProjectorConfig(id);
    });
}

}  // namespace

void bindDisplay(DisplayClass& display) {
    display.def_static("load", &load)
        .def_static("parse", &parse)
        .def("save", &save)
        .def("moved_to", &movedTo)
        .def("text", &text)
        .def("unit", &unit)
        .def("folder", &folder)
        .def("add_channel", &addChannel)
        .def("rename_channel", &renameChannel)
        .def("move_channel", &moveChannel)
        .def("remove_channel", &removeChannel);
}
