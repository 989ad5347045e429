#include "Common/ExceptionCause.h"

#include "Common/RunCatch.h"
#include "Common/Utf8.h"

#include <filesystem>
#include <ios>
#include <new>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <typeinfo>

namespace Veltrani {

namespace {

constexpr const wchar_t* NOT_ENOUGH_MEMORY = L"not enough memory";

constexpr const wchar_t* FAULT_OF_THE_PROGRAM =
    L"a fault in the program itself: report it, with the files and the steps that lead to it";

/// Returns true for the exceptions of the C++ runtime, whose texts are made of the names of its own functions and
/// types. Those of the suite and of other libraries have types of their own.
bool isOfTheRuntime(const std::exception& fault) {
    constexpr std::string_view CARRIER_OF = "St17_Nested_exceptionI";
    std::string_view type = typeid(fault).name();
    if (type.starts_with(CARRIER_OF)) {
        type.remove_prefix(CARRIER_OF.size());
    }
    return type.starts_with("St") || type.starts_with("NSt");  // as the C++ ABI of Itanium spells the namespace
}

/// The texts of these begin with the function of the runtime that failed.
std::wstring messageOfSystem(const std::system_error& fault) {
    const bool isKnown = fault.code().category() != std::iostream_category();
    return isKnown ? fromUtf8OrBytes(fault.code().message()) : L"a file cannot be read or written";
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
    } catch (const std::filesystem::filesystem_error& fault) {
        return fromUtf8OrBytes(fault.path1().native()) + L": " + messageOfSystem(fault);
    } catch (const std::system_error& fault) {
        return messageOfSystem(fault);
    } catch (const std::exception& fault) {
        return isOfTheRuntime(fault) ? FAULT_OF_THE_PROGRAM : fromUtf8OrBytes(fault.what());
    } catch (...) {
        return fromUtf8OrBytes(RunCatch::describe(exception));
    }
}

}  // namespace Veltrani
