#pragma once

#include "AddCommand.h"
#include "ChannelsCommand.h"
#include "CoverageCommand.h"
#include "DeviceOptions.h"
#include "LogFile.h"
#include "MapCommand.h"
#include "PictureCommand.h"
#include "PrepareCommand.h"
#include "TargetsCommand.h"
#include "Verbosity.h"
#include "ViewCommand.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

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
    void addCoverage();
    void addChannels();
    void addPrepare();
    void addDiscover();
    void addAdd();
    void addDeviceOptions(CLI::App& command);
    void addSearchOptions(CLI::App& command);
    [[nodiscard]] Verbosity verbosity() const;
    void installConsole() const;
    [[nodiscard]] std::vector<std::string> filesOfTheRun() const;
    [[nodiscard]] int runCommand();

    CLI::App m_app;
    CLI::App* m_check = nullptr;
    CLI::App* m_targets = nullptr;
    CLI::App* m_map = nullptr;
    CLI::App* m_coverage = nullptr;
    CLI::App* m_view = nullptr;
    CLI::App* m_picture = nullptr;
    CLI::App* m_channels = nullptr;
    CLI::App* m_prepare = nullptr;
    CLI::App* m_discover = nullptr;
    CLI::App* m_add = nullptr;
    std::string m_checkedFile;
    TargetsCommand::Options m_targetOptions;
    MapCommand::Options m_mapOptions;
    CoverageCommand::Options m_coverageOptions;
    ViewCommand::Options m_viewOptions;
    PictureCommand::Options m_pictureOptions;
    ChannelsCommand::Options m_channelOptions;
    PrepareCommand::Options m_prepareOptions;
    AddCommand::Options m_addOptions;
    DeviceOptions m_deviceOptions;  ///< of whichever command was given
    bool m_quiet = false;
    bool m_verbose = false;
    std::vector<std::string> m_arguments;
    std::string m_logFile;
    LogFile m_log;
};
