#pragma once

#include <cstddef>
#include <exception>
#include <string>

/// A faulty OBJ text: an unreadable or non-finite number, an index of zero or out of range, a face below three corners.
struct ObjLoadException : std::exception {
    /// @param faultyLine line of the fault, 1 is the first
    /// @param foundText the text at the fault, UTF-8, shortened when long
    /// @param expectedText what is expected in its place
    /// @param remedyText what the author of the file can do
    ObjLoadException(std::size_t faultyLine, std::string foundText, std::string expectedText,
                     std::string remedyText = "correct the file, or export it again");

    /// "line 12: found "1,5", expected a finite number with a decimal point; write it as in -1.25 or 1e-3"
    [[nodiscard]] const char* what() const noexcept override;

    std::size_t line = 0;
    std::string found;
    std::string expected;
    std::string remedy;

private:
    std::string m_what;
};
