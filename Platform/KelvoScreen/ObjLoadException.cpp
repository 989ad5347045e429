#include "KelvoScreen/ObjLoadException.h"

#include <utility>

ObjLoadException::ObjLoadException(std::size_t faultyLine, std::string foundText, std::string expectedText,
                                   std::string remedyText)
    : line(faultyLine),
      found(std::move(foundText)),
      expected(std::move(expectedText)),
      remedy(std::move(remedyText)),
      m_what("line " + std::to_string(line) + ": found \"" + found + "\", expected " + expected + "; " + remedy) {}

const char* ObjLoadException::what() const noexcept {
    return m_what.c_str();
}
