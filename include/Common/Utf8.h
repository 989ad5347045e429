#pragma once

#include <string>

/// Conversion between wide text (UTF-32 in `wchar_t`) and UTF-8, independent of the locale.
///
/// Both directions are strict: any ill-formed input gives an empty result, and so does an empty input. Ill-formed are,
/// in UTF-8, stray or missing continuation bytes, overlong forms, encoded surrogates and values above U+10FFFF; in wide
/// text, surrogates and values above U+10FFFF.
namespace Veltrani {

[[nodiscard]] std::string toUtf8(const std::wstring& text);

[[nodiscard]] std::wstring fromUtf8(const std::string& text);

/// As `fromUtf8`, but never loses a text: one that is not UTF-8 is widened byte by byte (each byte as U+0000 to
/// U+00FF). Meant for messages of other libraries, whose encoding is not documented.
[[nodiscard]] std::wstring fromUtf8OrBytes(const std::string& text);

}  // namespace Veltrani
