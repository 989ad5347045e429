#pragma once

#include <chrono>
#include <string>

namespace Veltrani {

/// An advisory lock on a file, held until the end of the scope. A program that reads a file, changes it and replaces it
/// holds the lock from the comparison with what was read until the new file is in its place: then no change is lost
/// between programs that do the same.
///
/// It is the system's lock on the file itself (`flock`), without a file of its own. A rename over the file makes it
/// meaningless for every process that waits: the lock is therefore taken anew until the locked file is the one that
/// bears the name. File systems without such locks are used without.
///
///     const FileLock lock(path);
///     if (contentOf(path) == whatWasRead) { file.commit(); }
class FileLock {
public:
    /// How long a program that only compares and renames may keep others waiting.
    static constexpr std::chrono::milliseconds PATIENCE{10'000};

    /// Waits until no other process or object holds the lock. Where there is no file there is nothing to lock, and
    /// nothing happens. Throws `VeltraniException` naming the file when it cannot be opened for writing, and when it is
    /// still locked after `patience`.
    explicit FileLock(const std::string& utf8Path, std::chrono::milliseconds patience = PATIENCE);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    /// Returns false when there was no file.
    [[nodiscard]] bool isHeld() const { return m_descriptor >= 0; }

private:
    void release();

    int m_descriptor = -1;
};

}  // namespace Veltrani
