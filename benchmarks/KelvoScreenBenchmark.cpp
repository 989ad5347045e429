#include "KelvoScreen/MeshScreen.h"
#include "Ratio.h"

#include <embree3/rtcore.h>

#include <cmath>
#include <cstdint>
#include <numbers>
#include <random>
#include <vector>

/// Rays on a mesh of a million triangles, against what Embree takes for the same.

namespace {

using Vector = Point<double, 3>;

constexpr int ROWS = 708;
constexpr int COLUMNS = 708;
constexpr int RAY_COUNT = 100000;
constexpr double RADIUS = 5;  // metres: a dome

Vector bumpyPoint(int row, int column) {
    const double polar = std::numbers::pi * row / ROWS;
    const double azimuth = 2 * std::numbers::pi * column / COLUMNS;
    const double radius = RADIUS * (1 + 0.05 * std::sin(9 * polar) * std::cos(7 * azimuth));
    return {radius * std::sin(polar) * std::cos(azimuth), radius * std::sin(polar) * std::sin(azimuth),
            radius * std::cos(polar)};
}

/// A closed sphere with bumps, about a million triangles.
TriangleMesh bumpySphere() {
    TriangleMesh mesh;
    for (int row = 0; row <= ROWS; ++row) {
        for (int column = 0; column < COLUMNS; ++column) {
            mesh.vertices.push_back(bumpyPoint(row, column));
        }
    }
    const auto index = [](int row, int column) { return static_cast<std::uint32_t>(row * COLUMNS + column % COLUMNS); };
    for (int row = 0; row < ROWS; ++row) {
        for (int column = 0; column < COLUMNS; ++column) {
            mesh.triangles.push_back({index(row, column), index(row + 1, column), index(row, column + 1)});
            mesh.triangles.push_back({index(row, column + 1), index(row + 1, column), index(row + 1, column + 1)});
        }
    }
    return mesh;
}

const MeshScreen& screen() {
    static const MeshScreen theScreen(bumpySphere());
    return theScreen;
}

/// The rays of a channel, row by row, from a point off the centre.
std::vector<Ray> coherentRays() {
    std::vector<Ray> rays;
    const Vector eye{0.5, 1.0, 0.25};
    constexpr int WIDTH = 400;
    for (int i = 0; i < RAY_COUNT; ++i) {
        const double across = 2.0 * (i % WIDTH) / WIDTH - 1;
        const double up = 2.0 * (i / WIDTH) / (RAY_COUNT / WIDTH) - 1;
        rays.emplace_back(eye, eye + Vector{across + 1e-4, 1.0, up + 1e-4});
    }
    return rays;
}

/// Rays from anywhere in the middle to anywhere.
std::vector<Ray> randomRays() {
    std::mt19937_64 generator(1);
    std::uniform_real_distribution<double> uniform(-1, 1);
    const auto random = [&] { return Vector{uniform(generator), uniform(generator), uniform(generator)}; };
    std::vector<Ray> rays;
    for (int i = 0; i < RAY_COUNT; ++i) {
        const Vector from = 1.5 * random();
        rays.emplace_back(from, from + random());
    }
    return rays;
}

struct Answer {
    Vector point;
    Vector normal;
    int side = 0;
};

/// What a target locator asks: the hit, the normal at the bare point, the side.
Answer askScreen(const Ray& ray) {
    const IntersectionSet hits = screen().intersect(ray.first, ray.second);
    if (hits.empty()) {
        return {};
    }
    const Vector point = hits.first().point;
    const Vector normal = screen().getScreenNormal(point);
    return {point, normal, sideOfSurface(ray.second - ray.first, normal)};
}

/// The mesh in an Embree scene of triangles, in single precision, with the settings that make Embree itself watertight.
class EmbreeReference {
public:
    explicit EmbreeReference(const TriangleMesh& mesh) : m_mesh(mesh), m_device(rtcNewDevice("threads=1")) {
        m_scene = rtcNewScene(m_device);
        rtcSetSceneFlags(m_scene, RTC_SCENE_FLAG_ROBUST);
        RTCGeometry geometry = rtcNewGeometry(m_device, RTC_GEOMETRY_TYPE_TRIANGLE);
        auto* vertices = static_cast<float*>(
            rtcSetNewGeometryBuffer(geometry, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3, 12, mesh.vertices.size()));
        for (const Vector& vertex : mesh.vertices) {
            for (std::size_t i = 0; i < 3; ++i) {
                *vertices++ = static_cast<float>(vertex[i]);
            }
        }
        rtcSetSharedGeometryBuffer(geometry, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3, mesh.triangles.data(), 0, 12,
                                   mesh.triangles.size());
        rtcCommitGeometry(geometry);
        rtcAttachGeometry(m_scene, geometry);
        rtcReleaseGeometry(geometry);
        rtcCommitScene(m_scene);
    }
    ~EmbreeReference() { rtcReleaseScene(m_scene); }
    EmbreeReference(const EmbreeReference&) = delete;
    EmbreeReference& operator=(const EmbreeReference&) = delete;

    /// One ray, the hit recomputed in double on the plane of the triangle.
    [[nodiscard]] Answer ask(const Ray& ray) const {
        const Vector direction = ray.second - ray.first;
        RTCIntersectContext context;
        rtcInitIntersectContext(&context);
        RTCRayHit hit{};
        hit.ray.org_x = static_cast<float>(ray.first[0]);
        hit.ray.org_y = static_cast<float>(ray.first[1]);
        hit.ray.org_z = static_cast<float>(ray.first[2]);
        hit.ray.dir_x = static_cast<float>(direction[0]);
        hit.ray.dir_y = static_cast<float>(direction[1]);
        hit.ray.dir_z = static_cast<float>(direction[2]);
        hit.ray.tfar = INFINITY;
        hit.ray.mask = ~0U;
        hit.hit.geomID = RTC_INVALID_GEOMETRY_ID;
        rtcIntersect1(m_scene, &context, &hit);
        return hit.hit.geomID == RTC_INVALID_GEOMETRY_ID ? Answer{} : refine(ray.first, direction, hit.hit.primID);
    }

private:
    [[nodiscard]] Answer refine(const Vector& from, const Vector& direction, std::uint32_t triangle) const {
        const TriangleMesh::Triangle& corners = m_mesh.triangles[triangle];
        const Vector& corner = m_mesh.vertices[corners[0]];
        const Vector area = cross(m_mesh.vertices[corners[1]] - corner, m_mesh.vertices[corners[2]] - corner);
        const double t = dot(corner - from, area) / dot(direction, area);
        const Vector normal = area * (1 / norm(area));
        return {from + t * direction, normal, sideOfSurface(direction, normal)};
    }

    const TriangleMesh& m_mesh;
    RTCDevice m_device;
    RTCScene m_scene = nullptr;
};

const EmbreeReference& reference() {
    static const EmbreeReference theReference(screen().mesh());
    return theReference;
}

template <class Ask>
void castAll(benchmark::State& state, const std::vector<Ray>& rays, const Ask& ask) {
    double sum = 0;
    for (auto _ : state) {
        for (const Ray& ray : rays) {
            const Answer answer = ask(ray);
            sum += answer.point[0] + answer.normal[1] + answer.side;
        }
    }
    benchmark::DoNotOptimize(sum);
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(rays.size()));
}

void addRayPair(const std::string& name, const std::vector<Ray>& rays) {
    constexpr double LIMIT = 1.5;
    ratio::pair(
        name, [&rays](benchmark::State& state) { castAll(state, rays, askScreen); },
        [&rays](benchmark::State& state) {
            castAll(state, rays, [&embree = reference()](const Ray& ray) { return embree.ask(ray); });
        },
        LIMIT);
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<Ray> coherent = coherentRays();
    const std::vector<Ray> random = randomRays();
    (void)askScreen(coherent.front());
    (void)reference();
    addRayPair("mesh_ray_coherent", coherent);
    addRayPair("mesh_ray_random", random);
    return ratio::run(argc, argv);
}
