#pragma once

#include "DisplayReport/TargetPlan.h"
#include "Verbosity.h"

#include <CLI/CLI.hpp>

#include <string>

/// `screenmanager view FILE`: writes a page that shows the display in three dimensions.
class ViewCommand {
public:
    struct Options {
        std::string file;    ///< the configuration
        std::string output;  ///< file to write; empty for standard output
        Veltrani::DisplayReport::TargetPlan plan;
        Verbosity verbosity = Verbosity::NORMAL;
    };

    ViewCommand() = delete;

    /// Adds `view` to a program.
    /// @param options filled by parsing, must outlive the program's command line
    /// @return the command, owned by `program`
    static CLI::App* addTo(CLI::App& program, Options& options);

    /// Answers an `ExitCode`.
    [[nodiscard]] static int run(const Options& options);
};
