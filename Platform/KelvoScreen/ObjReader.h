#pragma once

#include "KelvoScreen/TriangleMesh.h"

#include <cstddef>
#include <string_view>

/// Reads OBJ text into a triangle mesh, in the axes and units of the text.
///
/// Statements that are read (numbers with a decimal point, finite, independent of the locale):
/// - `v x y z`, `v x y z w`, `v x y z r g b`, `v x y z w r g b`: a vertex; weight and colour are checked and dropped.
/// - `vt s`, `vt s t`, `vt s t w`: a texture coordinate; a missing t is 0, w is checked and dropped.
/// - `vn x y z`: a normal; checked and dropped, the winding of the triangles counts.
/// - `f` with three corners or more, each `v`, `v/vt`, `v//vn` or `v/vt/vn`: a face. Indices start at 1, separately for
///   each kind, and a face may precede the elements that it refers to. Negative indices count back from the last
///   element before the face. Faces of more than three corners are cut into triangles (see `PolygonCutter`), in place.
///
/// All other statements (points, lines, groups, materials, curves, whatever is unknown) are skipped. Lines, comments
/// and continued lines are those of `ObjCursor`.
///
/// The mesh has texture coordinates only when every corner of every face has one; otherwise `textureCoordinates` and
/// `textureTriangles` are empty. Order is kept: vertices, texture coordinates and triangles are ordered as in the text.
///
/// The reader is our own because the packaged ones are not strict: they read `0,5` and `nan` as 0, let indices out of
/// range pass, lose the first vertex behind a byte-order mark and do not know continued lines. It makes one pass over
/// the text, which it neither copies nor changes, and allocates nothing per line.
class ObjReader {
public:
    /// Faces of more corners are refused; a real one has a few, and an outline cut out of a scan some thousands.
    static constexpr std::size_t MAX_FACE_CORNERS = 1'000'000;

    /// Returns the mesh of a whole text; without a face it has no triangles, which is no fault.
    ///
    /// Throws `ObjLoadException` with line, found and expected text and a remedy for: a number that is unreadable or
    /// not finite, a wrong count of numbers, an index that is 0, unreadable or out of range, a face below three
    /// corners, a NUL byte, a face too large to be cut (more than `MAX_FACE_CORNERS`, or some ten thousand corners that
    /// zigzag). Indices past the last element and faces that cannot be cut are found after everything else.
    [[nodiscard]] static TriangleMesh read(std::string_view text);
};
