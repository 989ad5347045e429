#pragma once

#include <cstddef>
#include <limits>
#include <string>

namespace Veltrani {

/// A regular file opened for reading.
///
/// Opening never blocks and accepts nothing but a regular file: a directory opened as a stream reports absurd sizes,
/// and a pipe or a device never ends. What was examined is what is read: the file is opened once, by its UTF-8 name.
class RegularFile {
public:
    /// Throws `VeltraniMissingFileException` whose message names the file and the reason: no such file, permission
    /// denied, name too long, a directory, a device, ...
    explicit RegularFile(const std::string& utf8Path);
    ~RegularFile();
    RegularFile(const RegularFile&) = delete;
    RegularFile& operator=(const RegularFile&) = delete;

    /// Size in bytes at the time of opening.
    [[nodiscard]] std::size_t size() const { return m_size; }

    /// Returns the whole content, to its end even when the file has grown or shrunk since. Throws
    /// `VeltraniMissingFileException` when reading fails and `std::bad_alloc` when it does not fit into memory.
    /// @param limit reading stops one byte behind it: a longer result means that the file is too large
    [[nodiscard]] std::string readAll(std::size_t limit = std::numeric_limits<std::size_t>::max() - 1) const;

    /// Reads up to `count` bytes from `offset` on into `buffer` and returns how many were read, fewer only at the end
    /// of the file. Throws `VeltraniMissingFileException` when reading fails.
    std::size_t readAt(std::size_t offset, char* buffer, std::size_t count) const;

    /// Returns a name under which another library opens this very file again, whichever file bears its own name by
    /// then. Valid while this object lives. Where the system offers no such names it is the file's own.
    [[nodiscard]] std::string nameForReopening() const;

private:
    std::string m_path;
    int m_descriptor = -1;
    std::size_t m_size = 0;
};

}  // namespace Veltrani
