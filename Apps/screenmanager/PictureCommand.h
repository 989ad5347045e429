#pragma once

#include "ColumnsByRows.h"
#include "DisplayReport/TargetPlan.h"
#include "Verbosity.h"

#include <CLI/CLI.hpp>

#include <string>

/// `screenmanager picture FILE`: draws a still of the display, without a browser.
class PictureCommand {
public:
    struct Options {
        std::string file;                ///< the configuration
        std::string output;              ///< file to write; empty for standard output
        std::string format;              ///< "png" or "svg"; empty: as the output is named, else "png"
        std::string view = "home";       ///< one of `SceneCamera::views`
        ColumnsByRows size{1600, 1000};  ///< of the picture, pixels
        Veltrani::DisplayReport::TargetPlan plan;
        Verbosity verbosity = Verbosity::NORMAL;
    };

    PictureCommand() = delete;

    /// Adds `picture` to a program.
    /// @param options filled by parsing, must outlive the program's command line
    /// @return the command, owned by `program`
    static CLI::App* addTo(CLI::App& program, Options& options);

    /// Answers an `ExitCode`.
    [[nodiscard]] static int run(const Options& options);
};
