#pragma once

#include "DisplayReport/basics/Extent.h"

#include <string>

class ScreenGeometry;

/// Screen geometries in words.
namespace Veltrani::DisplayReport {

/// "2880 triangles with texture coordinates"; "given by its numbers" for every other kind.
[[nodiscard]] std::string geometryText(const ScreenGeometry& geometry);

/// Why a surface cannot be addressed by 2D parameters, and what to do; empty when it can.
[[nodiscard]] std::string missingParameters(const ScreenGeometry& geometry);

/// The box around a surface: the vertices of a mesh, samples over the 2D parameters of every other kind.
[[nodiscard]] Extent extentOf(const ScreenGeometry& geometry);

/// "4 x 0 x 2.5 m (right x forward x up)"; "empty" for an empty extent.
[[nodiscard]] std::string sizeText(const Extent& extent, const std::string& unit);

}  // namespace Veltrani::DisplayReport
