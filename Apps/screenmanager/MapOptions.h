#pragma once

#include "MapCommand.h"

#include <CLI/CLI.hpp>

/// Adds `map` to a program: what may be said after it, and what does not go together.
/// @param options filled by parsing, must outlive the program's command line
/// @return the command, owned by `program`
CLI::App* addMapCommand(CLI::App& program, MapCommand::Options& options);
