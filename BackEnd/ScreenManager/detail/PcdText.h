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

    /// Any number that a C library reads in full, with a decimal point, or one that is not finite.
    [[nodiscard]] static bool isNumber(std::string_view word);

    /// A finite number that is finite in single precision as well, or one that is not finite: a point that was not
    /// measured.
    [[nodiscard]] static bool isCoordinate(std::string_view word);

    /// False for a finite number that the nearest number of single precision makes infinite. FLT_MAX is mostly printed
    /// with nine digits, which is a little more than it is.
    [[nodiscard]] static bool fitsSinglePrecision(double number);

    /// What a C library prints and reads for a number that is not finite: "nan", "nan(ind)", "inf" or "infinity", with
    /// or without a sign, in any case.
    [[nodiscard]] static bool isNotFinite(std::string_view word);

    /// The same text without regard to case; `lower` in small letters of ASCII.
    [[nodiscard]] static bool isSame(std::string_view word, std::string_view lower);

    /// False unless the word is a whole number that fits, without a sign or with a plus.
    [[nodiscard]] static bool readWhole(std::string_view word, std::uint64_t& number);

    /// Throws `VeltraniParseException` "line 12: found "1,5", expected a number; write it with a point"; `found` is
    /// shortened when long.
    [[noreturn]] static void fail(std::size_t line, std::string_view found, const std::string& expected,
                                  const std::string& remedy);
    /// The same for what has no line of its own: "found no FIELDS line, expected ...; ...".
    [[noreturn]] static void fail(const std::string& found, const std::string& expected, const std::string& remedy);

    /// What helps against a file that has lost something, or whose header promises too much.
    static constexpr const char* EXPORT_AGAIN = "export the cloud again: the file is cut off, or its header is wrong";
};

}  // namespace Veltrani
