#pragma once

#include "Console.h"
#include "DisplayReport/targets/TargetSurvey.h"
#include "OptionList.h"

#include <array>
#include <functional>
#include <memory>
#include <string>

/// A command of the program. It stands with its options in one source file.
struct Command {
    /// Does what was parsed; returns an `ExitCode`.
    using Run = std::function<int(Verbosity)>;

    const char* name = nullptr;
    const char* summary = nullptr;  ///< in the help of the program
    const char* example = nullptr;  ///< a whole command line, in the help of the command
    /// Adds the arguments and options to the command line of this command; returns what is to be run once they are
    /// parsed, which owns their values and must live until then.
    Run (*addTo)(OptionList& line) = nullptr;
    /// It prints every fault itself: warnings of the library would only repeat them.
    bool printsFaults = false;
    /// It bends so many rays that a log record for each would fill the log.
    bool bendsMillionsOfRays = false;

    /// The run of a command whose options have a `verbosity`.
    template <class Options>
    static Run with(std::shared_ptr<Options> options, int (*run)(const Options&)) {
        return [options = std::move(options), run](Verbosity verbosity) {
            options->verbosity = verbosity;
            return run(*options);
        };
    }
};

extern const Command CHECK_COMMAND;
extern const Command TARGETS_COMMAND;
extern const Command MAP_COMMAND;
extern const Command COVERAGE_COMMAND;
extern const Command EXPORT_COMMAND;
extern const Command VIEW_COMMAND;
extern const Command PICTURE_COMMAND;
extern const Command FIT_COMMAND;
extern const Command CHANNELS_COMMAND;
extern const Command PREPARE_COMMAND;
extern const Command DISCOVER_COMMAND;
extern const Command ADD_COMMAND;

/// Every command, in the order of the help. The only list: names, help and dispatch are taken from it.
inline constexpr std::array<const Command*, 12> COMMANDS{
    &CHECK_COMMAND,   &TARGETS_COMMAND, &MAP_COMMAND,      &EXPORT_COMMAND,  &COVERAGE_COMMAND, &VIEW_COMMAND,
    &PICTURE_COMMAND, &FIT_COMMAND,     &CHANNELS_COMMAND, &PREPARE_COMMAND, &DISCOVER_COMMAND, &ADD_COMMAND};

/// What the options of every command begin with.
struct CommandOptions {
    Verbosity verbosity = Verbosity::NORMAL;

    [[nodiscard]] bool isTalkative() const { return verbosity != Verbosity::QUIET; }
};

/// The argument FILE. Values are filled by parsing here and below, and must outlive the command line.
void addDisplayFile(OptionList& line, std::string& file);
/// Adds `--output`; `help` replaces the default text where that does not describe the output.
void addOutput(OptionList& line, std::string& output, const char* help = "File to write instead of standard output");
/// `--grid` and `--boundary`: how densely targets are placed.
void addPlan(OptionList& line, Veltrani::DisplayReport::TargetPlan& plan);
