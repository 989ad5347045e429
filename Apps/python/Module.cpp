#include "Bindings.h"
#include "Exceptions.h"

#include <log4cxx/level.h>
#include <log4cxx/logger.h>
#include <pthread.h>

#include <exception>

namespace py = pybind11;

namespace {

void bindAll(py::module_& module) {
    DisplayClass display(module, "Display");
    bindDisplay(display);
    bindChannels(display);
    bindRecords(display);
    bindScreen(display);
    bindMaps(display);
    bindTargets(display);
    bindReports(display);
    bindFits(display);
    bindExports(display);
    bindClouds(display);
}

PyObject* refuseInstance(PyTypeObject* type, PyObject* /*arguments*/, PyObject* /*keywords*/) {
    return PyErr_Format(PyExc_TypeError, "%s: no script makes one: use screenmanager.Display.load or parse",
                        type->tp_name);
}

/// An object that only Python has made holds nothing, and its first call would end the interpreter. The types are those
/// of this module alone: pybind11 has a set of its own for it, see `CMakeLists.txt`.
void forbidInstances(py::module_& module) {
    const auto& common = py::detail::get_internals();
    for (PyObject* const type :
         {module.attr("Display").ptr(), common.instance_base, reinterpret_cast<PyObject*>(common.default_metaclass)}) {
        reinterpret_cast<PyTypeObject*>(type)->tp_new = refuseInstance;
        PyType_Modified(reinterpret_cast<PyTypeObject*>(type));
    }
}

void requireMainInterpreter() {
    if (PyInterpreterState_Get() != PyInterpreterState_Main()) {
        throw py::import_error("screenmanager can be used in the main interpreter of a process alone");
    }
}

/// The types are those of the process: a second module of another name, or from a copy of the file, would share them.
void requireFirst() {
    static bool isMade = false;
    if (isMade) {
        throw py::import_error("screenmanager is loaded already: import it by this name");
    }
    isMade = true;
}

void fill(py::module_& module) {
    // Faults are raised. Without an appender, log4cxx would print a notice of its own for the first record.
    log4cxx::Logger::getRootLogger()->setLevel(log4cxx::Level::getOff());
    pthread_atfork(&Entry::beforeFork, &Entry::afterForkInParent, &Entry::afterForkInChild);
    py::module_::import("atexit").attr("register")(py::cpp_function(&Entry::end));
    module.def("require_main_interpreter", &requireMainInterpreter);
    registerExceptions(module);
    bindAll(module);
    forbidInstances(module);
}

}  // namespace

/// By hand, as nothing of pybind11 may begin in an interpreter that can end before the process.
extern "C" PYBIND11_EXPORT PyObject* PyInit__native() {
    static py::module_::module_def definition;
    try {
        requireMainInterpreter();
        requireFirst();
        py::module_ module = py::module_::create_extension_module("_native", nullptr, &definition);
        fill(module);
        return module.release().ptr();
    } catch (py::error_already_set& fault) {
        py::raise_from(fault, PyExc_ImportError, "screenmanager cannot be initialised");
    } catch (const std::exception& fault) {
        PyErr_SetString(PyExc_ImportError, fault.what());
    }
    return nullptr;
}
