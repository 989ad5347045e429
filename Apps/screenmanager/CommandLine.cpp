#include "CommandLine.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Completion.h"
#include "Configuration/XMLConfigFile.h"
#include "ConsoleLog.h"
#include "DisplayReport/basics/NamedFiles.h"
#include "FailureReport.h"

#include <log4cxx/logger.h>

#include <algorithm>
#include <exception>

namespace {

constexpr const char* EXIT_CODES =
    "Exit codes: 0 all right; 1 done, but faults were found, a channel has no targets or could not be\n"
    "measured, something of the display cannot be shown, no point was mapped, or a projector is missing, not ready\n"
    "or failed; 2 wrong command line, or no such channel; 3 the configuration, a file of its screen or of points, or\n"
    "with map a file of the channel cannot be used; 4 the result or the log cannot be written; 5 too little memory,\n"
    "or a fault in the program itself.";

/// Appends the files that a configuration names.
void appendNamedFiles(const std::string& configuration, std::vector<std::string>& files) {
    try {
        const auto config = XMLConfigFile::load(configuration);
        for (const std::wstring& file : Veltrani::DisplayReport::filesOf(*config)) {
            files.push_back(Veltrani::toUtf8(file));
        }
    } catch (const VeltraniException&) {
        // A configuration that cannot be read is for the command to report.
        return;
    }
}

/// "check, targets, ... or add".
std::string namesOfCommands() {
    std::string names;
    for (const Command* const command : COMMANDS) {
        const char* const separator = command == COMMANDS.front() ? "" : command == COMMANDS.back() ? " or " : ", ";
        names += separator + std::string(command->name);
    }
    return names;
}

}  // namespace

CommandLine::CommandLine()
    : m_app(
          "Checks display configurations, places calibration targets on their screens, maps their channels and "
          "prepares their projectors.",
          "screenmanager") {
    m_app.footer(EXIT_CODES);
    m_app.set_version_flag("--version", "screenmanager " SM_VERSION);
    m_app.require_subcommand(1);
    m_app.fallthrough();
    auto* quiet = m_app.add_flag("-q,--quiet", m_quiet, "Say nothing on standard error but errors");
    m_app.add_flag("-v,--verbose", m_verbose, "Say on standard error what the library does")->excludes(quiet);
    m_app.add_option("--log", m_logFile, "Add what the library does to this log, a new file or an earlier log")
        ->check([](const std::string& path) { return path.empty() ? "a file has a name" : std::string(); })
        ->type_name("FILE");
    m_app
        .add_option_function<std::string>(
            "--completion",
            [this](const std::string& shell) { throw CLI::CallForVersion(Completion(m_app).script(shell), 0); },
            "Print what completes commands and options in bash (default), zsh or fish, and exit")
        ->expected(0, 1)
        ->default_str(Completion::shells().front())
        ->check(CLI::IsMember(Completion::shells()))
        ->type_name("SHELL");
    for (const Command* const command : COMMANDS) {
        CLI::App* const line = m_app.add_subcommand(command->name, command->summary);
        line->footer("Example: " + std::string(command->example));
        OptionList options(*line);
        m_commands.push_back({command, line, command->addTo(options)});
    }
}

void CommandLine::parse(int argc, char** argv) {
    m_arguments.assign(argv + std::min(argc, 1), argv + argc);
    m_app.parse(argc, argv);
}

int CommandLine::report(const CLI::ParseError& error) const {
    // A misspelt command is left over; the error itself only says that one is missing.
    const std::vector<std::string> unknown = m_app.remaining();
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError) && !unknown.empty()) {
        Console::say("\"" + unknown.front() + "\" is not a command: " + namesOfCommands() +
                     ". Run with --help for more.");
        return EXIT_USAGE;
    }
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
        m_app.exit(error);
        return Console::finishOutput();
    }
    Console::say(error.what());
    Console::say("Run with --help for more information.");
    return EXIT_USAGE;
}

/// What `parse` has found, which requires exactly one.
const CommandLine::Entry& CommandLine::chosen() const {
    return *std::find_if(m_commands.begin(), m_commands.end() - 1,
                         [](const Entry& entry) { return entry.line->parsed(); });
}

Verbosity CommandLine::verbosity() const {
    if (m_quiet) {
        return Verbosity::QUIET;
    }
    return m_verbose ? Verbosity::VERBOSE : Verbosity::NORMAL;
}

void CommandLine::installConsole(const Command& command) const {
    const bool isVerbose = verbosity() == Verbosity::VERBOSE;
    const bool warnings = verbosity() == Verbosity::NORMAL && !command.printsFaults;
    const auto quietest = warnings ? log4cxx::Level::getWarn() : log4cxx::Level::getError();
    ConsoleLog::install(isVerbose ? log4cxx::Level::getInfo() : quietest, m_log.isOpen());
    if (!isVerbose) {
        // The commands report in their own words which projector is missing and what stands in for it.
        ConsoleLog::showOnlyFatal("Dravix.ScreenManager.ChannelManager");
    }
    if (!isVerbose || command.bendsMillionsOfRays) {
        // One record per ray that a heading table bends: a million lines of a command that bends so many, in the file
        // of --log too.
        log4cxx::Logger::getLogger(L"Dravix.ScreenManager.SphereTargetLocator")->setLevel(log4cxx::Level::getWarn());
    }
}

/// Every file that stands on the command line, those that the configuration among them names, and where the streams of
/// the process lead.
std::vector<std::string> CommandLine::filesOfTheRun() const {
    std::vector<std::string> files{"/dev/stdin", "/dev/stdout", "/dev/stderr"};
    for (const CLI::App* const command : m_app.get_subcommands()) {
        for (const CLI::Option* const option : command->get_options()) {
            const bool isConfiguration = option->get_name(true) == "FILE";
            if (!isConfiguration && option->get_type_name() != "FILE") {
                continue;
            }
            for (const std::string& file : option->results()) {
                files.push_back(file);
                if (isConfiguration) {
                    appendNamedFiles(file, files);
                }
            }
        }
    }
    return files;
}

int CommandLine::run() {
    const int fault =
        m_log.open(m_logFile, m_arguments, m_logFile.empty() ? std::vector<std::string>() : filesOfTheRun());
    if (fault != EXIT_ALL_RIGHT) {
        return fault;
    }
    const Entry& entry = chosen();
    int code = EXIT_INTERNAL;
    try {
        installConsole(*entry.command);
        code = entry.run(verbosity());
    } catch (...) {
        code = reportEnd(std::current_exception());
    }
    return m_log.close(code);
}
