#pragma once

#include "DisplayReport/TargetPlan.h"
#include "Verbosity.h"

#include <string>

/// `screenmanager targets FILE`: builds the screen, places targets for every channel and writes them.
class TargetsCommand {
public:
    struct Options {
        std::string file;            ///< the configuration
        std::string format = "csv";  ///< one of `TargetWriter::formats`
        std::string output;          ///< file to write; empty for standard output
        Veltrani::DisplayReport::TargetPlan plan;
        Verbosity verbosity = Verbosity::NORMAL;
    };

    TargetsCommand() = delete;

    /// Answers an `ExitCode`.
    [[nodiscard]] static int run(const Options& options);
};
