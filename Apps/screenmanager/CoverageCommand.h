#pragma once

#include "Verbosity.h"

#include <string>

/// `screenmanager coverage FILE`: builds the screen, measures how the channels cover it and writes a report.
class CoverageCommand {
public:
    struct Options {
        std::string file;     ///< the configuration
        bool isJson = false;  ///< instead of tables
        std::string output;   ///< file for the report; empty for standard output
        std::string ply;      ///< file for the coloured surface; empty for none
        Verbosity verbosity = Verbosity::NORMAL;
    };

    CoverageCommand() = delete;

    /// Answers an `ExitCode`.
    [[nodiscard]] static int run(const Options& options);
};
