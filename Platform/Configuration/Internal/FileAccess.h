#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Reading and replacing whole files. Paths are UTF-8 and opened byte for byte, whatever the locale is.
namespace Veltrani {

/// The bytes of a regular file. Anything else (a missing file, a folder, a device, a pipe, a path that is too long or
/// not UTF-8) and every failure to read throws `VeltraniMissingFileException` naming the path and the cause; a pipe
/// or a device is not waited for.
///
/// @param limit reading stops one byte behind it: a longer result tells that the file is too large
[[nodiscard]] std::string readFile(const std::string& path, std::size_t limit);

/// Gives a file new content in one step: whoever opens it finds the old bytes or the new ones, whatever happens. The
/// new file is written beside the old one, brought to the disk and renamed over it. An existing file keeps its mode
/// and, where the system permits, its owner; a symbolic link stays one, and what it points to is replaced.
///
/// A failure throws `VeltraniException` naming the path and the cause, and leaves the old file and nothing beside it.
void replaceFile(const std::string& path, std::string_view content);

}  // namespace Veltrani
