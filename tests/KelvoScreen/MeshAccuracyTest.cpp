#include "KelvoScreen/MeshOracle.h"
#include "KelvoScreen/MeshScreen.h"
#include "KelvoScreen/Meshes.h"
#include "KelvoScreen/Needles.h"
#include "support/Sanitizers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

/// Every hit lies on its ray and on its triangle, every normal and every mapped point is right, within the bounds that
/// docs/mesh-geometry.md states, whatever the shape of the triangles.

namespace {

using Vector = Point<double, 3>;

constexpr double EPSILON = std::numeric_limits<double>::epsilon();

// The bounds of the page. Positions: relative to the largest coordinate of the mesh and the origin of the ray.
constexpr double HIT_BOUND = 128 * EPSILON;
constexpr double NORMAL_BOUND = 2e-13;
constexpr double NEEDLE_NORMAL_BOUND = 4 * EPSILON;
constexpr double NEAREST_BOUND = 8 * EPSILON;
constexpr double MAPPED_BOUND = 1e-12;
/// Of texture triangles whose distances differ by less, relative to the largest texture coordinate, any is nearest.
constexpr double TEXTURE_DISTANCE_BOUND = 4 * EPSILON;
/// Heights of needles among the texture coordinates, in powers of ten: lower ones could be without area.
constexpr double DEEPEST_TEXTURE = 14.3;
/// Fractions take their time.
constexpr std::size_t TEXTURE_PLACES = IS_SANITIZED ? 1'000 : 10'000;

constexpr std::size_t SWEEP_HITS = IS_SANITIZED ? 50'000 : 2'000'000;
constexpr int BUNDLES = 16;  // for each triangle, sixteen rays in each
/// Whole numbers of any length take so long that only one in so many hits is decided by them.
constexpr std::size_t EXACT_STEP = 200;

bool haveSameBits(const SurfaceHit& a, const SurfaceHit& b) {
    return std::memcmp(&a.point, &b.point, sizeof a.point) == 0 &&
           std::memcmp(&a.normal, &b.normal, sizeof a.normal) == 0 && std::memcmp(&a.t, &b.t, sizeof a.t) == 0 &&
           a.side == b.side && a.hit == b.hit;
}

TriangleMesh meshOf(const oracle::Triangle& corners) {
    return meshes::triangle(corners[0], corners[1], corners[2]);
}

/// The point of a ray at t, rounded once more than it need be.
bool isAt(const Ray& ray, double t, const Vector& point, double bound) {
    const auto& [from, to] = ray;
    for (std::size_t k = 0; k < 3; ++k) {
        const long double exact = from[k] + static_cast<long double>(t) * (static_cast<long double>(to[k]) - from[k]);
        if (!(std::abs(exact - point[k]) <= bound)) {
            return false;
        }
    }
    return true;
}

class HitSweep {
public:
    explicit HitSweep(std::uint64_t seed) : m_random(seed) {}

    void run() {
        while (m_hits < SWEEP_HITS && !testing::Test::HasFailure()) {
            checkTriangle(needles::anyTriangle(needles::anyAspect(m_random), m_random));
        }
    }

    [[nodiscard]] std::size_t cast() const { return m_cast; }
    [[nodiscard]] std::size_t hits() const { return m_hits; }
    [[nodiscard]] std::size_t decidedExactly() const { return m_decidedExactly; }

private:
    void checkTriangle(const needles::Shape& shape) {
        const MeshScreen screen(meshOf(shape.corners));
        if (!screen.isValid()) {
            return;
        }
        std::vector<Ray> rays;
        for (int i = 0; i < BUNDLES; ++i) {
            const std::vector<Ray> bundle = needles::aimAt(shape, m_random);
            rays.insert(rays.end(), bundle.begin(), bundle.end());
        }
        std::vector<SurfaceHit> atOnce(rays.size());
        std::vector<SurfaceHit> oneByOne(rays.size());
        screen.intersectRays(rays, atOnce);
        screen.ScreenGeometry::intersectRays(rays, oneByOne);
        m_cast += rays.size();
        for (std::size_t i = 0; i < rays.size(); ++i) {
            ASSERT_TRUE(haveSameBits(atOnce[i], oneByOne[i])) << "after " << m_hits << " hits";
            if (atOnce[i].hit) {
                checkHit(shape.corners, rays[i], atOnce[i]);
            }
        }
    }

    void checkHit(const oracle::Triangle& corners, const Ray& ray, const SurfaceHit& hit) {
        const double bound = HIT_BOUND * needles::largestCoordinate(corners, ray.first);
        ASSERT_TRUE(oracle::isNearLine(ray.first, ray.second, hit.point, bound)) << "hit " << m_hits;
        ASSERT_TRUE(oracle::isNearTriangle(corners, hit.point, bound)) << "hit " << m_hits;
        ASSERT_TRUE(isAt(ray, hit.t, hit.point, bound)) << "hit " << m_hits;
        if (++m_hits % EXACT_STEP == 0) {
            ++m_decidedExactly;
            ASSERT_TRUE(oracle::isExactlyNearLine(ray.first, ray.second, hit.point, bound)) << "hit " << m_hits;
            ASSERT_TRUE(oracle::isExactlyNearTriangle(corners, hit.point, bound)) << "hit " << m_hits;
        }
    }

    oracle::Random m_random;
    std::size_t m_cast = 0;
    std::size_t m_hits = 0;
    std::size_t m_decidedExactly = 0;
};

TEST(MeshAccuracy, EveryHitOfAnyTriangleLiesOnItsRayAndOnTheTriangle) {
    HitSweep sweep(701);
    sweep.run();
    EXPECT_GE(sweep.hits(), SWEEP_HITS);
    EXPECT_GE(sweep.hits(), sweep.cast() / 1000 * 999) << "all rays were aimed at their triangle";
    EXPECT_GE(sweep.decidedExactly(), SWEEP_HITS / EXACT_STEP);
}

TEST(MeshAccuracy, TheOraclesNoticeTwiceTheBound) {
    // A check that could not fail would be worth nothing: the same points, moved.
    oracle::Random random(702);
    for (int i = 0; i < 2000; ++i) {
        const needles::Shape shape = needles::anyTriangle(needles::anyAspect(random), random);
        const Ray ray{shape.corners[0] - shape.size * shape.along, shape.corners[0]};
        const double bound = HIT_BOUND * needles::largestCoordinate(shape.corners, ray.first);
        const Vector beside = shape.corners[0] + 2 * bound * shape.normal;
        ASSERT_TRUE(oracle::isNearLine(ray.first, ray.second, shape.corners[0], bound));
        ASSERT_TRUE(oracle::isNearTriangle(shape.corners, shape.corners[0], bound));
        ASSERT_FALSE(oracle::isNearLine(ray.first, ray.second, beside, bound));
        ASSERT_FALSE(oracle::isNearTriangle(shape.corners, beside, bound));
        ASSERT_FALSE(oracle::isExactlyNearLine(ray.first, ray.second, beside, bound));
        ASSERT_FALSE(oracle::isExactlyNearTriangle(shape.corners, beside, bound));
    }
}

TEST(MeshAccuracy, ARayThatGrazesAnOrdinaryTriangleHitsOnTheRay) {
    const oracle::Triangle corners{Vector{0.1, 0.2, 0.3}, Vector{1.3, 0.4, 0.2}, Vector{0.5, 1.7, 0.9}};
    const MeshScreen screen(meshOf(corners));
    const Vector normal = oracle::preciseNormal(corners);
    oracle::Random random(703);
    int hits = 0;
    for (int i = 0; i < 20'000; ++i) {
        const double share = random.uniform(0, 1);
        const Vector aim =
            corners[0] + random.uniform(0, 1) * (corners[1] + share * (corners[2] - corners[1]) - corners[0]);
        const Vector inPlane =
            random.uniform(-1, 1) * (corners[1] - corners[0]) + random.uniform(-1, 1) * (corners[2] - corners[0]);
        const Vector from = aim - inPlane - std::pow(10, -random.uniform(0, 12)) * normal;
        const IntersectionSet hit = screen.intersect(from, aim);
        if (!hit.empty()) {
            ++hits;
            const double bound = HIT_BOUND * needles::largestCoordinate(corners, from);
            ASSERT_TRUE(oracle::isNearLine(from, aim, hit.first().point, bound)) << "ray " << i;
            ASSERT_TRUE(oracle::isNearTriangle(corners, hit.first().point, bound)) << "ray " << i;
        }
    }
    EXPECT_GT(hits, 19'000);
}

/// The sine of the angle at the first corner.
double firstSine(const oracle::Triangle& corners) {
    const Vector ab = corners[1] - corners[0];
    const Vector ac = corners[2] - corners[0];
    return norm(cross(ab, ac)) / (norm(ab) * norm(ac));
}

TEST(MeshAccuracy, TheNormalOfANeedleIsRightToItsLastDigits) {
    oracle::Random random(704);
    constexpr int NEEDLES = repetitions(20'000);
    int checked = 0;
    for (int i = 0; i < NEEDLES; ++i) {
        const needles::Shape shape = needles::anyTriangle(needles::anyAspect(random), random);
        const MeshScreen screen(meshOf(shape.corners));
        if (screen.isValid()) {
            ++checked;
            const bool isNeedle = firstSine(shape.corners) < 0.99 / 256;
            const Vector normal = screen.getScreenNormal(shape.corners[0] + shape.size * shape.normal);
            ASSERT_LE(norm(normal - oracle::preciseNormal(shape.corners)),
                      isNeedle ? NEEDLE_NORMAL_BOUND : NORMAL_BOUND)
                << "triangle " << i;
        }
    }
    EXPECT_GT(checked, NEEDLES / 4 * 3);
}

/// Sixteen rays from a place near the centre to corners and edges of a triangle and its needle.
void aimAtNeedle(const TriangleMesh& mesh, double spread, oracle::Random& random, std::vector<Ray>& rays) {
    const std::uint32_t triangle = random.below(mesh.triangles.size());
    const Vector eye = spread * random.inCube();
    for (int i = 0; i < 16; ++i) {
        const TriangleMesh::Triangle& corners = mesh.triangles[triangle - triangle % 3 + random.below(3)];
        const Vector& a = mesh.vertices[corners[random.below(3)]];
        const Vector& b = mesh.vertices[corners[random.below(3)]];
        rays.emplace_back(eye, a + (i % 3 == 0 ? 0.0 : random.uniform(0, 1)) * (b - a));
    }
}

bool isOnSomeTriangle(const TriangleMesh& mesh, const Vector& point, double bound) {
    return std::any_of(mesh.triangles.begin(), mesh.triangles.end(), [&](const TriangleMesh::Triangle& t) {
        const oracle::Triangle corners{mesh.vertices[t[0]], mesh.vertices[t[1]], mesh.vertices[t[2]]};
        for (std::size_t k = 0; k < 3; ++k) {
            const auto [least, most] = std::minmax({corners[0][k], corners[1][k], corners[2][k]});
            if (!(point[k] >= least - bound && point[k] <= most + bound)) {
                return false;
            }
        }
        return oracle::isNearTriangle(corners, point, bound);
    });
}

/// Each ray from inside a closed mesh hits, on itself and on the mesh, and in a batch as it does alone.
void expectClosed(const TriangleMesh& mesh, double spread, std::uint64_t seed, const std::string& name) {
    const MeshScreen screen(mesh);
    oracle::Random random(seed);
    std::vector<Ray> rays;
    constexpr std::size_t RAYS = IS_SANITIZED ? 480 : 4'800;
    while (rays.size() < RAYS) {
        aimAtNeedle(mesh, spread, random, rays);
    }
    std::vector<SurfaceHit> hits(rays.size());
    std::vector<SurfaceHit> oneByOne(rays.size());
    screen.intersectRays(rays, hits);
    screen.ScreenGeometry::intersectRays(rays, oneByOne);
    double largest = 0;
    for (const Vector& vertex : mesh.vertices) {
        largest = std::max({largest, std::abs(vertex[0]), std::abs(vertex[1]), std::abs(vertex[2])});
    }
    for (std::size_t i = 0; i < rays.size(); ++i) {
        ASSERT_TRUE(hits[i].hit) << name << ": ray " << i << " slips through, seed " << seed;
        ASSERT_TRUE(haveSameBits(hits[i], oneByOne[i])) << name << ": ray " << i;
        const auto& [from, to] = rays[i];
        ASSERT_TRUE(oracle::isNearLine(from, to, hits[i].point, HIT_BOUND * largest)) << name << ": ray " << i;
        ASSERT_TRUE(isOnSomeTriangle(mesh, hits[i].point, HIT_BOUND * largest)) << name << ": ray " << i;
    }
}

TEST(MeshAccuracy, NoRaySlipsThroughAClosedMeshOfNeedles) {
    oracle::Random random(705);
    for (const double aspect : {1e-3, 1e-6, 1e-9, 1e-12, 1e-13, 1e-14, 1e-15}) {
        const TriangleMesh ball = meshes::bumpyBall(5, 8, 12);
        const TriangleMesh once = needles::splitByNeedles(ball, aspect, random);
        const std::string name = "aspect " + std::to_string(std::log10(aspect));
        expectClosed(once, 1, 706, name);
        expectClosed(needles::splitByNeedles(once, aspect, random), 1, 707, name + ", twice");
        expectClosed(meshes::withoutSharedVertices(once), 1, 708, name + ", vertices repeated");
    }
}

TEST(MeshAccuracy, NoRayLeavesAPipeAsThinAsAHair) {
    for (const double width : {1e-3, 1e-6, 1e-9, 1e-12}) {
        TriangleMesh pipe = meshes::bumpyBall(1, 6, 9);
        for (Vector& vertex : pipe.vertices) {
            // In no direction of its own.
            const Vector along{0.6, 0.48, 0.64};
            vertex = dot(vertex, along) * along + width * (vertex - dot(vertex, along) * along);
        }
        expectClosed(pipe, 1e-2 * width, 709, "width " + std::to_string(std::log10(width)));
    }
}

TEST(MeshAccuracy, TheNormalAtAPointIsThatOfANearestTriangleAmongNeedles) {
    oracle::Random random(710);
    for (const double aspect : {1e-2, 1e-6, 1e-10, 1e-13}) {
        const TriangleMesh mesh = needles::splitByNeedles(meshes::bumpyBall(5, 6, 8), aspect, random);
        const MeshScreen screen(mesh);
        for (int i = 0; i < repetitions(300); ++i) {
            const TriangleMesh::Triangle& t = mesh.triangles[3 * random.below(mesh.triangles.size() / 3)];
            const Vector place =
                mesh.vertices[t[0]] + random.uniform(-0.1, 1.1) * (mesh.vertices[t[1]] - mesh.vertices[t[0]]);
            const Vector point = place + std::pow(10, -random.uniform(0, 15)) * random.inCube();
            const Vector normal = screen.getScreenNormal(point);
            double least = std::numeric_limits<double>::infinity();
            double leastOfNormal = least;
            for (const auto& [a, b, c] : mesh.triangles) {
                const oracle::Triangle corners{mesh.vertices[a], mesh.vertices[b], mesh.vertices[c]};
                const double distance = oracle::preciseDistance(corners, point);
                least = std::min(least, distance);
                if (norm(oracle::preciseNormal(corners) - normal) <= NORMAL_BOUND) {
                    leastOfNormal = std::min(leastOfNormal, distance);
                }
            }
            ASSERT_LE(leastOfNormal - least, NEAREST_BOUND * 5) << "aspect " << aspect << ", point " << i;
        }
    }
}

/// A needle among the texture coordinates, in any place and position, and the triangle that it belongs to.
struct TextureNeedle {
    std::array<Point<double, 2>, 3> texture;
    oracle::Triangle corners;
};

TextureNeedle anyTextureNeedle(oracle::Random& random) {
    const double aspect = std::pow(10, -random.uniform(0, DEEPEST_TEXTURE));
    const double turn = random.uniform(0, 6.3);
    const Point<double, 2> along{std::cos(turn), std::sin(turn)};
    const Point<double, 2> across{-along[1], along[0]};
    const Point<double, 2> start{random.uniform(-1, 1), random.uniform(-1, 1)};
    // Both ends may also have an edge as short as the needle is thin.
    const double apex =
        random.below(3) == 0 ? random.below(2) + random.uniform(-1, 1) * aspect : random.uniform(-0.2, 1.2);
    TextureNeedle needle{{start, start + along, start + apex * along + aspect * across},
                         {3.0 * random.inCube(), 3.0 * random.inCube(), 3.0 * random.inCube()}};
    std::rotate(needle.texture.begin(), needle.texture.begin() + random.below(3), needle.texture.end());
    if (random.below(2) == 0) {
        std::swap(needle.texture[0], needle.texture[1]);
    }
    return needle;
}

/// On an edge as far as rounding leaves it there, often near a corner.
Point<double, 2> placeOnEdge(const std::array<Point<double, 2>, 3>& texture, oracle::Random& random) {
    const std::uint32_t corner = random.below(3);
    const double share = random.below(3) == 0 ? std::pow(10, -random.uniform(0, 17)) : random.uniform(0, 1);
    return texture[corner] + share * (texture[(corner + 1 + random.below(2)) % 3] - texture[corner]);
}

/// Inside or on an edge, as far as rounding leaves it there.
Point<double, 2> placeIn(const std::array<Point<double, 2>, 3>& texture, oracle::Random& random) {
    const Point<double, 2> onEdge = placeOnEdge(texture, random);
    return onEdge + (random.below(4) == 0 ? 0 : random.uniform(0, 1)) * (texture[random.below(3)] - onEdge);
}

/// Up to 9e-10 from a place on an edge, in any direction.
Point<double, 2> placeBeside(const std::array<Point<double, 2>, 3>& texture, oracle::Random& random) {
    const double turn = random.uniform(0, 6.3);
    return placeOnEdge(texture, random) +
           std::pow(10, -random.uniform(9.05, 17)) * Point<double, 2>{std::cos(turn), std::sin(turn)};
}

/// The bound of a mapped point.
double mappedBound(const oracle::Triangle& corners) {
    const double longest =
        std::max({norm(corners[1] - corners[0]), norm(corners[2] - corners[1]), norm(corners[0] - corners[2])});
    return MAPPED_BOUND * longest + HIT_BOUND * needles::largestCoordinate(corners, corners[0]);
}

TEST(MeshAccuracy, ANeedleAmongTheTextureCoordinatesIsMappedAsInExactArithmetic) {
    oracle::Random random(711);
    std::size_t inside = 0;
    std::size_t outside = 0;
    for (std::size_t i = 0; i < TEXTURE_PLACES; ++i) {
        const auto [texture, corners] = anyTextureNeedle(random);
        TriangleMesh mesh = meshOf(corners);
        mesh.textureCoordinates.assign(texture.begin(), texture.end());
        mesh.textureTriangles = mesh.triangles;
        const Point<double, 2> st = i % 3 == 0 ? placeIn(texture, random) : placeBeside(texture, random);
        Vector point;
        ASSERT_TRUE(MeshScreen(mesh).mapInto3D(st, point, false)) << "needle " << i;
        const oracle::MappedPlace expected = oracle::exactlyMapped(texture, corners, st);
        ++(expected.isInside ? inside : outside);
        ASSERT_LE(norm(point - expected.point), mappedBound(corners))
            << "needle " << i << (expected.isInside ? ", inside" : ", outside");
    }
    EXPECT_GT(inside, TEXTURE_PLACES * 2 / 5);
    EXPECT_GT(outside, TEXTURE_PLACES * 3 / 10);
}

/// A needle and ordinary triangles along its three edges; the needle is the first or the last.
struct NeedleAmongOthers {
    TriangleMesh mesh;
    std::array<Point<double, 2>, 3> texture;  ///< of the needle
    oracle::Triangle corners;
};

NeedleAmongOthers anyNeedleAmongOthers(oracle::Random& random) {
    const double aspect = std::pow(10, -random.uniform(3, DEEPEST_TEXTURE));
    const double turn = random.uniform(0, 6.3);
    const Point<double, 2> along{std::cos(turn), std::sin(turn)};
    const Point<double, 2> start{random.uniform(-1, 1), random.uniform(-1, 1)};
    NeedleAmongOthers made;
    for (const Point<double, 2>& place :
         {Point<double, 2>{0, 0}, {1, 0}, {random.uniform(0.1, 0.9), aspect}, {0.5, -0.5}, {0.05, 0.5}, {0.95, 0.5}}) {
        made.mesh.textureCoordinates.push_back(start + place[0] * along +
                                               place[1] * Point<double, 2>{-along[1], along[0]});
        made.mesh.vertices.push_back(3.0 * random.inCube());
    }
    made.mesh.triangles = {{0, 1, 2}, {1, 0, 3}, {2, 4, 0}, {1, 5, 2}};
    if (random.below(2) == 0) {
        std::reverse(made.mesh.triangles.begin(), made.mesh.triangles.end());
    }
    made.mesh.textureTriangles = made.mesh.triangles;
    for (std::size_t i = 0; i < 3; ++i) {
        made.texture[i] = made.mesh.textureCoordinates[i];
        made.corners[i] = made.mesh.vertices[i];
    }
    return made;
}

TEST(MeshAccuracy, ANeedleOfTheTextureIsNotTakenByItsNeighbours) {
    oracle::Random random(713);
    std::size_t inside = 0;
    for (std::size_t i = 0; i < TEXTURE_PLACES / 2; ++i) {
        const NeedleAmongOthers made = anyNeedleAmongOthers(random);
        const Point<double, 2> st = placeIn(made.texture, random);
        const oracle::MappedPlace expected = oracle::exactlyMapped(made.texture, made.corners, st);
        if (!expected.isInside) {
            continue;  // in a neighbour
        }
        ++inside;
        Vector point;
        ASSERT_TRUE(MeshScreen(made.mesh).mapInto3D(st, point, false)) << "needle " << i;
        ASSERT_LE(norm(point - expected.point), mappedBound(made.corners)) << "needle " << i;
    }
    EXPECT_GT(inside, TEXTURE_PLACES / 6);
}

/// True when the point is that of the place nearest to `st` on a triangle of the texture that is nearest to it, as far
/// as distances are rounded.
bool isMappedByANearest(const TriangleMesh& mesh, const Point<double, 2>& st, const Vector& point) {
    struct Candidate {
        double distance;
        bool isRight;
    };
    std::vector<Candidate> candidates;
    double least = std::numeric_limits<double>::infinity();
    for (const auto& [a, b, c] : mesh.textureTriangles) {
        const std::array<Point<double, 2>, 3> texture{mesh.textureCoordinates[a], mesh.textureCoordinates[b],
                                                      mesh.textureCoordinates[c]};
        const oracle::Triangle corners{mesh.vertices[a], mesh.vertices[b], mesh.vertices[c]};
        const oracle::MappedPlace place = oracle::exactlyMapped(texture, corners, st);
        least = std::min(least, place.distance);
        candidates.push_back({place.distance, norm(place.point - point) <= mappedBound(corners)});
    }
    constexpr double LARGEST_COORDINATE = 2.5;
    return std::any_of(candidates.begin(), candidates.end(), [least](const Candidate& candidate) {
        return candidate.isRight && candidate.distance <= least + TEXTURE_DISTANCE_BOUND * LARGEST_COORDINATE;
    });
}

TEST(MeshAccuracy, BesideANeedleAtTheBorderOfTheTextureANearestTriangleIsMapped) {
    oracle::Random random(714);
    for (std::size_t i = 0; i < TEXTURE_PLACES / 4; ++i) {
        NeedleAmongOthers made = anyNeedleAmongOthers(random);
        made.mesh.triangles = {{0, 1, 2}, {1, 0, 3}};
        if (random.below(2) == 0) {
            std::swap(made.mesh.triangles[0], made.mesh.triangles[1]);
        }
        made.mesh.textureTriangles = made.mesh.triangles;
        const Point<double, 2> st = placeBeside(made.texture, random);
        Vector point;
        ASSERT_TRUE(MeshScreen(made.mesh).mapInto3D(st, point, false)) << "needle " << i;
        ASSERT_TRUE(isMappedByANearest(made.mesh, st, point)) << "needle " << i;
    }
}

TEST(MeshAccuracy, ANeedleAloneIsContinuedInItsPlane) {
    oracle::Random random(712);
    constexpr int NEEDLES = repetitions(2'000);
    int hits = 0;
    for (int i = 0; i < NEEDLES; ++i) {
        const needles::Shape shape = needles::anyTriangle(needles::anyAspect(random), random);
        const MeshScreen screen(meshOf(shape.corners));
        const Vector aim = shape.corners[0] +
                           shape.size * (random.uniform(-2, 2) * shape.along + random.uniform(-2, 2) * shape.across);
        const Vector from = aim - shape.size * (shape.normal + 0.5 * random.inCube());
        const Vector normal = oracle::preciseNormal(shape.corners);
        const IntersectionSet hit =
            screen.intersectExtrapolatedWithSpecifiedNormal(from, aim, sideOfSurface(aim - from, normal));
        if (!hit.empty()) {
            ++hits;
            const double largest = needles::largestCoordinate(shape.corners, from);
            ASSERT_TRUE(oracle::isNearLine(from, aim, hit.first().point, HIT_BOUND * largest));
            ASSERT_LE(std::abs(dot(hit.first().point - shape.corners[0], normal)), HIT_BOUND * largest) << "hit " << i;
        }
    }
    EXPECT_GT(hits, NEEDLES / 4 * 3);
}

}  // namespace
