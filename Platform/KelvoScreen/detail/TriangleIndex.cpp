#include "KelvoScreen/detail/TriangleIndex.h"

#include "KelvoScreen/detail/Rounding.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <memory>
#include <new>
#include <utility>

namespace Veltrani::KelvoScreenDetail {

namespace {

/// Units of the structure. Inside the box coordinates are at most 1 and rays at most 2 sqrt(3) long. Rounding an
/// origin, a direction and a corner to single precision (6e-8 each) moves them by less than 4e-7 in all, and the box
/// test of Embree, in single precision too, by less than 1e-6.
constexpr double PADDING = 3e-6;
/// Relative to the distance of the point from the centre in units: more than single precision loses in a distance.
constexpr double DISTANCE_MARGIN = 1e-6;
/// A distance in units. From beyond it, single precision cannot distinguish the triangles: all are visited.
constexpr double FARTHEST_POINT = 1e5;

struct Release {
    void operator()(RTCScene scene) const { rtcReleaseScene(scene); }
    void operator()(RTCGeometry geometry) const { rtcReleaseGeometry(geometry); }
};
using Scene = std::unique_ptr<RTCSceneTy, Release>;
using Geometry = std::unique_ptr<RTCGeometryTy, Release>;

/// Embree returns null where it had no memory.
template <class Handle>
Handle made(Handle handle) {
    if (handle == nullptr) {
        throwEmbreeFault();
        throw std::bad_alloc();
    }
    return handle;
}

/// Throws `std::bad_alloc` unless there is as much memory as building takes at most (measured, with a quarter more).
/// Embree itself ends the process where its scheduler of tasks runs out of memory.
void requireMemory(std::size_t triangles) {
    constexpr std::size_t FIXED = std::size_t{8} << 20;
    constexpr std::size_t PER_TRIANGLE = 120;
    ::operator delete(::operator new(FIXED + PER_TRIANGLE * triangles));
}

struct BuildContext {
    const TriangleBoxes& triangles;
    IndexUnits units;
};

/// Bounds that are the wrong way round make Embree ignore the box.
void setBounds(const RTCBoundsFunctionArguments* arguments) {
    const BuildContext& context = *static_cast<const BuildContext*>(arguments->geometryUserPtr);
    const std::uint32_t number = context.triangles.numbers[arguments->primID];
    const Box box = number == TriangleBoxes::NO_BOX ? Box() : context.triangles.boxes[number];
    const Point<double, 3> lower = (box.lower - context.units.centre) * context.units.perLength;
    const Point<double, 3> upper = (box.upper - context.units.centre) * context.units.perLength;
    RTCBounds& bounds = *arguments->bounds_o;
    bounds.lower_x = static_cast<float>(lower[0] - PADDING);
    bounds.lower_y = static_cast<float>(lower[1] - PADDING);
    bounds.lower_z = static_cast<float>(lower[2] - PADDING);
    bounds.upper_x = static_cast<float>(upper[0] + PADDING);
    bounds.upper_y = static_cast<float>(upper[1] + PADDING);
    bounds.upper_z = static_cast<float>(upper[2] + PADDING);
}

/// Visits the triangles in a box; the last result is the tightest.
template <class Visitor>
double reachAfter(const BoxScene& scene, std::uint32_t box, Visitor& visitor) {
    return visitBox(
        scene, box, [&](std::uint32_t triangle) { return visitor.visit(triangle); },
        [](double /*first*/, double second) { return second; });
}

/// The ray query as its call-back finds it: Embree passes the context through.
struct RayQuery : RTCIntersectContext {
    TriangleIndex::RayVisitor* visitor;
    const BoxScene* scene;
    double lengthPerT;
};

void visitAlongRay(const RTCIntersectFunctionNArguments* arguments) {
    if (arguments->N > 1) {
        visitAlongPacket(arguments);
        return;
    }
    const RayQuery& query = *static_cast<const RayQuery*>(arguments->context);
    RTCRay& ray = *reinterpret_cast<RTCRay*>(arguments->rayhit);
    if (arguments->valid[0] != 0) {
        const double reach = reachAfter(*query.scene, arguments->primID, *query.visitor);
        ray.tfar = std::min(ray.tfar, query.scene->units.reach(reach, query.lengthPerT));
    }
}

struct PointQuery {
    TriangleIndex::PointVisitor* visitor;
    const BoxScene* scene;
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
    const float radius = query.radius(reachAfter(*query.scene, arguments->primID, *query.visitor));
    if (radius < arguments->query->radius) {
        arguments->query->radius = radius;
        return true;
    }
    return false;
}

/// Returns true for a direction that is finite, and neither so short nor so long that its inverse or its products leave
/// the range of a double.
bool isOrdinary(const Point<double, 3>& direction) {
    constexpr double SHORTEST = 1e-100;
    constexpr double LONGEST = 1e100;
    // The sum is not below anything when a component is not a number.
    const double sum = std::abs(direction[0]) + std::abs(direction[1]) + std::abs(direction[2]);
    return sum >= SHORTEST && sum <= LONGEST;
}

}  // namespace

TriangleIndex::TriangleIndex(std::uint32_t count, const Source& source) {
    TriangleBoxes triangles(count, source);
    m_box = triangles.all;
    m_typicalSize = triangles.typicalSize;
    if (!m_box.isEmpty()) {
        m_units = {m_box.centre(), 1 / m_box.halfSize()};
        build(triangles);
        m_isPaired = std::move(triangles.isPaired);
        m_furtherOf = std::move(triangles.furtherOf);
    }
}

TriangleIndex::~TriangleIndex() {
    if (m_scene != nullptr) {
        rtcReleaseScene(m_scene);
    }
}

BoxScene TriangleIndex::boxScene() const {
    return {m_scene, m_isPaired, m_furtherOf, m_units};
}

void TriangleIndex::build(const TriangleBoxes& triangles) {
    BuildContext context{triangles, m_units};
    RTCDevice device = embreeDevice();
    requireMemory(triangles.numbers.size());
    Scene scene(made(rtcNewScene(device)));
    rtcSetSceneFlags(scene.get(), RTC_SCENE_FLAG_ROBUST);
    rtcSetSceneBuildQuality(scene.get(), RTC_BUILD_QUALITY_MEDIUM);
    const Geometry geometry(made(rtcNewGeometry(device, RTC_GEOMETRY_TYPE_USER)));
    rtcSetGeometryUserPrimitiveCount(geometry.get(), static_cast<unsigned>(triangles.numbers.size()));
    rtcSetGeometryUserData(geometry.get(), &context);
    rtcSetGeometryBoundsFunction(geometry.get(), setBounds, nullptr);
    rtcSetGeometryIntersectFunction(geometry.get(), visitAlongRay);
    rtcCommitGeometry(geometry.get());
    rtcAttachGeometry(scene.get(), geometry.get());
    rtcCommitScene(scene.get());
    rtcSetGeometryUserData(geometry.get(), nullptr);
    // Released here or given up: a scene whose building failed may have a task that never ran, and Embree ends the
    // process when it is destroyed.
    RTCScene built = scene.release();
    // A structure that was not built would be one that no ray hits.
    throwEmbreeFault();
    m_scene = built;
}

bool TriangleIndex::clip(const Point<double, 3>& from, const Point<double, 3>& direction, double& first,
                         double& second) const {
    const double uncertainty = ROUNDING * largestComponent(from);
    // Where the rounding of the origin alone is as large as the mesh, no ray can be aimed at it.
    if (m_scene == nullptr || !(uncertainty * m_units.perLength <= 1)) {
        return false;
    }
    if (m_box.contains(from) && isOrdinary(direction)) {
        first = 0;
        second = Box::INFINITE;
        return true;
    }
    return m_box.clip(from, direction, clipMargin() + uncertainty, first, second);
}

void TriangleIndex::alongRay(const Point<double, 3>& origin, const Point<double, 3>& direction, double reach,
                             RayVisitor& visitor) const {
    const double largest = largestComponent(direction);
    const Point<double, 3> unitDirection = direction * (1 / largest);
    const Point<double, 3> start =
        (origin - m_units.centre) * m_units.perLength - IndexUnits::RAY_MARGIN * unitDirection;
    const BoxScene scene = boxScene();
    RayQuery query{};
    rtcInitIntersectContext(&query);
    query.visitor = &visitor;
    query.scene = &scene;
    query.lengthPerT = largest;

    RTCRayHit ray{};
    ray.ray.org_x = static_cast<float>(start[0]);
    ray.ray.org_y = static_cast<float>(start[1]);
    ray.ray.org_z = static_cast<float>(start[2]);
    ray.ray.dir_x = static_cast<float>(unitDirection[0]);
    ray.ray.dir_y = static_cast<float>(unitDirection[1]);
    ray.ray.dir_z = static_cast<float>(unitDirection[2]);
    ray.ray.tfar = m_units.reach(reach, largest);
    ray.ray.mask = ~0U;
    ray.hit.geomID = RTC_INVALID_GEOMETRY_ID;
    ray.hit.instID[0] = RTC_INVALID_GEOMETRY_ID;
    rtcIntersect1(m_scene, &query, &ray);
}

void TriangleIndex::alongRays(const LaneRays& rays, LaneMask lanes, std::size_t width, PacketVisitor& visitor) const {
    if (lanes != 0) {
        castPacket(boxScene(), rays, lanes, width, visitor);
    }
}

void TriangleIndex::aroundPoint(const Point<double, 3>& point, double radius, PointVisitor& visitor) const {
    if (m_scene == nullptr) {
        return;
    }
    Point<double, 3> place = (point - m_units.centre) * m_units.perLength;
    const double distance = largestComponent(place);
    const BoxScene scene = boxScene();
    PointQuery query{&visitor, &scene, m_units.perLength, DISTANCE_MARGIN * (1 + distance)};
    if (!(distance < FARTHEST_POINT)) {
        place = {};
        query.margin = Box::INFINITE;
    }
    RTCPointQuery ball{};
    ball.x = static_cast<float>(place[0]);
    ball.y = static_cast<float>(place[1]);
    ball.z = static_cast<float>(place[2]);
    ball.radius = query.radius(radius);
    RTCPointQueryContext context{};
    rtcInitPointQueryContext(&context);
    rtcPointQuery(m_scene, &ball, &context, visitAroundPoint, &query);
}

}  // namespace Veltrani::KelvoScreenDetail
