#pragma once

#include <exception>
#include <string>

/// Tells on standard error why something failed: "error: FILE: message", then one "because:" line per nested cause.
void reportFailure(const std::string& subject, const std::exception_ptr& exception);
