#pragma once

#include "ColumnsByRows.h"
#include "Command.h"

#include <string>
#include <vector>

class XMLConfigFile;

/// The light of an export, added up on the screen of a display.
struct LitOptions {
    std::string folder;               ///< of the export; empty: no light is added up
    std::vector<std::string> errors;  ///< files of the errors; the format of each follows from its name

    [[nodiscard]] bool isWanted() const { return !folder.empty(); }
};

/// `--lit` and `--lit-error`. Returns the former, for what does not go together with it.
Option addLitOptions(OptionList& line, LitOptions& options);

/// Refuses, as a wrong command line, files of errors without `--lit`, those that are named like no format, and one that
/// is named twice.
/// @param output where the picture goes
void checkLitOptions(const LitOptions& options, const std::string& output);

/// Writes the picture of a display whose configuration was read, and its errors. Returns an `ExitCode`; what is wrong
/// has been reported then.
/// @param file the configuration, as it was named
[[nodiscard]] int writeLitPicture(XMLConfigFile& config, const std::string& file, const LitOptions& options,
                                  const std::string& output, const ColumnsByRows& size, Verbosity verbosity);
