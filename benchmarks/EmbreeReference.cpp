#include "EmbreeReference.h"

#include <cmath>

namespace {

using Vector = Point<double, 3>;

/// One device for all: making one per mesh would be part of the time of a build.
RTCDevice device() {
    static RTCDevice theDevice = rtcNewDevice("threads=1");
    return theDevice;
}

}  // namespace

EmbreeReference::EmbreeReference(const TriangleMesh& mesh) : m_mesh(mesh), m_scene(rtcNewScene(device())) {
    rtcSetSceneFlags(m_scene, RTC_SCENE_FLAG_ROBUST);
    rtcSetSceneBuildQuality(m_scene, RTC_BUILD_QUALITY_MEDIUM);
    RTCGeometry geometry = rtcNewGeometry(device(), RTC_GEOMETRY_TYPE_TRIANGLE);
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

EmbreeReference::~EmbreeReference() {
    rtcReleaseScene(m_scene);
}

std::optional<EmbreeReference::Hit> EmbreeReference::intersect(const Ray& ray) const {
    const Vector direction = ray.second - ray.first;
    RTCIntersectContext context{};
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
    if (hit.hit.geomID == RTC_INVALID_GEOMETRY_ID) {
        return std::nullopt;
    }
    return refine(ray.first, direction, hit.hit.primID);
}

SurfaceHit EmbreeReference::ask(const Ray& ray) const {
    const std::optional<Hit> hit = intersect(ray);
    if (!hit) {
        return {};
    }
    const Vector normal = hit->area * (1 / norm(hit->area));
    return {hit->point, normal, hit->t, sideOfSurface(ray.second - ray.first, normal), true};
}

EmbreeReference::Hit EmbreeReference::refine(const Vector& from, const Vector& direction,
                                             std::uint32_t triangle) const {
    const TriangleMesh::Triangle& corners = m_mesh.triangles[triangle];
    const Vector& corner = m_mesh.vertices[corners[0]];
    const Vector area = cross(m_mesh.vertices[corners[1]] - corner, m_mesh.vertices[corners[2]] - corner);
    const double t = dot(corner - from, area) / dot(direction, area);
    return {from + t * direction, area, t};
}
