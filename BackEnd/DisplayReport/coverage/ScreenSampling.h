#pragma once

#include "DisplayReport/basics/Extent.h"
#include "DisplayReport/coverage/SurfacePoint.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

class ScreenGeometry;
struct TriangleMesh;

namespace Veltrani::DisplayReport {

/// A screen's surface as triangles: those of a mesh that have an area, each place once however often the mesh has it,
/// or a net over the 2D coordinates of any other shape. The corners of the net lie on the surface, and so do the points
/// between them.
class ScreenSampling {
public:
    using Triangle = std::array<SurfacePoint, 3>;

    /// Throws `VeltraniException` for a surface that is not valid, or that is neither a mesh nor has 2D coordinates.
    explicit ScreenSampling(std::shared_ptr<const ScreenGeometry> surface);

    [[nodiscard]] const ScreenGeometry& surface() const { return *m_surface; }
    /// The number of triangles.
    [[nodiscard]] std::size_t size() const;
    /// Triangle i; one without area where the surface has a gap.
    [[nodiscard]] Triangle triangle(std::size_t i) const;
    /// Numbers that identify the corners of triangle i among those of all triangles: triangles that share a corner have
    /// the same number for it.
    [[nodiscard]] std::array<std::uint64_t, 3> cornerNumbers(std::size_t i) const;
    /// The box around the corners.
    [[nodiscard]] const Extent& extent() const { return m_extent; }

    /// The surface point at a part (0 to 1) of the way from one point of a triangle to another.
    [[nodiscard]] SurfacePoint between(const SurfacePoint& from, const SurfacePoint& to, double part) const;
    /// The area on the surface, in square native units; right to about a millionth of itself, kinks of the surface
    /// included.
    [[nodiscard]] double area(const Triangle& triangle) const;

private:
    void addNet();
    /// Leaves out triangles that stand on the corners of another one, whichever way round: both sides of a sheet. And
    /// those without area, which carry no light: long ones would be cut into a great many pieces.
    void chooseTriangles();
    [[nodiscard]] std::size_t numberInMesh(std::size_t i) const { return m_chosen.empty() ? i : m_chosen[i]; }
    /// The nodes of a triangle of the net.
    [[nodiscard]] static std::array<std::size_t, 3> nodesOf(std::size_t i);
    [[nodiscard]] double curvedArea(const Triangle& triangle, double chordArea, int depth) const;

    std::shared_ptr<const ScreenGeometry> m_surface;
    const TriangleMesh* m_mesh;         ///< its triangles; null when it is given by numbers
    std::vector<SurfacePoint> m_net;    ///< row by row; empty for a mesh
    std::vector<std::size_t> m_chosen;  ///< the triangles of the mesh; empty for all of them
    double m_negligibleArea = 0;
    Extent m_extent;
};

}  // namespace Veltrani::DisplayReport
