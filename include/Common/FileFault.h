#pragma once

#include <string>
#include <string_view>

namespace Veltrani {

/// What is wrong at one place of a file, stated so that its author can correct it.
struct FileFault {
    int line = 1;         ///< the first line of the file is 1
    std::string element;  ///< the element at that line: "camera_matrix", "node (3, 4)"
    std::string found;    ///< as the file has it, see `inQuotes`
    std::string expected;
    std::string remedy;
};

/// Throws `VeltraniParseException`: "document:line: element: found ..., expected ...; remedy", on one line.
/// @param document usually the path; UTF-8
[[noreturn]] void throwFault(const std::string& document, const FileFault& fault);

/// Returns the content of a file, without the byte-order mark that some editors put before UTF-8 text.
///
/// Throws `VeltraniMissingFileException` when there is no such file, `VeltraniParseException` when it is longer than
/// `largest` bytes.
[[nodiscard]] std::string contentOf(const std::string& utf8Path, std::size_t largest);

}  // namespace Veltrani
