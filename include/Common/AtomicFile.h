#pragma once

#include <string>
#include <string_view>

namespace Veltrani {

/// Replaces a file as a whole: the content is written beside it and renamed over it by `commit`, so that a crash, a
/// full disk or an exception never leaves half a file. Without `commit` the old file stays and nothing is left beside
/// it.
///
/// A symbolic link stays one: the file that it leads to is replaced, or made. The permissions of a replaced file are
/// kept and, where the system permits, its owner.
///
///     AtomicFile file(path);
///     file.write(text);
///     file.commit();
class AtomicFile {
public:
    /// Throws `VeltraniException`, naming the file and the cause, when no file can be written there: an unwritable or
    /// missing folder, or a target that exists and is not a regular file.
    explicit AtomicFile(const std::string& utf8Path);
    ~AtomicFile();
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    /// Appends. Throws `VeltraniException` when writing fails.
    void write(std::string_view bytes);

    /// Brings the content to the disk and puts it in place of the old file. Throws `VeltraniException` when that fails;
    /// the old file then stays. Nothing can be written afterwards.
    void commit();

private:
    void discard();

    std::string m_target;
    std::string m_temporary;
    int m_descriptor = -1;
};

}  // namespace Veltrani
