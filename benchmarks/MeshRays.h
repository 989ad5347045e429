#pragma once

#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/TriangleMesh.h"

#include <string>
#include <vector>

/// The meshes and the rays that the benchmarks of meshes share.
namespace meshRays {

/// Rays of one kind, under the name that the table shows.
struct Pattern {
    std::string name;
    std::vector<Ray> rays;
};

/// How many cells of two triangles stand along each side of the three meshes: 10,000, 100,000 and a million triangles.
inline constexpr int CELLS_10K = 71;
inline constexpr int CELLS_100K = 224;
inline constexpr int CELLS_1M = 708;

/// A closed sphere of 5 m with bumps, cells x cells quadrilaterals of two triangles.
[[nodiscard]] TriangleMesh bumpySphere(int cells);

/// The rays of a channel, row by row from an eye off the centre: 1920 x 1200.
[[nodiscard]] Pattern coherentRays();

/// The same frustum, sampled 100 x 100.
[[nodiscard]] Pattern sparseRays();

/// From anywhere in the middle to anywhere.
[[nodiscard]] Pattern randomRays();

}  // namespace meshRays
