#pragma once

#include "TargetsCommand.h"
#include "Verbosity.h"

#include <CLI/CLI.hpp>

#include <string>

/// The command line of the program: what may be said, and what was said.
class CommandLine {
public:
    CommandLine();

    /// Throws the errors of CLI11, which also carry `--help` and `--version`.
    void parse(int argc, char** argv);
    /// Prints the message of an error, or the help that was asked for; answers an `ExitCode`.
    [[nodiscard]] int report(const CLI::ParseError& error) const;
    /// Does what was said; answers an `ExitCode`.
    [[nodiscard]] int run();

private:
    void addCheck();
    void addTargets();

    CLI::App m_app;
    CLI::App* m_check = nullptr;
    CLI::App* m_targets = nullptr;
    std::string m_checkedFile;
    TargetsCommand::Options m_targetOptions;
    bool m_quiet = false;
    bool m_verbose = false;
};
