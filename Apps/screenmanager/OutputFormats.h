#pragma once

#include "DisplayReport/basics/ReportHead.h"
#include "OptionList.h"

#include <string>
#include <vector>

/// The formats in which a command can write its result, the first of which is the default.
struct OutputFormats {
    std::vector<std::string> names;

    /// "csv, json or ply".
    [[nodiscard]] std::string list() const;

    /// The format that is meant: the one that was named, else that of the name of the output, else the default. Refuses
    /// the command line for a format that is none of these, and where none was named for an output whose name ends
    /// unlike all of them. A name without an ending fits every format.
    /// @param named with `--format`; empty for none
    /// @param output empty for standard output
    /// @param option that names the output
    [[nodiscard]] std::string chosen(const std::string& named, const std::string& output,
                                     const char* option = "--output") const;
};

/// Adds `--format`, the value of which is a name or empty. The list of formats follows `help`.
Option addFormat(OptionList& line, std::string& format, const std::string& help);
/// The same for a command that has these formats at all times, with them as help.
/// @param hasOutput whether the output has a name that may state the format
Option addFormat(OptionList& line, std::string& format, const OutputFormats& formats, bool hasOutput);

/// The files that a display is described by, with their digests, for a format that names them: "json". None for all
/// others, for which they would be read in vain.
[[nodiscard]] std::vector<Veltrani::DisplayReport::SourceFile> sourcesFor(const std::string& format,
                                                                          const std::string& configurationFile);
