#pragma once

#include "DisplayExport/ChannelWarp.h"
#include "DisplayExport/ContentInput.h"
#include "DisplayExport/RenderFrustum.h"

#include <cstddef>
#include <string>

namespace Veltrani::ExportFiles {

/// What a manifest states, as JSON: lengths in native units, angles in radians, matrices row by row.

/// What an engine renders: position, orientation, angles, tangents and matrices.
[[nodiscard]] std::string jsonOf(const DisplayExport::RenderFrustum& frustum,
                                 const DisplayExport::RenderConvention& convention);

/// The input of a view: its kind, size, axes and frusta.
[[nodiscard]] std::string jsonOf(const DisplayExport::ContentInput& input,
                                 const DisplayExport::RenderConvention& convention);

/// How many places a warp has, and what is left out of it.
/// @param broken cells with lit places that formats of grids leave out
[[nodiscard]] std::string jsonOf(const DisplayExport::ChannelWarp& warp, std::size_t broken);

/// What the matrices are made for.
[[nodiscard]] std::string jsonOf(const DisplayExport::RenderConvention& convention);

/// "[1,2]", "[1,2,3]".
template <class T, std::size_t N>
[[nodiscard]] std::string jsonOfPoint(const Point<T, N>& point);

}  // namespace Veltrani::ExportFiles
