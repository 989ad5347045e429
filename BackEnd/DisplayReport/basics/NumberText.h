#pragma once

#include <string>

/// Numbers as people and programs read them, whatever the locale is.
namespace Veltrani::DisplayReport {

/// The shortest text that reads back as exactly this number; "nan", "inf" and "-inf" where it is none.
[[nodiscard]] std::string exactText(double value);

/// Five significant digits, without trailing zeros: for tables of numbers that may be of any size.
[[nodiscard]] std::string significantText(double value);

/// Rounded to three decimals, without trailing zeros: for tables, in which a millimetre is enough of a metre.
[[nodiscard]] std::string roundedText(double value);

/// Rounded to so many decimals, with their zeros: for numbers that stand below each other.
[[nodiscard]] std::string fixedText(double value, int decimals);

}  // namespace Veltrani::DisplayReport
