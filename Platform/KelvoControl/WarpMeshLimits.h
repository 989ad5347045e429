#pragma once

#include <cstddef>

/// What the reader of warp meshes takes at most, for writers of them: it refuses what is larger.
namespace Veltrani::WarpMeshLimits {

/// A mesh takes up to a kilobyte of memory for each node. Four million nodes are one for every pixel of a large
/// picture.
inline constexpr std::size_t MOST_NODES = 4'000'000;
inline constexpr int MOST_NODES_IN_ROW = 1'000'000;

/// Nodes with long numbers are within this limit.
inline constexpr std::size_t MOST_BYTES = std::size_t{256} * 1024 * 1024;

/// Width of a picture as a part of its height. Numbers beyond the largest are no places in a picture nor on a screen,
/// and the tolerance at the edges of cells would be lost in their rounding.
inline constexpr double SMALLEST_ASPECT = 1e-3;
inline constexpr double LARGEST_COORDINATE = 1e4;

}  // namespace Veltrani::WarpMeshLimits
