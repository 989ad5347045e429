#include "DisplayReport/Fault.h"

#include "Common/RunCatch.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

namespace Veltrani::DisplayReport {

namespace {

/// The exception that a thrown one carries as its cause; null when it carries none.
std::exception_ptr causeOf(const std::exception_ptr& exception) {
    try {
        std::rethrow_exception(exception);
    } catch (const std::nested_exception& carrier) {
        return carrier.nested_ptr();
    } catch (...) {
        return nullptr;
    }
}

/// For the user: where in the sources it was thrown belongs in the log.
std::string messageOf(const std::exception_ptr& exception) {
    try {
        std::rethrow_exception(exception);
    } catch (const VeltraniExceptionBase& fault) {
        return toUtf8(fault.message);
    } catch (...) {
        return RunCatch::describe(exception);
    }
}

}  // namespace

Fault faultOf(const std::string& where, const std::exception_ptr& exception) {
    Fault fault{where, messageOf(exception), {}};
    for (auto cause = causeOf(exception); cause; cause = causeOf(cause)) {
        fault.causes.push_back(messageOf(cause));
    }
    return fault;
}

std::string sentenceOf(const Fault& fault) {
    std::string text = fault.what;
    for (const std::string& cause : fault.causes) {
        text += ": " + cause;
    }
    return text;
}

}  // namespace Veltrani::DisplayReport
