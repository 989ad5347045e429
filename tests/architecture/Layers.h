#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The libraries of the source tree, and the rooms of those that have some ("DisplayReport/coverage"): which of each
/// other and which packages from outside they may include.
namespace layers {

struct Library {
    std::string_view name;                   ///< first folders of an included name
    std::vector<std::string_view> folders;   ///< in the repository
    std::vector<std::string_view> mayUse;    ///< other libraries; the name of a library of rooms stands for all of them
    std::vector<std::string_view> packages;  ///< first parts of names in angle brackets, such as "libxml"
    std::vector<std::string_view> exports;   ///< of these packages: those that its exported headers may include
};

/// From the lowest library to the highest: each may use only such that stand before it.
const std::vector<Library>& all();

/// The library of a source file, by its path in the repository; null for files of none (tests, benchmarks, examples).
const Library* ofFile(const std::string& path);

/// True for headers that are installed: those of `include/` and `Platform/`, without folders named "detail".
bool isExported(const std::string& path);

/// The names in the `#include "..."` lines of a text.
std::vector<std::string> quotedIncludes(const std::string& text);

/// The names in the `#include <...>` lines of a text.
std::vector<std::string> systemIncludes(const std::string& text);

/// One line for every include of a file that the table does not allow: another library, a folder named "detail" of
/// another library or in an exported header, a package from outside.
std::vector<std::string> faultsOf(const std::string& path, const std::string& text);

}  // namespace layers
