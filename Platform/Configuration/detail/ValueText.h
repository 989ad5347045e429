#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

/// Values in the text of a configuration. Numbers are the same in every locale, and read as a whole or not at all.
namespace Veltrani::ConfigurationDetail {

/// The result of reading a text as a number.
enum class NumberState {
    GOOD,
    WRONG_FORM,    ///< the text has another form; infinities and NaN count as this
    OUT_OF_RANGE,  ///< a number, but none that the type can hold
};

template <class T>
struct ParsedNumber {
    T value{};  ///< zero unless good
    NumberState state = NumberState::WRONG_FORM;
};

/// Reads a finite decimal number: an optional minus, digits with an optional decimal point, an optional exponent. No
/// blanks, no plus sign, no grouping.
[[nodiscard]] ParsedNumber<double> parseNumber(std::string_view text);

/// Reads a count of pixels: digits, greater than zero.
[[nodiscard]] ParsedNumber<int> parsePixelCount(std::string_view text);

/// Exactly four numbers from 0 to 255, apart by white space.
[[nodiscard]] std::optional<std::array<unsigned char, 4>> parseFourBytes(std::string_view text);

/// Returns the shortest decimal text.
[[nodiscard]] std::string numberText(int value);
/// Returns the shortest decimal text that is read as the same double; "nan", "inf" or "-inf", for messages, where it is
/// not finite.
[[nodiscard]] std::string numberText(double value);

/// The counterpart of `parseFourBytes`.
[[nodiscard]] std::string fourBytesText(const std::array<unsigned char, 4>& bytes);

/// Returns a text as UTF-8 for an XML document. Throws `VeltraniException` when XML cannot hold it: control characters
/// other than tab, line feed and carriage return, U+FFFE, U+FFFF, surrogates, values beyond Unicode.
///
/// @param what names the text in the message
[[nodiscard]] std::string xmlText(const std::wstring& text, const std::wstring& what);

}  // namespace Veltrani::ConfigurationDetail
