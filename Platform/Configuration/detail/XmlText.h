#pragma once

#include <string>

namespace Veltrani {

/// A text as UTF-8 for an XML document. Throws `VeltraniException` when XML cannot hold it: control characters other
/// than tab, line feed and carriage return, U+FFFE, U+FFFF, surrogates, values beyond Unicode.
///
/// @param what names the text in the message
[[nodiscard]] std::string xmlText(const std::wstring& text, const std::wstring& what);

}  // namespace Veltrani
