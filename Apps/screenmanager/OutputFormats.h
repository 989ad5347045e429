#pragma once

#include "DisplayReport/basics/ReportHead.h"
#include "OptionList.h"

#include <string>
#include <vector>

/// The formats in which a command can write its result, the first of which is the default.
struct OutputFormats {
    std::vector<std::string> names;
    /// Every name of a file has to end as those of a format do. Otherwise only one that ends like a format of another
    /// command is refused.
    bool mustFitName = false;

    /// "csv, json or ply".
    [[nodiscard]] std::string list() const;

    /// The format that is meant: the one that was named, else that of the name of the output, else the default. Refuses
    /// the command line for a format that is none of these, and for an output that is named like none of them.
    /// @param named with `--format`; empty for none
    /// @param output empty for standard output
    [[nodiscard]] std::string chosen(const std::string& named, const std::string& output) const;
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
