#pragma once

#include "DisplayReport/basics/Fault.h"

#include <exception>
#include <string>

/// Reports on standard error why something failed: "error: FILE: message", then one "because:" line per nested cause.
///
/// Too little memory is a fault neither of a file nor of a display: such an exception is thrown on, here and in all
/// other reports, and ends the run (see `reportEnd`).
void reportFailure(const std::string& subject, const std::exception_ptr& exception);

/// The same for a configuration that cannot be read, whose message has one fault per line.
void reportConfigurationFailure(const std::string& file, const std::exception_ptr& exception);

/// The same for a fault that has been collected: "error: SUBJECT: where: what".
void reportFault(const std::string& subject, const Veltrani::DisplayReport::Fault& fault);

/// Reports what ended the run against all expectation: too little memory, or a fault in the program itself. Returns an
/// `ExitCode`. Never throws.
[[nodiscard]] int reportEnd(const std::exception_ptr& exception) noexcept;
