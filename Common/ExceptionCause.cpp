#include "Common/ExceptionCause.h"

#include "Common/RunCatch.h"
#include "Common/Utf8.h"

#include <new>
#include <stdexcept>

namespace Veltrani {

namespace {

constexpr const wchar_t* NOT_ENOUGH_MEMORY = L"not enough memory";

/// True for the names of types and functions that the exceptions of the C++ runtime bring along.
bool namesTheRuntime(const std::string& what) {
    return what.starts_with("std::") || what.find("::_M_") != std::string::npos || what.starts_with("basic_string");
}

}  // namespace

std::wstring causeOf(const VeltraniExceptionBase& fault) {
    const auto* const carrier = dynamic_cast<const std::nested_exception*>(&fault);
    if (carrier == nullptr || !carrier->nested_ptr()) {
        return {};
    }
    try {
        carrier->rethrow_nested();
    } catch (const VeltraniExceptionBase& cause) {
        return cause.fullDescription();
    } catch (...) {
        return messageOf(std::current_exception());
    }
}

std::exception_ptr nestedIn(const std::exception_ptr& exception) {
    try {
        std::rethrow_exception(exception);
    } catch (const std::nested_exception& carrier) {
        return carrier.nested_ptr();
    } catch (...) {
        return nullptr;
    }
}

bool isOutOfMemory(const std::exception_ptr& exception) {
    for (std::exception_ptr link = exception; link; link = nestedIn(link)) {
        try {
            std::rethrow_exception(link);
        } catch (const std::bad_alloc&) {
            return true;
        } catch (const std::length_error&) {
            return true;
        } catch (...) {
            continue;
        }
    }
    return false;
}

std::wstring messageOf(const std::exception_ptr& exception) {
    try {
        std::rethrow_exception(exception);
    } catch (const VeltraniExceptionBase& fault) {
        return fault.message;
    } catch (const std::bad_alloc&) {
        return NOT_ENOUGH_MEMORY;
    } catch (const std::length_error&) {
        return NOT_ENOUGH_MEMORY;
    } catch (...) {
        const std::string what = RunCatch::describe(exception);
        return namesTheRuntime(what) ? L"a fault in the program itself" : fromUtf8OrBytes(what);
    }
}

}  // namespace Veltrani
