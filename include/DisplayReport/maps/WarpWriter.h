#pragma once

#include "Common/Point.h"

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Veltrani::DisplayReport {

class WarpGrid;

/// Writes a warp in one file format. A new format is a class and a line in `WarpWriter.cpp`.
class WarpWriter {
public:
    virtual ~WarpWriter() = default;

    virtual void write(const WarpGrid& warp, std::ostream& out) const = 0;

    /// Whether the format is made of nodes from edge to edge of the picture, between which readers interpolate; else it
    /// has one value per pixel.
    [[nodiscard]] virtual bool hasNodes() const { return false; }
    /// Whether a terminal can show it.
    [[nodiscard]] virtual bool isText() const { return false; }
    /// "mesh", "pfm", "png16", "png".
    [[nodiscard]] static std::vector<std::string> formats();
    /// The writer of a format; null for an unknown one.
    [[nodiscard]] static std::unique_ptr<WarpWriter> ofFormat(const std::string& format);
};

/// Whether the reader of warp meshes, which takes files of custom planar channels and limits their size, will take a
/// mesh, whatever its nodes show. To be seen before anything is mapped.
struct WarpMeshSize {
    Point<int, 2> pixels;  ///< of the picture
    Point<int, 2> nodes;   ///< two or more each

    [[nodiscard]] std::size_t count() const;
    /// With the longest numbers that the places in the input may have.
    [[nodiscard]] std::uintmax_t mostBytes() const;
    [[nodiscard]] bool isReadable() const;
    /// The corners of the pixels, or of squares of 2 x 2 pixels, of 3 x 3 and so on, the first of these that are
    /// readable; none for a picture that is too narrow or too wide for any.
    [[nodiscard]] static std::optional<Point<int, 2>> mostNodes(const Point<int, 2>& pixels);
};

}  // namespace Veltrani::DisplayReport
