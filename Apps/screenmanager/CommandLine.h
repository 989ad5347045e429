#pragma once

#include "Command.h"
#include "LogFile.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

/// The command line of the program: what it accepts, and what was given.
class CommandLine {
public:
    CommandLine();

    /// Throws the errors of CLI11, which also carry `--help` and `--version`.
    void parse(int argc, char** argv);
    /// Prints the message of an error, or the help that was requested; returns an `ExitCode`.
    [[nodiscard]] int report(const CLI::ParseError& error) const;
    /// Runs the command that was parsed; returns an `ExitCode`.
    [[nodiscard]] int run();

private:
    /// A command and its part of the command line.
    struct Entry {
        const Command* command;
        const CLI::App* line;  ///< owned by `m_app`
        Command::Run run;
    };

    [[nodiscard]] const Entry& chosen() const;
    [[nodiscard]] Verbosity verbosity() const;
    void installConsole(const Command& command) const;
    [[nodiscard]] std::vector<std::string> filesOfTheRun() const;

    CLI::App m_app;
    std::vector<Entry> m_commands;
    bool m_quiet = false;
    bool m_verbose = false;
    std::vector<std::string> m_arguments;
    std::string m_logFile;
    LogFile m_log;
};
