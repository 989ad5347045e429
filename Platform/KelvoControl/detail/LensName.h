#pragma once

#include <string>

namespace KelvoControlDetail {

/// What the two texts mean that a projection model is made from.
struct LensName {
    std::wstring kind;
    std::wstring file;  ///< empty without one

    /// @param first the kind, or "kind:file" while `second` is empty; the file begins behind the first colon
    /// @param second the file
    [[nodiscard]] static LensName of(const std::wstring& first, const std::wstring& second);
};

}  // namespace KelvoControlDetail
