#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

namespace Veltrani::DisplayReport {

class PictureWarp;

/// Writes a warp in one file format. A new format is a class and a line in `WarpWriter.cpp`.
class WarpWriter {
public:
    virtual ~WarpWriter() = default;

    virtual void write(const PictureWarp& warp, std::ostream& out) const = 0;

    /// Whether the format is made of nodes from edge to edge of the picture, between which readers interpolate; else it
    /// has one value per pixel.
    [[nodiscard]] virtual bool hasNodes() const { return false; }
    /// Whether a terminal can show it.
    [[nodiscard]] virtual bool isText() const { return false; }

    /// "mesh", "pfm", "png".
    [[nodiscard]] static std::vector<std::string> formats();
    /// The writer of a format; null for an unknown one.
    [[nodiscard]] static std::unique_ptr<WarpWriter> ofFormat(const std::string& format);
};

}  // namespace Veltrani::DisplayReport
