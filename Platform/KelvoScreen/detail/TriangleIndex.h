#pragma once

#include "KelvoScreen/detail/Box.h"
#include "KelvoScreen/detail/BoxScene.h"
#include "KelvoScreen/detail/TriangleBoxes.h"
#include "KelvoScreen/detail/TriangleMath.h"

#include <cstddef>
#include <cstdint>
#include <vector>

struct RTCSceneTy;

namespace Veltrani::KelvoScreenDetail {

/// A search structure over triangles: which of them may a ray meet, which are near a point.
///
/// Only boxes are kept, in single precision, relative to the centre of all triangles and in units of their extent, each
/// enlarged by more than single precision can lose. The triangles visited are therefore never too few: every triangle
/// that meets the ray, or is near enough, is visited, besides some that turn out not to. The visitor decides in double
/// precision. That is what makes the results exact and watertight; the triangles themselves stay with the caller.
///
/// Two triangles that follow each other and fill nearly the same box, as the halves of a quadrilateral do, share one:
/// most meshes come from grids, and half as many boxes are half the memory and fewer steps for every ray. Of triangles
/// that coincide in one winding the lowest alone is visited. One that has several boxes, see `TriangleBoxes`, may be
/// visited several times.
///
/// Meshes of any size and place are alike to it: a millimetre at coordinates of kilometres, or a galaxy. Building costs
/// about a second and 40 to 80 MB for a million triangles. A query allocates nothing.
class TriangleIndex {
public:
    /// The source of the triangles while the structure is built.
    using Source = TriangleSource;

    class RayVisitor {
    public:
        /// Tests one triangle. Returns how far along the ray, in units of its direction, triangles still matter.
        virtual double visit(std::uint32_t triangle) = 0;

    protected:
        ~RayVisitor() = default;
    };

    class PointVisitor {
    public:
        /// Tests one triangle. Returns how near to the point triangles must be to matter still.
        virtual double visit(std::uint32_t triangle) = 0;

    protected:
        ~PointVisitor() = default;
    };

    /// Builds the structure over the triangles 0 to count - 1. Throws `std::bad_alloc` when memory runs out.
    TriangleIndex(std::uint32_t count, const Source& source);
    ~TriangleIndex();
    TriangleIndex(const TriangleIndex&) = delete;
    TriangleIndex& operator=(const TriangleIndex&) = delete;

    /// Returns the box around all triangles that were not left out.
    [[nodiscard]] const Box& box() const { return m_box; }

    /// The part of a ray that can meet anything, see `Box::clip`. Far origins are moved up to it by the caller: only
    /// near the box does a ray fit into single precision. False as well from 1e14 times the size of the box away.
    /// A ray from inside the box has no need to be clipped: `second` may be infinite then.
    [[nodiscard]] bool clip(const Point<double, 3>& from, const Point<double, 3>& direction, double& first,
                            double& second) const;

    /// Visits every triangle that the ray may meet between t = 0 and `reach`, roughly nearest first. The origin is
    /// within the clipped part of the ray.
    void alongRay(const Point<double, 3>& origin, const Point<double, 3>& direction, double reach,
                  RayVisitor& visitor) const;

    /// As `alongRay` for the given lanes of a packet, each from its origin to its end.
    /// @param width how many rays are passed on at once: 4, 8 or 16, and not more than `widestPacket`
    void alongRays(const LaneRays& rays, LaneMask lanes, std::size_t width, PacketVisitor& visitor) const;

    /// Length by which the box is enlarged before a ray is clipped to it, besides the rounding of its origin.
    [[nodiscard]] double clipMargin() const { return IndexUnits::RAY_MARGIN / m_units.perLength; }

    /// Returns the longest side of the box of a triangle, on average.
    [[nodiscard]] double typicalSize() const { return m_typicalSize; }

    /// Visits every triangle that may be within `radius` (infinite allowed) of the point, roughly nearest first. The
    /// point is finite; from points very far away every triangle is visited.
    void aroundPoint(const Point<double, 3>& point, double radius, PointVisitor& visitor) const;

private:
    void build(const TriangleBoxes& triangles);
    [[nodiscard]] BoxScene boxScene() const;

    std::vector<bool> m_isPaired;            ///< see `TriangleBoxes`
    std::vector<std::uint32_t> m_furtherOf;  ///< likewise
    Box m_box;
    IndexUnits m_units;
    double m_typicalSize = 0;
    RTCSceneTy* m_scene = nullptr;
};

}  // namespace Veltrani::KelvoScreenDetail
