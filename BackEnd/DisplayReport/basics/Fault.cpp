#include "DisplayReport/basics/Fault.h"

#include "Common/ExceptionCause.h"
#include "Common/Utf8.h"

#include <ostream>

namespace Veltrani::DisplayReport {

Fault faultOf(const std::string& where, const std::exception_ptr& exception) {
    if (isOutOfMemory(exception)) {
        std::rethrow_exception(exception);
    }
    Fault fault{where, toUtf8(messageOf(exception)), {}};
    for (auto cause = nestedIn(exception); cause; cause = nestedIn(cause)) {
        fault.causes.push_back(toUtf8(messageOf(cause)));
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

std::ostream& operator<<(std::ostream& out, const Fault& fault) {
    return out << fault.where << ": " << sentenceOf(fault);
}

}  // namespace Veltrani::DisplayReport
