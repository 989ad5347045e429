#include "Exceptions.h"

#include "Common/ExceptionCause.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/ConfigurationChangedException.h"
#include "Entry.h"
#include "KelvoScreen/ObjLoadException.h"
#include "Refusals.h"

#include <cerrno>
#include <exception>
#include <string>

namespace py = pybind11;

namespace {

/// The types, owned by the module, which is never unloaded.
struct Types {
    PyObject* error = nullptr;
    PyObject* argument = nullptr;
    PyObject* argumentType = nullptr;
    PyObject* busy = nullptr;
    PyObject* changedFile = nullptr;
    PyObject* mesh = nullptr;
    PyObject* missingFile = nullptr;
    PyObject* parse = nullptr;
};

Types& types() {
    static Types instance;
    return instance;
}

/// @param builtin a kind of Python's own that it is, too; null for none
PyObject* makeType(py::module_& module, const char* name, const char* text, PyObject* base, PyObject* builtin) {
    const py::object bases = builtin == nullptr ? py::reinterpret_borrow<py::object>(base)
                                                : py::object(py::make_tuple(py::handle(base), py::handle(builtin)));
    const std::string full = std::string("screenmanager.") + name;
    PyObject* const type = PyErr_NewExceptionWithDoc(full.c_str(), text, bases.ptr(), nullptr);
    if (type == nullptr) {
        throw py::error_already_set();
    }
    module.add_object(name, py::handle(type));
    return type;
}

/// The text alone, which names the file.
py::object textOfMissing(const py::object& fault) {
    py::object text = fault.attr("strerror");
    return text.is_none() ? py::handle(PyExc_Exception).attr("__str__")(fault) : py::str(text);
}

void makeTypes(py::module_& module) {
    Types& all = types();
    all.error =
        makeType(module, "Error",
                 "What every exception of this module is, but MemoryError and what a handler of a signal raises. "
                 "Where a fault has a cause, __cause__ is that.",
                 PyExc_Exception, nullptr);
    all.argument = makeType(module, "ArgumentError", "An argument has a wrong shape or value; the text names it.",
                            all.error, PyExc_ValueError);
    all.argumentType = makeType(module, "ArgumentTypeError", "An argument has a wrong type; the text names it.",
                                all.error, PyExc_TypeError);
    all.busy = makeType(module, "BusyError",
                        "A call inside of another one on the same thread, or in a process that was split off in the "
                        "middle of one.",
                        all.error, PyExc_RuntimeError);
    all.changedFile = makeType(module, "ChangedFileError",
                               "A display was not saved: its file was changed or removed elsewhere since it was read.",
                               all.error, nullptr);
    all.missingFile = makeType(module, "MissingFileError", "A file is missing or not of the kind that is needed.",
                               all.error, PyExc_FileNotFoundError);
    module.attr("MissingFileError").attr("__str__") =
        py::cpp_function(&textOfMissing, py::is_method(py::handle(all.missingFile)), py::name("__str__"));
    all.parse =
        makeType(module, "ParseError", "A file cannot be understood; one fault per line.", all.error, PyExc_ValueError);
    all.mesh = makeType(module, "MeshError", "The text of a mesh is faulty.", all.parse, nullptr);
}

PyObject* typeOf(const std::exception_ptr& exception) {
    try {
        std::rethrow_exception(exception);
    } catch (const ConfigurationChangedException&) {
        return types().changedFile;
    } catch (const VeltraniMissingFileException&) {
        return types().missingFile;
    } catch (const VeltraniParseException&) {
        return types().parse;
    } catch (const ObjLoadException&) {
        return types().mesh;
    } catch (...) {
        return types().error;
    }
}

py::object instanceOf(const std::exception_ptr& exception) {
    PyObject* const type = Veltrani::isOutOfMemory(exception) ? PyExc_MemoryError : typeOf(exception);
    const std::string text = Veltrani::toUtf8(Veltrani::messageOf(exception));
    // As Python's own: with a number, and with the file where the call has it as an argument.
    py::object instance = type == types().missingFile ? py::handle(type)(ENOENT, text) : py::handle(type)(text);
    if (const std::exception_ptr cause = Veltrani::nestedIn(exception)) {
        PyException_SetCause(instance.ptr(), instanceOf(cause).release().ptr());
    }
    return instance;
}

void raise(PyObject* type, const std::string& text) {
    PyErr_SetString(type, text.c_str());
}

void raiseInstance(const std::exception_ptr& exception) {
    const py::object instance = instanceOf(exception);
    PyErr_SetObject(py::type::of(instance).ptr(), instance.ptr());
}

void translate(std::exception_ptr exception) {  // NOLINT(performance-unnecessary-value-param): given by pybind11
    if (!exception) {
        return;
    }
    try {
        std::rethrow_exception(exception);
    } catch (const Interrupted&) {
        if (PyErr_Occurred() == nullptr) {
            PyErr_SetNone(PyExc_KeyboardInterrupt);
        }
    } catch (const ArgumentFault& fault) {
        raise(fault.isOfWrongType ? types().argumentType : types().argument, fault.text);
    } catch (const BusyFault& fault) {
        raise(types().busy, fault.text);
    } catch (const py::error_already_set&) {
        throw;
    } catch (const py::builtin_exception&) {
        throw;
    } catch (...) {
        raiseInstance(exception);
    }
}

}  // namespace

void registerExceptions(py::module_& module) {
    makeTypes(module);
    py::register_local_exception_translator(translate);
}
