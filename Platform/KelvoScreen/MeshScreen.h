#pragma once

#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/TriangleMesh.h"

#include <array>
#include <memory>
#include <string>

/// A screen given as a triangle mesh.
///
/// Everything is decided in double precision on the mesh as given; a search structure in single precision only leaves
/// out what is too far away to matter. A ray yields its nearest hit alone, and of triangles hit at the same t the
/// lowest. Edges, corners and the border belong to the mesh: a ray that passes within the rounding of its own
/// coordinates hits, so that none slips between two triangles of a closed mesh, whether they share their vertices,
/// repeat them, or meet with a corner in the middle of an edge. A ray never hits a triangle that it runs along.
///
/// A triangle whose corners lie on a line, up to the rounding of their coordinates, has no area: it is never hit, never
/// nearest and carries no normal. A mesh with a vertex that is not finite, or without any area, is not valid: it is
/// never hit, maps nothing and has zero normals.
///
/// A hit lies on its ray and on its triangle to within 128 machine epsilons of the largest coordinate of the mesh and
/// the origin of the ray, whatever the shape of the triangle and however flat the ray meets it; a normal is right to
/// 2e-13.
///
/// The mesh is parameterised by its texture coordinates; where triangles overlap there, the one with the lowest index
/// counts. Coordinates that are not finite count as none.
///
/// The search structures are built on first use: for rays and normals about a second and 40 to 80 MB for a million
/// triangles, as much again for `mapInto3D`, and again for the border. Later queries allocate nothing. A normal
/// at a point that was not just hit is a search of its own: microseconds on the surface, slower with the distance from
/// it.
///
/// Past the border `intersectExtrapolatedWithSpecifiedNormal` continues the surface from the nearest piece of the
/// border: a flat mesh in its plane, a curved one with the curvature that it has there, each triangle in its own plane
/// where there are too few for a curvature. `mapInto3D` continues the triangle nearest in texture space.
///
/// The triangle of the last hit is remembered for a normal requested at the bit-identical point, so that the usual pair
/// of `intersect` and `getScreenNormal` costs one search. Not safe to use from two threads at once.
class MeshScreen : public ScreenGeometry {
public:
    /// A mesh given as numbers; its hash covers them. Throws `VeltraniException` when an index is out of range or the
    /// texture triangles are neither as many as the triangles nor none.
    explicit MeshScreen(TriangleMesh mesh);
    ~MeshScreen() override;
    MeshScreen(const MeshScreen&) = delete;
    MeshScreen& operator=(const MeshScreen&) = delete;

    /// Returns the hash of a mesh that is read from these bytes: SHA-1 of the bytes and nothing else.
    [[nodiscard]] static std::array<unsigned char, 20> calcUniqueDataHash(const std::string& bytes);

    /// Returns true when at least one triangle has an area and all vertices are finite.
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

    /// Several times as fast as ray by ray when neighbouring rays run close to each other, as those of a channel do,
    /// and to the last bit the same. For a class derived from this one the rays are cast one by one, since its results
    /// may differ; a class whose results do not differ calls `intersectAtOnce`.
    void intersectRays(std::span<const Ray> rays, std::span<SurfaceHit> hits) const override;

    /// Returns the mesh as held.
    [[nodiscard]] const TriangleMesh& mesh() const;
    /// Returns true when every corner has a texture coordinate.
    [[nodiscard]] bool isParameterised() const override;

    /// Returns enough rays for the search to follow neighbouring ones.
    [[nodiscard]] std::size_t raysAtOnce() const override;
    [[nodiscard]] const TriangleMesh* triangleMesh() const override;
    [[nodiscard]] std::wstring faultOfShape() const override;

protected:
    /// What `raysAtOnce` of a kind of mesh returns for objects of its own class: few enough for their rays and hits to
    /// stay in the processor's cache, 120 bytes each, and enough for four rows of a large picture.
    static constexpr std::size_t MESH_RAYS_AT_ONCE = 8192;

    /// An empty mesh, not valid, to be filled by `setMesh`.
    MeshScreen();

    /// Replaces the mesh and everything derived from it. Throws as the constructor does; the old mesh stays then.
    void setMesh(TriangleMesh mesh, const std::array<unsigned char, 20>& hash);

    /// As `intersectRays`, with the results of this class's own `intersect` and `getScreenNormal`.
    void intersectAtOnce(std::span<const Ray> rays, std::span<SurfaceHit> hits) const;

private:
    struct Implementation;
    std::unique_ptr<Implementation> m_implementation;
};
