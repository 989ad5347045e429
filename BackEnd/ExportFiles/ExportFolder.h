#pragma once

#include <string>
#include <vector>

namespace Veltrani::ExportFiles {

/// A folder that appears whole or not at all.
///
/// It is filled beside its final place and renamed there by `commit`; what it replaces is exchanged with it in one
/// step, then removed. Without `commit` the old folder stays and nothing is left beside it. While it is filled its name
/// is
/// ".NAME.export-XXXXXX" and it is locked (flock): what a killed process left behind is recognised by its name and by
/// its lock, which no process holds, and is removed by the next `ExportFolder` for the same place.
///
/// A folder may be replaced that is empty, or an earlier export without a file of somebody else in it.
class ExportFolder {
public:
    static constexpr const char* MANIFEST = "manifest.json";

    /// Throws `VeltraniException`, naming the folder and the remedy, when it exists and may not be replaced, and when
    /// no folder can be made there.
    /// @param utf8Path of the final folder; a symbolic link to a folder stays one
    /// @param replaces whether an earlier export may be replaced
    ExportFolder(const std::string& utf8Path, bool replaces);
    ~ExportFolder();
    ExportFolder(const ExportFolder&) = delete;
    ExportFolder& operator=(const ExportFolder&) = delete;

    /// Where to write what the folder is to hold.
    [[nodiscard]] std::string file(const std::string& name) const { return m_temporary + '/' + name; }

    /// Throws `VeltraniException` when that fails.
    void writeManifest(const std::string& text) const;

    /// Brings the files to the disk and puts the folder in its place. Throws `VeltraniException` when that fails; the
    /// old folder then stays.
    void commit();

private:
    void create();
    void removeLeftovers() const;

    std::string m_target;     ///< where links lead
    std::string m_temporary;  ///< empty when there is none any more
    int m_lock = -1;
    bool m_replaces = false;
    bool m_exists = false;
};

}  // namespace Veltrani::ExportFiles
