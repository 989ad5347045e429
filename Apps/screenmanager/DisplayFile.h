#pragma once

#include "Configuration/XMLConfigFile.h"
#include "Console.h"
#include "DisplayReport/basics/Fault.h"

#include <memory>
#include <string>
#include <vector>

/// The configuration that a command works on. Whatever is wrong with it has been reported on standard error when an
/// operation returns that it failed.
class DisplayFile {
public:
    DisplayFile() = delete;

    /// Null when the configuration cannot be read.
    [[nodiscard]] static std::unique_ptr<XMLConfigFile> read(const std::string& file);

    /// Loads what can be loaded of the screen, with progress on a terminal; returns what is wrong with the rest, none
    /// of which has been reported.
    [[nodiscard]] static std::vector<Veltrani::DisplayReport::Fault> loadScreen(XMLConfigFile& config,
                                                                                Verbosity verbosity);

    /// Builds the screen, with progress on a terminal. False when it or a file of it cannot be used.
    [[nodiscard]] static bool buildScreen(XMLConfigFile& config, const std::string& file, Verbosity verbosity);
};
