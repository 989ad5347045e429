#pragma once

#include <cstddef>
#include <string_view>

namespace Veltrani {

/// The line (from 1) of the first start tag with more than `limit` attributes; 0 when there is none.
///
/// The XML parser compares every attribute of a tag with every other, so that one tag with a million attributes would
/// keep it busy for minutes. This scan is linear, understands comments, CDATA sections and processing instructions
/// enough to pass over them, and leaves every other judgement to the parser.
[[nodiscard]] int lineOfOverfullTag(std::string_view text, std::size_t limit);

}  // namespace Veltrani
