#pragma once

#include <string>

/// The diagnostics service of the process: switches for tests and demonstrations, and the folder that collects what is
/// needed to understand a calibration afterwards.
///
/// Without a data directory nothing is collected. Not safe to use from two threads at once.
class DravixDiagnostics {
public:
    DravixDiagnostics() = delete;

    /// Returns true when projectors are to be replaced by virtual ones on load. Off at first.
    [[nodiscard]] static bool doVirtualLoad();
    static void setVirtualLoad(bool enabled);

    /// Sets the folder in which files are collected; it need not exist yet. An empty name, as at first, turns
    /// collecting off.
    static void setDataDirectory(const std::wstring& directory);

    /// Copies a file to `<data directory>/screens/<file name>`, in place of an earlier one of that name, even of one
    /// from another folder; makes the folders that are missing. Does nothing without a data directory.
    ///
    /// The copy appears as a whole or not at all, and a file may be archived onto itself. Throws `VeltraniException`
    /// naming both files and the reason when copying fails; an earlier copy then stays.
    static void archiveFileToDataSubDirectory(const std::wstring& file);
};
