#pragma once

#include <string>
#include <string_view>

namespace Veltrani {

/// A text of outside data for a message of one line: control characters spelled out.
[[nodiscard]] std::string onOneLine(std::string_view text);

/// The same in quotes, and cut between two characters when it is long.
[[nodiscard]] std::string inQuotes(std::string_view text);

}  // namespace Veltrani
