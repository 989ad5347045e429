#pragma once

/// How much the program says on standard error.
enum class Verbosity {
    QUIET,    ///< errors alone
    NORMAL,   ///< errors, warnings and summaries
    VERBOSE,  ///< everything, information of the library included
};
