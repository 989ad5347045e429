#pragma once

#include <optional>
#include <string>

namespace Veltrani::ConfigurationDetail {

/// The content of the files of a configuration when they were last read or saved: the one that it was read from, and
/// the last other one that it was saved to.
///
/// A file counts as the same one when it is named by the same text, wherever the links on that way lead by now, or when
/// it is in the same place.
class KnownFiles {
public:
    /// To be called as soon as the file has been read.
    void addRead(const std::string& utf8Path, std::string content);
    /// To be called as soon as the file has been saved.
    void addSaved(const std::string& utf8Path, std::string content);

    /// Throws `ConfigurationChangedException` when the file is known, and is gone or holds anything else. A file that
    /// is not known is not examined.
    /// @param target where the symbolic links at `utf8Path` lead, whether a file is there or not
    void requireUnchanged(const std::string& utf8Path, const std::string& target) const;

private:
    struct File {
        std::string named;  ///< absolute, as it was named
        std::string place;  ///< absolute, without links
        std::string content;
    };

    [[nodiscard]] static File fileAt(const std::string& utf8Path, const std::string& target);
    [[nodiscard]] static bool isSame(const std::optional<File>& known, const File& file);

    std::optional<File> m_read;
    std::optional<File> m_saved;
};

}  // namespace Veltrani::ConfigurationDetail
