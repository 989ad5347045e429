#pragma once

#include <string>

/// How much the program prints on standard error.
enum class Verbosity {
    QUIET,    ///< errors alone
    NORMAL,   ///< errors, warnings and summaries
    VERBOSE,  ///< everything, information of the library included
};

/// What the program returns to the shell. Documented in its manual page.
enum ExitCode : int {
    EXIT_ALL_RIGHT = 0,  ///< everything was done and nothing is wrong
    /// done, but something is missing: `check` found faults, a channel got no targets or lights nothing, no
    /// point was mapped, a projector is missing, not ready or failed
    EXIT_INCOMPLETE = 1,
    EXIT_USAGE = 2,     ///< the command line is wrong, or names a channel that the display does not have
    EXIT_INPUT = 3,     ///< the configuration, a file that it names or a file of points cannot be used
    EXIT_OUTPUT = 4,    ///< the result or the log cannot be written
    EXIT_INTERNAL = 5,  ///< a fault of the program itself, such as too little memory
};

/// The only way of a text to standard error, and of a single line to standard output.
///
/// What the program prints holds names, ids, file names, values of files and replies of devices. Whatever in them
/// steers a terminal is spelled out here (see `Veltrani::onOneLine`), line feeds too: a line ends where the program
/// ends it.
class Console {
public:
    /// How every fault begins, on whatever way it comes.
    static constexpr const char* ERROR = "error: ";

    Console() = delete;

    /// One line on standard error: "note: ...", a summary.
    static void say(const std::string& line);
    /// One line on standard error, headed by `ERROR`.
    static void error(const std::string& line);
    /// Lines on standard error, each with a line feed at its end: for texts whose foreign parts are on one line
    /// already.
    static void sayLines(const std::string& lines);
    /// The same, headed by `ERROR`.
    static void errorLines(const std::string& lines);
    /// One line on standard output.
    static void print(const std::string& line);

    /// The exit code of a command that has printed everything: that of a fault, which is reported, when standard output
    /// does not take it.
    [[nodiscard]] static ExitCode finishOutput();
};
