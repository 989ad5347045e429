#pragma once

#include "DisplayReport/Fault.h"

#include <exception>
#include <string>

/// Tells on standard error why something failed: "error: FILE: message", then one "because:" line per nested cause.
void reportFailure(const std::string& subject, const std::exception_ptr& exception);

/// The same for a fault that has been collected: "error: SUBJECT: where: what".
void reportFault(const std::string& subject, const Veltrani::DisplayReport::Fault& fault);
