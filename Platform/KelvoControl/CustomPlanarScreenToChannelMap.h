#pragma once

#include "Common/Point.h"
#include "KelvoScreen/IScreenGeometry.h"

#include <memory>
#include <string>
#include <string_view>

namespace Veltrani::KelvoControlDetail {

class WarpMesh;

}  // namespace Veltrani::KelvoControlDetail

/// The map of a custom planar channel, read from a warp-mesh file: from pixel positions of the channel's picture to the
/// screen's normalised 2D coordinates (s, t), and back.
///
/// Pixel positions run from (0, 0), bottom left, to (W, H), top right, with the size that the file states. Inside a
/// cell of the mesh both are bilinear; the way back is the exact inverse. Nodes marked as unused take all cells around
/// them out of the map. Where cells overlap, one of them holds, always the same.
///
/// A point outside of all cells by no more than 1e-9 of the picture, or of the screen's range, is on the edge of one of
/// them, so that there is no gap between cells. A result that lies no further than that beyond the edge of the picture,
/// 0 to W and 0 to H, or of the screen, 0 to 1, is on that edge: rounding takes no point of an edge away from callers
/// that compare exactly, and what is mapped comes back. A mesh that reaches further beyond has results beyond.
///
/// Both directions return false outside of the mesh and for NaN, and then leave `out` as it was.
///
/// Copies share the immutable mesh and the screen.
class CustomPlanarScreenToChannelMap {
public:
    /// Reads the file; an empty name gives an empty map, where every mapping is false.
    ///
    /// Throws `VeltraniMissingFileException` when there is no such file and `VeltraniParseException`, naming the line,
    /// when it cannot be understood.
    /// @param screen the screen that the coordinates belong to, kept alive by the map; may be empty
    CustomPlanarScreenToChannelMap(const std::wstring& filename, std::shared_ptr<IScreenGeometry> screen);

    /// As the constructor, from the text of such a file.
    ///
    /// Throws `VeltraniParseException`, naming the document and the line, when it cannot be understood.
    /// @param document names the text in messages; any bytes
    [[nodiscard]] static CustomPlanarScreenToChannelMap parse(std::string_view text, const std::string& document,
                                                              std::shared_ptr<IScreenGeometry> screen);

    /// Maps a pixel position to screen coordinates.
    bool mapChannel2DToScreen2D(const Point<double, 2>& channel, Point<double, 2>& out) const;

    /// Maps screen coordinates to a pixel position.
    bool mapScreen2DToChannel2D(const Point<double, 2>& screen, Point<double, 2>& out) const;

    /// Returns the size of the picture that the file was made for, in pixels; zero for an empty map.
    [[nodiscard]] Point<double, 2> pictureSize() const;

private:
    std::shared_ptr<const Veltrani::KelvoControlDetail::WarpMesh> m_mesh;
    std::shared_ptr<IScreenGeometry> m_screen;
};
