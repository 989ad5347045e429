#pragma once

#include "FitSession/LensFile.h"

#include <memory>
#include <string>
#include <vector>

class XMLConfigFile;

namespace Veltrani::DisplayFit {
struct ChannelFit;
}

namespace Veltrani::FitSession {

/// A configuration with the values that a fit found, on its way to the disk.
///
/// Whatever ends it, the old set of files or the new one is there as a whole: lens files get new names beside the
/// configuration and reach the disk before it, and the configuration is replaced in one step. Without `save`
/// or `keep` the lens files are removed again; a killed process may leave some, which nothing names.
///
///     FittedDisplay fitted(*config, "fitted/display.xml");
///     for (const ChannelFit& channel : result.channels) { fitted.take(channel); }
///     fitted.save();
class FittedDisplay {
public:
    /// Throws what `XMLConfigFile::movedTo` throws.
    /// @param config is left as it is unless it is to be changed in place; must outlive this
    /// @param utf8Path to be written; empty for `utf8Source`, in place
    /// @param utf8Source the file that `config` was loaded from
    FittedDisplay(XMLConfigFile& config, const std::string& utf8Path, const std::string& utf8Source);
    ~FittedDisplay();
    FittedDisplay(const FittedDisplay&) = delete;
    FittedDisplay& operator=(const FittedDisplay&) = delete;

    /// Puts the values that were solved into the entry of the channel, and writes its lens file where its lens has
    /// changed. Nothing for a channel that was not solved. Throws what the setters throw and `VeltraniException` when
    /// the lens file cannot be written.
    void take(const DisplayFit::ChannelFit& fit);

    /// Returns whether a number, or the name of a lens file, is another one than before.
    [[nodiscard]] bool isChanged() const;

    /// Throws what `XMLConfigFile::save` throws.
    void save();
    /// Instead of it, where the configuration is saved by somebody else: the lens files are not removed any more.
    void keep();

    /// The file that is written.
    [[nodiscard]] const std::string& path() const { return m_path; }
    /// The paths of the lens files that were written.
    [[nodiscard]] std::vector<std::string> lensFiles() const;

private:
    [[nodiscard]] std::string stemFor(const std::string& projectorId) const;

    std::unique_ptr<XMLConfigFile> m_moved;  ///< null when it is changed in place
    XMLConfigFile& m_config;
    std::string m_path;
    std::string m_before;  ///< the text without what was fitted
    std::vector<LensFile> m_lensFiles;
};

}  // namespace Veltrani::FitSession
