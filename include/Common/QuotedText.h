#pragma once

#include <string>
#include <string_view>

namespace Veltrani {

/// Returns a text of outside data (a name, an id, a file name, a reply of a device) for a message or a table: one line
/// that steers no terminal.
///
/// A line feed is shown as "\n"; other control characters of ASCII, and bytes that are no UTF-8, as "\x1b"; the control
/// characters beyond ASCII, line and paragraph separators, marks that turn the direction of writing and characters
/// without a width as "\u202e". Everything else stays as it is. To show a text twice changes nothing more.
[[nodiscard]] std::string onOneLine(std::string_view text);

/// The same in quotes, and cut between two characters when it is long.
[[nodiscard]] std::string inQuotes(std::string_view text);

}  // namespace Veltrani
