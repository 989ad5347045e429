#pragma once

#include "DisplayReport/basics/ReportHead.h"

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Veltrani::DisplayReport {

/// Reads comma-separated values line by line, the same in every locale: what every reader of points has in common.
///
/// Lines end with a line feed with or without a carriage return; a byte-order mark before the first one does not
/// matter. Lines that begin with "#" may come first and say what the table is; commas at their end, as spreadsheets
/// write them, do not matter. Cells stand between commas, without the
/// blanks around them; one that holds commas, quotes or line feeds stands in quotes, in which a quote is doubled.
///
///     TableReader table(in, "points.csv", {"point", "write one point per line, such as 0.5,0.25"});
///     for (bool isThere = table.readHead(); isThere; isThere = table.next()) { ... table.cells() ... }
class TableReader {
public:
    /// Lines are cut off here, so that a file without line ends does not fill the memory.
    static constexpr std::size_t LONGEST_LINE_BYTES = 4096;

    /// How a line is refused, unless the caller says it better.
    struct Wording {
        std::string element;  ///< what a line holds
        std::string remedy;
    };

    /// @param in not owned, must outlive the reader
    /// @param document named in messages, UTF-8
    TableReader(std::istream& in, std::string document, Wording wording);

    /// Reads the lines that begin with "#"; the first line behind them is the current one then. To be called before any
    /// `next`. Throws `VeltraniParseException` for a table of a later version, one that is no text or in UTF-16, and
    /// what `next` throws.
    /// @param comment is given those lines, without their ends
    /// @return false at the end of the input
    [[nodiscard]] bool readHead(const std::function<void(std::string_view)>& comment = {});
    /// What those lines state; without such lines the report, the frame and the unit are empty.
    [[nodiscard]] const ReportHead& head() const { return m_head; }

    /// Makes the next line the current one. Throws `VeltraniParseException` when it is too long, or holds a carriage
    /// return that no line feed follows; reading cannot go on then.
    /// @return false at the end of the input
    [[nodiscard]] bool next();

    /// From the next line on cells in quotes may hold line feeds: only below a header, since text that is no table may
    /// have one quote.
    void holdsQuotes() { m_holdsQuotes = true; }

    /// The current line, without its end.
    [[nodiscard]] const std::string& text() const { return m_text; }
    /// The number of the current line, its last one where quotes hold line feeds; 0 before the first.
    [[nodiscard]] int line() const { return m_line; }
    [[nodiscard]] bool isEmpty() const;
    /// The cells of the current line, without their quotes; none where quotes are not closed.
    [[nodiscard]] std::optional<std::vector<std::string>> cells() const { return cellsOf(m_text); }
    [[nodiscard]] static std::optional<std::vector<std::string>> cellsOf(std::string_view line);

    /// How much has been read, for the progress of a long file.
    [[nodiscard]] std::size_t bytesRead() const { return m_bytes; }

    /// Throws `VeltraniParseException` on one line: with the document, `line`, what was found and what is expected.
    /// @param found as it shall stand there, see `inQuotes`
    [[noreturn]] void refuse(int line, const std::string& found, const std::string& expected) const;
    [[noreturn]] void refuse(int line, const std::string& found, const std::string& expected,
                             const Wording& wording) const;

private:
    void requireText() const;

    std::istream& m_in;
    std::string m_document;
    Wording m_wording;
    ReportHead m_head{.frame = ""};
    std::string m_text;
    int m_line = 0;
    bool m_holdsQuotes = false;
    std::size_t m_bytes = 0;
};

/// ASCII letters in lower case, as the names of columns are compared; other letters stay as they are, in every locale.
[[nodiscard]] std::string inLowerCase(std::string_view text);

/// Where each of the names stands among the cells of a header; none unless all of them do, each once.
[[nodiscard]] std::optional<std::vector<std::size_t>> placesOf(const std::vector<std::string>& names,
                                                               const std::vector<std::string>& cells);

}  // namespace Veltrani::DisplayReport
