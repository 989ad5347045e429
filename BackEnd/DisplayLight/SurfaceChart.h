#pragma once

#include "Common/Point.h"
#include "DisplayLight/PlaceGrid.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

class ScreenGeometry;

namespace Veltrani::DisplayLight {

/// A surface spread out in a picture: which place of it each pixel of the picture shows, and the triangles to draw it
/// with.
///
/// A surface that is given by numbers fills the picture with its 2D coordinates, s to the right and t downwards. Of a
/// mesh every triangle has a half of a square of its own, as large as the triangle; in slivers several of them. A
/// mesh of more triangles than a page can draw is drawn thinned, and each place is looked up on the mesh itself.
///
/// Rows of the grid go downwards. The middle of the first pixel is at (0.5, 0.5) / size.
struct SurfaceChart {
    using Triangle = std::array<std::uint32_t, 3>;
    /// A pixel beyond the edge of a triangle, which shows the mean of two within it.
    using Seam = std::array<std::size_t, 3>;

    PlaceGrid grid;                             ///< unseen places show nothing
    std::vector<Point<double, 3>> vertices;     ///< world frame, native units
    std::vector<Point<double, 2>> coordinates;  ///< of the vertices in the picture, (0, 0) to (1, 1), downwards
    std::vector<Triangle> triangles;            ///< indices; counter-clockwise seen against the normal of the surface
    std::vector<Seam> seams;                    ///< the pixel, and those two
    double step = 0;                            ///< from one place to the next in the mean, native units

    /// The most pixels of a side: what every graphics processor takes.
    static constexpr std::size_t LONGEST_SIDE = 4096;
    /// The most triangles that are drawn of a mesh.
    static constexpr std::size_t MOST_TRIANGLES = 60000;

    /// Throws `VeltraniException` for a surface that cannot be drawn: neither a mesh nor with 2D coordinates.
    /// @param surface not null
    /// @param mostPlaces about; at least 1000
    [[nodiscard]] static SurfaceChart of(const std::shared_ptr<const ScreenGeometry>& surface, std::size_t mostPlaces);
};

}  // namespace Veltrani::DisplayLight
