#pragma once

#include "ExportFiles/PlayerWarp.h"
#include "KelvoScreen/TriangleMesh.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Veltrani::ExportFiles {

/// A warp of triangles, in which a player interpolates linearly.
class TriangleWarp : public PlayerWarp {
public:
    /// @param mesh x from -aspect to aspect, y from -1 to 1, with a texture coordinate at every corner
    /// @param pixels of the picture
    TriangleWarp(const TriangleMesh& mesh, const Point<int, 2>& pixels);

    [[nodiscard]] std::optional<Shown> shownAt(const Point<double, 2>& picture) const override;

private:
    struct Corner {
        Point<double, 2> picture;
        Point<double, 2> content;
    };
    using Piece = std::array<Corner, 3>;
    using Places = std::array<std::size_t, 4>;

    void addPiece(const Piece& piece);
    [[nodiscard]] std::size_t bucketOf(double along) const;
    /// Buckets from left to right and from bottom to top that a piece reaches.
    [[nodiscard]] Places reachOf(const Piece& piece) const;

    std::vector<Piece> m_pieces;
    std::size_t m_side = 1;                             ///< buckets along each side of the picture
    std::vector<std::vector<std::uint32_t>> m_buckets;  ///< pieces that reach them
};

}  // namespace Veltrani::ExportFiles
