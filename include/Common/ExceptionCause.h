#pragma once

#include "Common/VeltraniException.h"

#include <exception>
#include <string>
#include <utility>

/// Exceptions that carry their cause.
///
/// Some messages of the suite are fixed texts that state what failed but not why. What is thrown here is still caught
/// as the fault, with its message unchanged; the handler that wants to report more calls `causeOf`. A copy of the fault
/// has no cause: catch by reference.
///
///     try {
///         screen.loadContent(path, false);
///     } catch (const VeltraniMissingFileException& fault) {
///         show(fault.message, Veltrani::causeOf(fault));   // "Unable to load ...", "line 12: found ..."
///     }
namespace Veltrani {

/// Throws `fault` with the exception in flight as its cause; must be called inside a catch handler.
template <class Fault>
[[noreturn]] void throwWithCause(Fault fault) {
    std::throw_with_nested(std::move(fault));
}

/// Throws `fault` with a text as its cause. An empty text is no cause.
template <class Fault>
[[noreturn]] void throwWithCause(Fault fault, const std::wstring& cause) {
    if (cause.empty()) {
        throw fault;
    }
    try {
        throw VeltraniException(cause);
    } catch (...) {
        std::throw_with_nested(std::move(fault));
    }
}

/// Why a fault happened: the full description of the exception that caused it, or "not enough memory". Empty when it
/// was thrown without one.
[[nodiscard]] std::wstring causeOf(const VeltraniExceptionBase& fault);

/// Returns the exception that one carries as its cause; null when it carries none.
[[nodiscard]] std::exception_ptr nestedIn(const std::exception_ptr& exception);

/// Returns true when memory ran out: for `std::bad_alloc`, for a size that no memory has (`std::length_error`), and for
/// every fault that carries one of them as its cause, however deep. Such a fault is none of the file or of the display.
[[nodiscard]] bool isOutOfMemory(const std::exception_ptr& exception);

/// Returns the text of an exception, for people: the message of one of the suite without its place in the sources, "not
/// enough memory", for a `std::system_error` the words of its code (behind the path of a `filesystem_error`), and the
/// `what()` of another library's. An exception of the C++ runtime itself is a fault of the program, and its text is not
/// shown.
[[nodiscard]] std::wstring messageOf(const std::exception_ptr& exception);

}  // namespace Veltrani
