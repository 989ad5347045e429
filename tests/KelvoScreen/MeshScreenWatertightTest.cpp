#include "KelvoScreen/MeshOracle.h"
#include "KelvoScreen/MeshScreen.h"
#include "KelvoScreen/Meshes.h"
#include "support/Sanitizers.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

/// No ray leaves a closed mesh, and its answers are those of brute force.

namespace {

using Vector = Point<double, 3>;

/// The sanitizers make a ray some thirty times as slow; fewer rays still pass each edge of the mesh.
constexpr std::size_t WATERTIGHT_RAYS = IS_SANITIZED ? 300'000 : 10'000'000;

/// A corner of a triangle, a point of an edge or a point of its face.
Vector placeOf(const TriangleMesh& mesh, std::uint32_t triangle, oracle::Random& random) {
    const TriangleMesh::Triangle& corners = mesh.triangles[triangle];
    const std::uint32_t kind = random.below(8);
    const Vector& a = mesh.vertices[corners[random.below(3)]];
    if (kind == 0) {
        return a;
    }
    const Vector& b = mesh.vertices[corners[random.below(3)]];
    const Vector onEdge = a + random.uniform(0, 1) * (b - a);
    return kind == 1 ? onEdge : onEdge + random.uniform(0, 1) * (mesh.vertices[corners[0]] - onEdge);
}

/// Sixteen rays from a random place near the centre to vertices, edges and faces of neighbouring triangles.
void aimBundle(const TriangleMesh& mesh, double spread, oracle::Random& random, std::vector<Ray>& rays) {
    constexpr std::uint32_t NEIGHBOURS = 4;
    const std::uint32_t triangle = random.below(mesh.triangles.size() - NEIGHBOURS);
    const Vector eye = spread * random.inCube();
    for (int i = 0; i < 16; ++i) {
        rays.emplace_back(eye, placeOf(mesh, triangle + random.below(NEIGHBOURS), random));
    }
}

TEST(MeshScreenWatertight, OfTenMillionRaysAtAClosedMeshNoneSlipsThrough) {
    const TriangleMesh mesh = meshes::bumpyBall(5, 60, 90);
    const MeshScreen screen(mesh);
    oracle::Random random(501);
    constexpr std::size_t AT_ONCE = 16'000;
    std::vector<Ray> rays;
    std::vector<SurfaceHit> hits(AT_ONCE);
    std::size_t cast = 0;
    std::size_t lost = 0;
    while (cast < WATERTIGHT_RAYS) {
        rays.clear();
        while (rays.size() < AT_ONCE) {
            aimBundle(mesh, 1, random, rays);
        }
        screen.intersectRays(rays, hits);
        for (const SurfaceHit& hit : hits) {
            lost += hit.hit ? 0 : 1;
        }
        cast += rays.size();
    }
    EXPECT_GE(cast, WATERTIGHT_RAYS);
    EXPECT_EQ(lost, 0U) << "of " << cast << " rays, seed 501";
}

/// A ray within this length of an outline may be answered either way: beside it stands another wall.
constexpr double OUTLINE_LENGTH = 1e-6;
constexpr double TOLERANCE = 1e-9;  // metres, for a room of ten

struct Comparison {
    int compared = 0;
    int atOutline = 0;
};

/// The point on the mesh and on the ray, with nothing nearer. (Brute force itself loses rays that pass exactly through
/// an edge: then the hit must lie on the mesh all the same.)
bool isConfirmed(const TriangleMesh& mesh, const Ray& ray, const SurfaceHit& hit) {
    const auto expected = oracle::nearestHit(mesh, ray.first, ray.second);
    if (!hit.hit ||
        (expected && expected->t * norm(ray.second - ray.first) < norm(hit.point - ray.first) - TOLERANCE)) {
        return false;
    }
    return (expected && norm(expected->point - hit.point) <= TOLERANCE) ||
           (oracle::distance(mesh, hit.point) <= TOLERANCE &&
            oracle::distanceFromRay(ray.first, ray.second, hit.point) <= TOLERANCE);
}

/// True when a ray a little beside this one ends somewhere else altogether.
bool isAtOutline(const TriangleMesh& mesh, const Ray& ray, const Vector& end) {
    for (std::size_t k = 0; k < 3; ++k) {
        for (const double side : {-OUTLINE_LENGTH, OUTLINE_LENGTH}) {
            Vector beside = end;
            beside[k] += side;
            const auto hit = oracle::nearestHit(mesh, ray.first, beside);
            if (!hit || norm(hit->point - end) > 1000 * OUTLINE_LENGTH) {
                return true;
            }
        }
    }
    return false;
}

/// Compares all rays with brute force over all triangles, those at an outline apart.
Comparison compareWithBruteForce(const TriangleMesh& mesh, const std::vector<Ray>& rays) {
    const MeshScreen screen(mesh);
    std::vector<SurfaceHit> hits(rays.size());
    screen.intersectRays(rays, hits);
    Comparison comparison;
    for (std::size_t i = 0; i < rays.size(); ++i) {
        if (isConfirmed(mesh, rays[i], hits[i])) {
            ++comparison.compared;
        } else if (hits[i].hit && isAtOutline(mesh, rays[i], hits[i].point)) {
            ++comparison.atOutline;
        } else {
            ADD_FAILURE() << "ray " << i << " of " << rays.size() << " hits " << hits[i].hit << " at " << hits[i].t;
        }
    }
    return comparison;
}

TEST(MeshScreenWatertight, InARoomOfTenMetresEveryRayAgreesWithBruteForceToANanometre) {
    const TriangleMesh mesh = meshes::room(8);
    oracle::Random random(502);
    std::vector<Ray> rays;
    constexpr std::size_t RAYS = IS_SANITIZED ? 600 : 3'000;
    while (rays.size() < RAYS / 2) {
        aimBundle(mesh, 0.4, random, rays);
    }
    while (rays.size() < RAYS) {
        const Vector eye = 0.9 * random.inCube();
        rays.emplace_back(eye, eye + random.inCube());
    }
    const Comparison comparison = compareWithBruteForce(mesh, rays);
    RecordProperty("rays_compared", comparison.compared);
    RecordProperty("rays_at_an_outline", comparison.atOutline);
    EXPECT_GE(comparison.compared, static_cast<int>(RAYS) * 95 / 100);
    EXPECT_EQ(comparison.compared + comparison.atOutline, static_cast<int>(rays.size()));
}

}  // namespace
