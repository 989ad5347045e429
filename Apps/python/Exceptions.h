#pragma once

#include <pybind11/pybind11.h>

/// Makes the exceptions of the module, and every exception of the libraries one of them: with the same text, and its
/// cause as `__cause__`. Too little memory becomes a `MemoryError`.
void registerExceptions(pybind11::module_& module);
