#pragma once

#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/TriangleMesh.h"

#include <embree3/rtcore.h>

#include <cstdint>
#include <optional>

/// A mesh in an Embree scene of triangles, in single precision, with the settings that make Embree itself watertight:
/// what the benchmarks of meshes compare with.
class EmbreeReference {
public:
    /// Where a ray meets the plane of the triangle that Embree found, in double precision.
    struct Hit {
        Point<double, 3> point;
        Point<double, 3> area;  ///< along the normal
        double t = 0;
    };

    explicit EmbreeReference(const TriangleMesh& mesh);
    ~EmbreeReference();
    EmbreeReference(const EmbreeReference&) = delete;
    EmbreeReference& operator=(const EmbreeReference&) = delete;

    /// One ray, found in single precision and recomputed in double.
    [[nodiscard]] std::optional<Hit> intersect(const Ray& ray) const;

    /// The same with the unit normal and the side.
    [[nodiscard]] SurfaceHit ask(const Ray& ray) const;

private:
    [[nodiscard]] Hit refine(const Point<double, 3>& from, const Point<double, 3>& direction,
                             std::uint32_t triangle) const;

    const TriangleMesh& m_mesh;
    RTCScene m_scene = nullptr;
};
