#pragma once

#include "ColumnsByRows.h"
#include "Command.h"

#include <memory>
#include <string>
#include <vector>

class XMLConfigFile;

namespace Veltrani::DisplayReport {
struct DisplayScene;
}

namespace Veltrani::ExportFiles {
class ExportedDisplay;
}

/// The light of an export, added up on the screen of a display.
struct LitOptions {
    std::string folder;               ///< of the export; empty: no light is added up
    std::vector<std::string> errors;  ///< files of the errors; the format of each follows from its name

    [[nodiscard]] bool isWanted() const { return !folder.empty(); }
};

/// `--lit` alone.
Option addLitOption(OptionList& line, LitOptions& options, const char* help);

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

/// The light of an export in the scene of a page. What is wrong with the folder is reported when this is made, before
/// the work that takes long.
class LitScene {
public:
    /// @param output where the page goes
    /// @param config must outlive this
    /// @param file the configuration, as it was named
    LitScene(const LitOptions& options, const std::string& output, XMLConfigFile& config, std::string file,
             Verbosity verbosity);
    ~LitScene();
    LitScene(const LitScene&) = delete;
    LitScene& operator=(const LitScene&) = delete;

    /// An `ExitCode`: other than `EXIT_ALL_RIGHT` when nothing can be added, which has been reported then.
    [[nodiscard]] ExitCode code() const { return m_code; }
    /// Adds up the light on the current screen, which the scene was collected from, with notes. False when that cannot
    /// be done, which has been reported then.
    [[nodiscard]] bool addTo(Veltrani::DisplayReport::DisplayScene& scene) const;

private:
    XMLConfigFile& m_config;
    std::string m_file;
    Verbosity m_verbosity;
    std::unique_ptr<const Veltrani::ExportFiles::ExportedDisplay> m_exported;
    ExitCode m_code = EXIT_ALL_RIGHT;
    bool m_isChanged = false;
};
