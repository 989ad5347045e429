#include "FailureReport.h"

#include "DisplayReport/Fault.h"

#include <iostream>

void reportFailure(const std::string& subject, const std::exception_ptr& exception) {
    const Veltrani::DisplayReport::Fault fault = Veltrani::DisplayReport::faultOf(subject, exception);
    std::string text = "error: " + fault.where + ": " + fault.what + '\n';
    for (const std::string& cause : fault.causes) {
        text += "  because: " + cause + '\n';
    }
    std::cerr << text;
}
