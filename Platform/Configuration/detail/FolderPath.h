#pragma once

#include <string>

namespace Veltrani::ConfigurationDetail {

/// The folder of a configuration, against which the file names in it are resolved.
///
/// Resolving is a matter of text alone: no file is examined, links and ".." stay as they are, and a relative folder
/// gives relative names.
class FolderPath {
public:
    /// No folder: every name stays as it is.
    FolderPath() = default;
    /// Returns the folder part of a file name; none when it has no slash.
    [[nodiscard]] static FolderPath ofFile(const std::wstring& fileName);

    /// Returns the folder without a slash at the end, unless it is the root; empty when there is none.
    [[nodiscard]] const std::wstring& text() const { return m_folder; }

    /// An absolute name stays; a relative one is prefixed with the folder; for an empty one the folder itself is
    /// returned.
    [[nodiscard]] std::wstring resolve(const std::wstring& name) const;

    /// Returns the name that is resolved to the same file: without the folder where it stands in it, else unchanged.
    [[nodiscard]] std::wstring relative(const std::wstring& name) const;

private:
    std::wstring m_folder;
};

}  // namespace Veltrani::ConfigurationDetail
