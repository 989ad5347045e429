#pragma once

#include <optional>
#include <string_view>

/// Numbers in the text of a file: the same in every locale, the whole text or nothing.
namespace Veltrani {

/// Reads a finite decimal number: an optional sign, digits with an optional decimal point ("1." and ".5" too), an
/// optional exponent. Returns nothing for everything else: infinities, NaN, a decimal comma, numbers beyond the range
/// of a double. What is nearer to zero than any double is zero.
[[nodiscard]] std::optional<double> parseFinite(std::string_view text);

/// Reads a count: digits alone, from 1 to `largest`.
[[nodiscard]] std::optional<int> parseCount(std::string_view text, int largest);

}  // namespace Veltrani
