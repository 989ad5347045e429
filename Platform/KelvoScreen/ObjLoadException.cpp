#include "KelvoScreen/ObjLoadException.h"

#include <utility>

ObjLoadException::ObjLoadException(std::size_t faultyLine, std::string foundText, std::string expectedText)
    : line(faultyLine),
      found(std::move(foundText)),
      expected(std::move(expectedText)),
      m_what("line " + std::to_string(line) + ": found \"" + found + "\", expected " + expected) {}

const char* ObjLoadException::what() const noexcept {
    return m_what.c_str();
}
