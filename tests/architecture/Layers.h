#pragma once

#include <string>
#include <vector>

/// The layers of the source tree and the direction in which they may include each other.
namespace layers {

/// The layer of a source file, by its path in the repository: the higher the number, the higher the layer. -1 for files
/// that belong to none (tests, benchmarks, examples).
int ofFile(const std::string& path);

/// The layer of an included name such as "Common/Point.h"; -1 for a name of no layer (system, third party, same
/// folder).
int ofInclude(const std::string& name);

/// The names in the `#include "..."` lines of a text.
std::vector<std::string> quotedIncludes(const std::string& text);

/// One line for every include of `text` that points upwards.
std::vector<std::string> upwardIncludes(const std::string& path, const std::string& text);

}  // namespace layers
