#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// The PCD format: the words and numbers of its text, and its header.
namespace Veltrani::ScreenManagerDetail {

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

    /// Returns false for a finite number that the nearest number of single precision makes infinite. FLT_MAX is mostly
    /// printed with nine digits, which is a little more than it is.
    [[nodiscard]] static bool fitsSinglePrecision(double number);

    /// Returns true for what a C library prints and reads for a number that is not finite: "nan", "nan(ind)", "inf" or
    /// "infinity", with or without a sign, in any case.
    [[nodiscard]] static bool isNotFinite(std::string_view word);

    /// Returns true for the same text without regard to case; `lower` is in small letters of ASCII.
    [[nodiscard]] static bool isSame(std::string_view word, std::string_view lower);

    /// Returns false unless the word is a whole number that fits, without a sign or with a plus.
    [[nodiscard]] static bool readWhole(std::string_view word, std::uint64_t& number);

    /// Throws `VeltraniParseException` "line 12: found "1,5", expected a number; write it with a point"; `found` is
    /// shortened when long.
    [[noreturn]] static void fail(std::size_t line, std::string_view found, const std::string& expected,
                                  const std::string& remedy);
    /// Throws the same for a fault that has no line of its own: "found no FIELDS line, expected ...; ...".
    [[noreturn]] static void fail(const std::string& found, const std::string& expected, const std::string& remedy);

    /// The remedy for a file that has lost something, or whose header announces too much.
    static constexpr const char* EXPORT_AGAIN = "export the cloud again: the file is cut off, or its header is wrong";
};

/// The header of a PCD file, read strictly.
///
/// The lines FIELDS, SIZE, TYPE, COUNT, WIDTH, HEIGHT, VIEWPOINT, POINTS and DATA, each at most once, with every number
/// in full; `#` starts a comment line. FIELDS (or its old name COLUMNS), POINTS and DATA are required. Without SIZE,
/// TYPE and COUNT every field is a single-precision number; without HEIGHT it is 1; without both WIDTH and HEIGHT the
/// cloud is a single row. A type may be a small letter, "ascii" in any case, and what follows a kind of data on its
/// line does not count, as usual readers have it. What else they guess or skip is a fault here.
class PcdHeader {
public:
    struct Field {
        std::string name;         ///< "_" for bytes without a meaning
        char type = 'F';          ///< in capitals: F floating point, I signed, U unsigned, B boolean
        std::uint64_t size = 4;   ///< bytes per element: 1, 2, 4 or 8, as the type has it
        std::uint64_t count = 1;  ///< elements, at least 1
    };

    enum class Data { ASCII, BINARY, BINARY_COMPRESSED };

    /// @param text the file, or as much of its beginning as can hold a header
    /// Throws `VeltraniParseException` whose message names the line, what was found, what was expected and a remedy.
    explicit PcdHeader(std::string_view text);

    [[nodiscard]] const std::vector<Field>& fields() const { return m_fields; }
    /// Width x height.
    [[nodiscard]] std::uint64_t points() const { return m_points; }
    [[nodiscard]] Data data() const { return m_data; }
    /// Returns the place where the points begin, in bytes from the beginning of the file and as a line number (1 is the
    /// first).
    [[nodiscard]] std::size_t bodyOffset() const { return m_bodyOffset; }
    [[nodiscard]] std::size_t bodyLine() const { return m_line + 1; }

    /// Bytes of one point, all fields together.
    [[nodiscard]] std::uint64_t bytesPerPoint() const;

    /// Returns true when a reader that looks for header lines takes a line that begins with this word for one.
    [[nodiscard]] static bool startsLikeKeyword(std::string_view word);

private:
    enum Keyword : std::size_t { VERSION, FIELDS, SIZE, TYPE, COUNT, WIDTH, HEIGHT, VIEWPOINT, POINTS, DATA, KEYWORDS };
    using Words = std::vector<std::string_view>;

    void readLine(std::string_view line);
    void checkPlace(Keyword keyword, std::string_view word);
    void readFields(const Words& words);
    void readSizes(const Words& words);
    void readTypes(const Words& words);
    void readCounts(const Words& words);
    void readViewpoint(const Words& words) const;
    void readData(const Words& words);
    [[nodiscard]] std::uint64_t readNumber(std::string_view word, std::uint64_t least, std::uint64_t most) const;
    [[nodiscard]] std::uint64_t readSingleNumber(const Words& words) const;
    void requireOnePerField(const Words& words) const;
    void checkWhole() const;
    [[noreturn]] void fail(std::string_view found, const std::string& expected, const std::string& remedy) const;

    std::vector<Field> m_fields;
    std::uint64_t m_width = 0;
    std::uint64_t m_height = 1;
    std::uint64_t m_points = 0;
    Data m_data = Data::ASCII;
    std::size_t m_bodyOffset = 0;
    std::size_t m_line = 0;
    std::bitset<KEYWORDS> m_seen;
};

}  // namespace Veltrani::ScreenManagerDetail
