#include "CommandLine.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
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

/// The options of a command line as they are typed, with a blank between them.
std::string optionsOf(const CLI::App& line) {
    std::string words;
    for (const CLI::Option* const option : line.get_options()) {
        for (const std::string& name : option->get_snames()) {
            words += " -" + name;
        }
        for (const std::string& name : option->get_lnames()) {
            words += " --" + name;
        }
    }
    return words.empty() ? words : words.substr(1);
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
    m_app.add_flag_callback(
        "--completion", [this] { throw CLI::CallForVersion(completion(), 0); },
        "Print what completes commands and options in bash, and exit");
    for (const Command* const command : COMMANDS) {
        CLI::App* const line = m_app.add_subcommand(command->name, command->summary);
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

/// A script for bash: commands and options by name, everything else as names of files.
std::string CommandLine::completion() const {
    std::string commands;
    std::string cases;
    for (const Entry& entry : m_commands) {
        commands += (commands.empty() ? "" : "|") + std::string(entry.command->name);
        cases += "        " + std::string(entry.command->name) + ") words+=' " + optionsOf(*entry.line) + "' ;;\n";
    }
    std::string listed = commands;
    std::replace(listed.begin(), listed.end(), '|', ' ');
    return "# Completes the commands and options of screenmanager in bash.\n"
           "_screenmanager() {\n"
           "    local word=${COMP_WORDS[COMP_CWORD]} command= words='" +
           optionsOf(m_app) +
           "' i\n"
           "    for ((i = 1; i < COMP_CWORD; ++i)); do\n"
           "        case ${COMP_WORDS[i]} in " +
           commands +
           ") command=${COMP_WORDS[i]}; break ;; esac\n"
           "    done\n"
           "    case $command in\n"
           "        '') words+=' " +
           listed + "' ;;\n" + cases +
           "    esac\n"
           "    COMPREPLY=()\n"
           "    if [[ $word == -* || -z $command ]]; then COMPREPLY=($(compgen -W \"$words\" -- \"$word\")); fi\n"
           "}\n"
           "complete -o default -F _screenmanager screenmanager";
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
    installConsole(*entry.command);
    int code = EXIT_INTERNAL;
    try {
        code = entry.run(verbosity());
    } catch (...) {
        code = reportEnd(std::current_exception());
    }
    return m_log.close(code);
}
