#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Veltrani {

/// The words and numbers of PCD text.
class PcdText {
public:
    PcdText() = delete;

    /// The words of a line, separated by blanks, tabs and carriage returns.
    [[nodiscard]] static std::vector<std::string_view> split(std::string_view line);

    /// Any number that a C library reads in full, "nan" and "inf" included, with a decimal point.
    [[nodiscard]] static bool isNumber(std::string_view word);

    /// A finite number within the range of `float`, or "nan" without a sign (in any case), which stands for a point
    /// that was not measured.
    [[nodiscard]] static bool isCoordinate(std::string_view word);

    /// False unless the word is a whole number without a sign that fits.
    [[nodiscard]] static bool readWhole(std::string_view word, std::uint64_t& number);

    /// Throws `VeltraniParseException` "line 12: found "1,5", expected a number"; `found` is shortened when long.
    [[noreturn]] static void fail(std::size_t line, std::string_view found, const std::string& expected);
};

}  // namespace Veltrani
