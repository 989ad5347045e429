#pragma once

#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/TriangleMesh.h"

#include <array>
#include <memory>
#include <string>

/// A screen given as a triangle mesh.
///
/// Vertices are kept in double. A ray yields its nearest hit alone. Embree finds the triangle in single precision (mesh
/// relative to its centre, rays clipped to its box), and the hit is recomputed in double, so that it lies on the mesh
/// as given; no ray at a closed mesh slips through an edge or a vertex. The mesh is parameterised by its texture
/// coordinates; where triangles overlap there, the one with the lowest index answers. The search structure over the
/// texture coordinates is built on the first `mapInto3D`.
///
/// Past the border `intersectExtrapolatedWithSpecifiedNormal` continues the border triangles in their planes, and
/// `mapInto3D` the triangle nearest in texture space.
///
/// The triangle of the last hit is remembered for a normal asked at the bit-identical point, so that the usual pair of
/// `intersect` and `getScreenNormal` costs one search. Not safe to use from two threads at once.
class MeshScreen : public ScreenGeometry {
public:
    /// A mesh given as numbers; its hash covers them.
    explicit MeshScreen(TriangleMesh mesh);
    ~MeshScreen() override;
    MeshScreen(const MeshScreen&) = delete;
    MeshScreen& operator=(const MeshScreen&) = delete;

    /// The hash of a mesh that is read from these bytes: SHA-1 of the bytes and nothing else.
    [[nodiscard]] static std::array<unsigned char, 20> calcUniqueDataHash(const std::string& bytes);

    /// At least one triangle of non-zero area.
    [[nodiscard]] bool isValid() const override;
    [[nodiscard]] IntersectionSet intersect(const Point<double, 3>& from, const Point<double, 3>& to) const override;
    [[nodiscard]] Point<double, 3> getScreenNormal(const Point<double, 3>& point) const override;
    bool mapInto3D(const Point<double, 2>& st, Point<double, 3>& out, bool extrapolate) const override;
    [[nodiscard]] std::array<unsigned char, 20> getUniqueDataHash() const override;
    void updateGeometry(const IScreenConfig* screen) override;
    void sampleHorizontally(double y, double xMin, double xMax, int columns, int row, Grid& grid,
                            bool extrapolate) const override;
    [[nodiscard]] IntersectionSet intersectExtrapolatedWithSpecifiedNormal(const Point<double, 3>& from,
                                                                           const Point<double, 3>& to,
                                                                           int sign) const override;
    [[nodiscard]] std::vector<Point<double, 3>> intersectChannelBoundary(const std::vector<Ray>& boundary,
                                                                         const std::vector<Ray>& centre) const override;

    /// The mesh as held.
    [[nodiscard]] const TriangleMesh& mesh() const;
    /// True when every corner has a texture coordinate.
    [[nodiscard]] bool isParameterised() const;

protected:
    /// An empty mesh, not valid, to be filled by `setMesh`.
    MeshScreen();

    /// Replaces the mesh and everything derived from it.
    void setMesh(TriangleMesh mesh, const std::array<unsigned char, 20>& hash);

private:
    struct Implementation;
    std::unique_ptr<Implementation> m_implementation;
};
