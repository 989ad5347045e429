#pragma once

#include "KelvoControl/detail/WarpMesh.h"

#include <memory>
#include <string>
#include <string_view>

namespace KelvoControlDetail {

/// Reads a warp mesh:
///
///     2                      rectangular
///     nx ny                  nodes in a row, rows; both at least 2
///     x y u v i              nx * ny nodes, x fastest
///     pixels W H             size of the channel's picture
///
/// (x, y) is the node in the picture: y from -1 (bottom) to 1 (top), x from -a to a, where a is the largest x of the
/// file; in pixels ((x + a) / (2 a) W, (y + 1) / 2 H). (u, v) is the node on the screen. i is the brightness, up to 1;
/// below 0 the node is unused. Lines without text are passed over, and the last line needs no end: a file that was cut
/// off within its very last number cannot be told from a whole one.
class WarpMeshFile {
public:
    /// Throws `VeltraniMissingFileException` when there is no such file and `VeltraniParseException`, which names file
    /// and line, when it cannot be understood.
    [[nodiscard]] static std::shared_ptr<const WarpMesh> read(const std::wstring& file);

    /// As `read`, from a text.
    /// @param document named in messages, UTF-8
    [[nodiscard]] static std::shared_ptr<const WarpMesh> parse(std::string_view text, const std::string& document);
};

}  // namespace KelvoControlDetail
