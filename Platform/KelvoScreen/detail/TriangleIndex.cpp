#include "KelvoScreen/detail/TriangleIndex.h"

#include "KelvoScreen/detail/Components.h"
#include "KelvoScreen/detail/EmbreeDevice.h"
#include "KelvoScreen/detail/Rounding.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace KelvoScreenDetail {

namespace {

/// Units of the structure. Inside the box coordinates are at most 1 and rays at most 2 sqrt(3) long. Rounding an
/// origin, a direction and a corner to single precision (6e-8 each) moves them by less than 4e-7 in all, and the box
/// test of Embree, in single precision too, by less than 1e-6.
constexpr double PADDING = 3e-6;
/// Units by which rays start before their origin and reach past their end: the boxes are padded along the ray as well.
constexpr double RAY_MARGIN = 1e-5;
/// Relative to the distance of the point from the centre in units: more than single precision loses in a distance.
constexpr double DISTANCE_MARGIN = 1e-6;
/// Units. From beyond, single precision cannot tell the triangles apart: all are visited.
constexpr double FARTHEST_POINT = 1e5;

struct BuildContext {
    const TriangleIndex::Source* source;
    Point<double, 3> centre;
    double toUnits;
};

void setBounds(RTCBounds& bounds, const Point<double, 3>& lower, const Point<double, 3>& upper) {
    bounds.lower_x = static_cast<float>(lower[0] - PADDING);
    bounds.lower_y = static_cast<float>(lower[1] - PADDING);
    bounds.lower_z = static_cast<float>(lower[2] - PADDING);
    bounds.upper_x = static_cast<float>(upper[0] + PADDING);
    bounds.upper_y = static_cast<float>(upper[1] + PADDING);
    bounds.upper_z = static_cast<float>(upper[2] + PADDING);
}

void boundTriangle(const RTCBoundsFunctionArguments* arguments) {
    const BuildContext& build = *static_cast<const BuildContext*>(arguments->geometryUserPtr);
    Corners corners;
    Box box;
    if (build.source->corners(arguments->primID, corners)) {
        for (const Point<double, 3>& corner : corners) {
            box.add((corner - build.centre) * build.toUnits);
        }
    }
    // An empty box, with its lower end above its upper one, leaves the triangle out.
    setBounds(*arguments->bounds_o, box.lower, box.upper);
}

/// The ray query as its call-back finds it: Embree hands the context through.
struct RayQuery : RTCIntersectContext {
    TriangleIndex::RayVisitor* visitor;
    double unitsPerT;
};

void visitAlongRay(const RTCIntersectFunctionNArguments* arguments) {
    const RayQuery& query = *static_cast<const RayQuery*>(arguments->context);
    RTCRay& ray = *reinterpret_cast<RTCRay*>(arguments->rayhit);
    if (arguments->valid[0] != 0) {
        const double reach = query.visitor->visit(arguments->primID) * query.unitsPerT + 2 * RAY_MARGIN;
        ray.tfar = std::min(ray.tfar, static_cast<float>(reach));
    }
}

struct PointQuery {
    TriangleIndex::PointVisitor* visitor;
    double toUnits;
    double margin;

    [[nodiscard]] float radius(double distance) const {
        const double units = distance * toUnits + margin;
        return units < std::numeric_limits<float>::max() ? static_cast<float>(units)
                                                         : std::numeric_limits<float>::infinity();
    }
};

bool visitAroundPoint(RTCPointQueryFunctionArguments* arguments) {
    const PointQuery& query = *static_cast<const PointQuery*>(arguments->userPtr);
    const float radius = query.radius(query.visitor->visit(arguments->primID));
    if (radius < arguments->query->radius) {
        arguments->query->radius = radius;
        return true;
    }
    return false;
}

}  // namespace

TriangleIndex::TriangleIndex(std::uint32_t count, const Source& source) {
    Corners corners;
    for (std::uint32_t i = 0; i < count; ++i) {
        if (source.corners(i, corners)) {
            std::for_each(corners.begin(), corners.end(), [this](const auto& corner) { m_box.add(corner); });
        }
    }
    if (!m_box.isEmpty()) {
        m_centre = m_box.centre();
        m_toUnits = 1 / m_box.halfSize();
        build(count, source);
    }
}

TriangleIndex::~TriangleIndex() {
    if (m_scene != nullptr) {
        rtcReleaseScene(m_scene);
    }
}

void TriangleIndex::build(std::uint32_t count, const Source& source) {
    BuildContext context{&source, m_centre, m_toUnits};
    RTCDevice device = embreeDevice();
    m_scene = rtcNewScene(device);
    rtcSetSceneFlags(m_scene, RTC_SCENE_FLAG_ROBUST);
    rtcSetSceneBuildQuality(m_scene, RTC_BUILD_QUALITY_MEDIUM);
    RTCGeometry geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_USER);
    rtcSetGeometryUserPrimitiveCount(geometry, count);
    rtcSetGeometryUserData(geometry, &context);
    rtcSetGeometryBoundsFunction(geometry, boundTriangle, nullptr);
    rtcSetGeometryIntersectFunction(geometry, visitAlongRay);
    rtcCommitGeometry(geometry);
    rtcAttachGeometry(m_scene, geometry);
    rtcCommitScene(m_scene);
    rtcSetGeometryUserData(geometry, nullptr);
    rtcReleaseGeometry(geometry);
    try {
        throwEmbreeFault();
    } catch (...) {
        rtcReleaseScene(m_scene);
        throw;
    }
}

bool TriangleIndex::clip(const Point<double, 3>& from, const Point<double, 3>& direction, double& first,
                         double& second) const {
    const double margin = RAY_MARGIN / m_toUnits + ROUNDING * largestComponent(from);
    return m_scene != nullptr && m_box.clip(from, direction, margin, first, second);
}

void TriangleIndex::alongRay(const Point<double, 3>& origin, const Point<double, 3>& direction, double reach,
                             RayVisitor& visitor) const {
    const double largest = largestComponent(direction);
    const Point<double, 3> unitDirection = direction * (1 / largest);
    const Point<double, 3> start = (origin - m_centre) * m_toUnits - RAY_MARGIN * unitDirection;
    RayQuery query{};
    rtcInitIntersectContext(&query);
    query.visitor = &visitor;
    query.unitsPerT = largest * m_toUnits;

    RTCRayHit ray{};
    ray.ray.org_x = static_cast<float>(start[0]);
    ray.ray.org_y = static_cast<float>(start[1]);
    ray.ray.org_z = static_cast<float>(start[2]);
    ray.ray.dir_x = static_cast<float>(unitDirection[0]);
    ray.ray.dir_y = static_cast<float>(unitDirection[1]);
    ray.ray.dir_z = static_cast<float>(unitDirection[2]);
    ray.ray.tfar = static_cast<float>(reach * query.unitsPerT + 2 * RAY_MARGIN);
    ray.ray.mask = ~0U;
    ray.hit.geomID = RTC_INVALID_GEOMETRY_ID;
    ray.hit.instID[0] = RTC_INVALID_GEOMETRY_ID;
    rtcIntersect1(m_scene, &query, &ray);
}

void TriangleIndex::aroundPoint(const Point<double, 3>& point, double radius, PointVisitor& visitor) const {
    if (m_scene == nullptr) {
        return;
    }
    Point<double, 3> place = (point - m_centre) * m_toUnits;
    const double distance = largestComponent(place);
    PointQuery query{&visitor, m_toUnits, DISTANCE_MARGIN * (1 + distance)};
    if (!(distance < FARTHEST_POINT)) {
        place = {};
        query.margin = Box::INFINITE;
    }
    RTCPointQuery ball{};
    ball.x = static_cast<float>(place[0]);
    ball.y = static_cast<float>(place[1]);
    ball.z = static_cast<float>(place[2]);
    ball.radius = query.radius(radius);
    RTCPointQueryContext context;
    rtcInitPointQueryContext(&context);
    rtcPointQuery(m_scene, &ball, &context, visitAroundPoint, &query);
}

}  // namespace KelvoScreenDetail
