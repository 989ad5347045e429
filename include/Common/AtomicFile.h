#pragma once

#include <functional>
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
/// The temporary file is called ".save-HASH-XXXXXX", HASH being 16 hexadecimal digits made of the name of the replaced
/// file, and is locked (flock) while it is written. What a killed process left behind is thus recognised by its name
/// and by its lock, which no process holds: the next `AtomicFile` for the same file removes it. Any number of them may
/// write for the same file at once; the last commit stays.
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

    /// Returns the path that is replaced: where the symbolic links lead.
    [[nodiscard]] const std::string& target() const { return m_target; }

    /// Appends. Throws `VeltraniException` when writing fails.
    void write(std::string_view bytes);

    /// Brings the content to the disk and puts it in place of the old file. Throws `VeltraniException` when that fails;
    /// the old file then stays. Nothing can be written afterwards.
    /// @param beforeReplacing called when everything has been written and the old file is still there; what it throws
    ///        keeps the old file
    void commit(const std::function<void()>& beforeReplacing = {});

    /// Removes the temporary files that this process is writing (of the first 16 at a time; a later one is left to the
    /// next run). Called by a process that is about to end: what is being written can no longer be committed.
    ///
    /// May be called by a signal handler: it calls nothing but `unlink`.
    static void removeTemporaryFiles() noexcept;

private:
    [[nodiscard]] bool create(const std::string& prefix);
    void createLocked(const std::string& requested);
    void discard();

    std::string m_target;
    std::string m_temporary;  ///< empty when there is none any more
    int m_descriptor = -1;
    int m_slot = -1;  ///< where `removeTemporaryFiles` finds the temporary file
};

}  // namespace Veltrani
