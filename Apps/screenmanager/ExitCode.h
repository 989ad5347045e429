#pragma once

/// What the program answers to the shell. Documented in its manual page.
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
