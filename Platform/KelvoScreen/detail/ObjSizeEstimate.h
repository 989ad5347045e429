#pragma once

#include <cstddef>
#include <string_view>

namespace KelvoScreenDetail {

/// Roughly how many elements an OBJ text defines, from samples spread over it, so that room for them can be reserved
/// at once. A short text is counted whole. Never more than the text has room for.
struct ObjSizeEstimate {
    /// Looks at no more than a quarter of a megabyte, however long the text is.
    [[nodiscard]] static ObjSizeEstimate of(std::string_view text);

    std::size_t vertices = 0;
    std::size_t textureCoordinates = 0;
    std::size_t triangles = 0;
};

}  // namespace KelvoScreenDetail
