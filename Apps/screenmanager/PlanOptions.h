#pragma once

#include "DisplayReport/TargetPlan.h"

#include <CLI/CLI.hpp>

/// Adds `--grid` and `--boundary` to a command: how densely targets are placed.
/// @param plan filled by parsing, must outlive the program's command line
void addPlanOptions(CLI::App& command, Veltrani::DisplayReport::TargetPlan& plan);
