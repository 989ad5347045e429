#include "FailureReport.h"

#include <iostream>

namespace {

using Veltrani::DisplayReport::Fault;

void print(const std::string& where, const Fault& fault) {
    // A message that names the file already does not need it once more.
    const bool named = fault.what.starts_with(where + ":");
    std::string text = "error: " + (named ? fault.what : where + ": " + fault.what) + '\n';
    for (const std::string& cause : fault.causes) {
        text += "  because: " + cause + '\n';
    }
    std::cerr << text;
}

}  // namespace

void reportFailure(const std::string& subject, const std::exception_ptr& exception) {
    print(subject, Veltrani::DisplayReport::faultOf(subject, exception));
}

void reportFault(const std::string& subject, const Fault& fault) {
    print(subject + ": " + fault.where, fault);
}
