#include "CommandLine.h"

#include "CheckCommand.h"
#include "ConsoleLog.h"
#include "DisplayReport/TargetWriter.h"
#include "ExitCode.h"

#include <charconv>
#include <iostream>
#include <string_view>
#include <vector>

namespace {

/// Bounds that keep a slip of the keyboard from filling the memory.
constexpr int MOST_GRID_LINES = 10000;
constexpr long long MOST_GRID_TARGETS = 4'000'000;
constexpr int MOST_BOUNDARY_SAMPLES = 100000;

constexpr const char* EXIT_CODES =
    "Exit codes: 0 all right; 1 done, but faults were found or a channel has no targets; 2 wrong command line; 3 the\n"
    "configuration or a file that it names cannot be used; 4 the result cannot be written; 5 internal fault.";

/// The whole of `text` as a number; 0 when it is none.
int numberOf(std::string_view text) {
    int number = 0;
    const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), number);
    return fault == std::errc() && end == text.data() + text.size() ? number : 0;
}

/// Reads "COLUMNSxROWS"; throws the error of CLI11 for anything else.
void readGrid(const std::string& text, Veltrani::DisplayReport::TargetPlan& plan) {
    const auto cross = text.find('x');
    const std::string_view whole(text);
    const int columns = numberOf(whole.substr(0, cross));
    const int rows = cross == std::string::npos ? 0 : numberOf(whole.substr(cross + 1));
    const auto allowed = [](int lines) { return lines >= 1 && lines <= MOST_GRID_LINES; };
    if (!allowed(columns) || !allowed(rows) || 1LL * columns * rows > MOST_GRID_TARGETS) {
        throw CLI::ValidationError("--grid", "\"" + text + "\" is not COLUMNSxROWS, such as 16x10, with 1 to " +
                                                 std::to_string(MOST_GRID_LINES) + " each and at most " +
                                                 std::to_string(MOST_GRID_TARGETS) + " targets");
    }
    plan.columns = columns;
    plan.rows = rows;
}

}  // namespace

CommandLine::CommandLine()
    : m_app("Checks display configurations and places calibration targets on their screens.", "screenmanager") {
    m_app.footer(EXIT_CODES);
    m_app.set_version_flag("--version", "screenmanager " SM_VERSION);
    m_app.require_subcommand(1);
    m_app.fallthrough();
    auto* quiet = m_app.add_flag("-q,--quiet", m_quiet, "Say nothing on standard error but errors");
    m_app.add_flag("-v,--verbose", m_verbose, "Say on standard error what the library does")->excludes(quiet);
    addCheck();
    addTargets();
}

void CommandLine::addCheck() {
    m_check =
        m_app.add_subcommand("check", "Load everything that a configuration names; print the display and every fault");
    m_check->add_option("FILE", m_checkedFile, "Configuration of the display (XML)")->required();
}

void CommandLine::addTargets() {
    m_targets = m_app.add_subcommand("targets", "Place a grid of targets and an outline for every channel");
    m_targets->add_option("FILE", m_targetOptions.file, "Configuration of the display (XML)")->required();
    m_targets->add_option("--format", m_targetOptions.format, "csv (default), json or ply")
        ->check(CLI::IsMember(Veltrani::DisplayReport::TargetWriter::formats()))
        ->type_name("FORMAT");
    m_targets->add_option("-o,--output", m_targetOptions.output, "File to write instead of standard output")
        ->type_name("FILE");
    m_targets
        ->add_option_function<std::string>(
            "--grid", [this](const std::string& text) { readGrid(text, m_targetOptions.plan); },
            "Targets per channel (default 16x10)")
        ->type_name("COLUMNSxROWS");
    m_targets
        ->add_option("--boundary", m_targetOptions.plan.boundarySamples, "Samples per edge of the outline (default 16)")
        ->check(CLI::Range(0, MOST_BOUNDARY_SAMPLES))
        ->type_name("N");
}

void CommandLine::parse(int argc, char** argv) {
    m_app.parse(argc, argv);
}

int CommandLine::report(const CLI::ParseError& error) const {
    // A misspelt command is left over; the error itself only says that one is missing.
    const std::vector<std::string> unknown = m_app.remaining();
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError) && !unknown.empty()) {
        std::cerr << "\"" + unknown.front() + "\" is not a command: check or targets. Run with --help for more.\n";
        return EXIT_USAGE;
    }
    return m_app.exit(error) == 0 ? EXIT_ALL_RIGHT : EXIT_USAGE;
}

int CommandLine::run() {
    Verbosity verbosity = Verbosity::NORMAL;
    if (m_quiet) {
        verbosity = Verbosity::QUIET;
    } else if (m_verbose) {
        verbosity = Verbosity::VERBOSE;
    }
    // The check prints every fault itself, so warnings of the library would only repeat them.
    const bool warnings = verbosity == Verbosity::NORMAL && m_targets->parsed();
    const auto quietest = warnings ? log4cxx::Level::getWarn() : log4cxx::Level::getError();
    ConsoleLog::install(verbosity == Verbosity::VERBOSE ? log4cxx::Level::getInfo() : quietest);

    if (m_check->parsed()) {
        return CheckCommand::run(m_checkedFile);
    }
    m_targetOptions.verbosity = verbosity;
    return TargetsCommand::run(m_targetOptions);
}
