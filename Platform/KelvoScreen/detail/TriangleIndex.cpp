#include "KelvoScreen/detail/TriangleIndex.h"

#include "KelvoScreen/detail/Components.h"
#include "KelvoScreen/detail/EmbreeDevice.h"
#include "KelvoScreen/detail/Rounding.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <memory>
#include <new>

namespace KelvoScreenDetail {

namespace {

/// Units of the structure. Inside the box coordinates are at most 1 and rays at most 2 sqrt(3) long. Rounding an
/// origin, a direction and a corner to single precision (6e-8 each) moves them by less than 4e-7 in all, and the box
/// test of Embree, in single precision too, by less than 1e-6.
constexpr double PADDING = 3e-6;
/// Relative to the distance of the point from the centre in units: more than single precision loses in a distance.
constexpr double DISTANCE_MARGIN = 1e-6;
/// Units. From beyond, single precision cannot tell the triangles apart: all are visited.
constexpr double FARTHEST_POINT = 1e5;

/// How large the common box of two triangles may be, relative to the sum of their own: each of them is then tested by
/// all rays that pass it, but one box less is passed.
constexpr double PAIR_GROWTH = 0.8;

/// In place of the number of a box: of a triangle that is left out, and of the second of a pair.
constexpr std::uint32_t NO_BOX = std::numeric_limits<std::uint32_t>::max();

struct Release {
    void operator()(RTCScene scene) const { rtcReleaseScene(scene); }
    void operator()(RTCGeometry geometry) const { rtcReleaseGeometry(geometry); }
};
using Scene = std::unique_ptr<RTCSceneTy, Release>;
using Geometry = std::unique_ptr<RTCGeometryTy, Release>;

/// Embree hands out null where it had no memory.
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
    const std::vector<Box>& boxes;
    const std::vector<std::uint32_t>& numbers;
    IndexUnits units;
};

/// Bounds that are the wrong way round tell Embree to take no notice.
void setBounds(const RTCBoundsFunctionArguments* arguments) {
    const BuildContext& context = *static_cast<const BuildContext*>(arguments->geometryUserPtr);
    const std::uint32_t number = context.numbers[arguments->primID];
    const Box box = number == NO_BOX ? Box() : context.boxes[number];
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

/// Visits a triangle and the other one of its pair; the last answer is the tightest.
template <class Visitor>
double visitBox(Visitor& visitor, const std::vector<bool>& isPaired, std::uint32_t triangle) {
    const double reach = visitor.visit(triangle);
    return isPaired[triangle] ? visitor.visit(triangle + 1) : reach;
}

/// The ray query as its call-back finds it: Embree hands the context through.
struct RayQuery : RTCIntersectContext {
    TriangleIndex::RayVisitor* visitor;
    const std::vector<bool>* isPaired;
    const IndexUnits* units;
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
        const double reach = visitBox(*query.visitor, *query.isPaired, arguments->primID);
        ray.tfar = std::min(ray.tfar, query.units->reach(reach, query.lengthPerT));
    }
}

struct PointQuery {
    TriangleIndex::PointVisitor* visitor;
    const std::vector<bool>* isPaired;
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
    const float radius = query.radius(visitBox(*query.visitor, *query.isPaired, arguments->primID));
    if (radius < arguments->query->radius) {
        arguments->query->radius = radius;
        return true;
    }
    return false;
}

/// Finite, and neither so short nor so long that its inverse or its products leave the range of a double.
bool isOrdinary(const Point<double, 3>& direction) {
    constexpr double SHORTEST = 1e-100;
    constexpr double LONGEST = 1e100;
    // The sum is not below anything when a component is not a number.
    const double sum = std::abs(direction[0]) + std::abs(direction[1]) + std::abs(direction[2]);
    return sum >= SHORTEST && sum <= LONGEST;
}

bool areWorthJoining(const Box& a, const Box& b) {
    Box joined = a;
    joined.add(b);
    return joined.halfSurface() <= PAIR_GROWTH * (a.halfSurface() + b.halfSurface());
}

}  // namespace

/// While the structure is built.
struct TriangleIndex::Boxes {
    std::vector<Box> boxes;
    std::vector<std::uint32_t> numbers;  ///< for each triangle that of the box whose lowest it is
};

TriangleIndex::TriangleIndex(std::uint32_t count, const Source& source) : m_isPaired(count) {
    const Boxes boxes = formBoxes(count, source);
    if (!m_box.isEmpty()) {
        m_units = {m_box.centre(), 1 / m_box.halfSize()};
        build(boxes);
    }
}

TriangleIndex::Boxes TriangleIndex::formBoxes(std::uint32_t count, const Source& source) {
    Boxes formed{{}, std::vector<std::uint32_t>(count, NO_BOX)};
    formed.boxes.reserve(count / 2 + 1);
    Corners corners;
    double sizes = 0;
    bool isOpen = false;  // the last box holds the previous triangle and no other
    for (std::uint32_t i = 0; i < count; ++i) {
        if (!source.corners(i, corners)) {
            isOpen = false;
            continue;
        }
        Box box;
        std::for_each(corners.begin(), corners.end(), [&box](const auto& corner) { box.add(corner); });
        m_box.add(box);
        sizes += 2 * box.halfSize();
        if (isOpen && areWorthJoining(formed.boxes.back(), box)) {
            formed.boxes.back().add(box);
            m_isPaired[i - 1] = true;
            isOpen = false;
        } else {
            formed.numbers[i] = static_cast<std::uint32_t>(formed.boxes.size());
            formed.boxes.push_back(box);
            isOpen = true;
        }
    }
    m_typicalSize = count > 0 ? sizes / count : 0;
    return formed;
}

TriangleIndex::~TriangleIndex() {
    if (m_scene != nullptr) {
        rtcReleaseScene(m_scene);
    }
}

void TriangleIndex::build(const Boxes& boxes) {
    BuildContext context{boxes.boxes, boxes.numbers, m_units};
    RTCDevice device = embreeDevice();
    requireMemory(boxes.numbers.size());
    Scene scene(made(rtcNewScene(device)));
    rtcSetSceneFlags(scene.get(), RTC_SCENE_FLAG_ROBUST);
    rtcSetSceneBuildQuality(scene.get(), RTC_BUILD_QUALITY_MEDIUM);
    const Geometry geometry(made(rtcNewGeometry(device, RTC_GEOMETRY_TYPE_USER)));
    rtcSetGeometryUserPrimitiveCount(geometry.get(), static_cast<unsigned>(boxes.numbers.size()));
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
    // From where the rounding of the origin alone is as large as the mesh, nothing can be aimed at.
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
    RayQuery query{};
    rtcInitIntersectContext(&query);
    query.visitor = &visitor;
    query.isPaired = &m_isPaired;
    query.units = &m_units;
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
        castPacket({m_scene, m_isPaired, m_units}, rays, lanes, width, visitor);
    }
}

void TriangleIndex::aroundPoint(const Point<double, 3>& point, double radius, PointVisitor& visitor) const {
    if (m_scene == nullptr) {
        return;
    }
    Point<double, 3> place = (point - m_units.centre) * m_units.perLength;
    const double distance = largestComponent(place);
    PointQuery query{&visitor, &m_isPaired, m_units.perLength, DISTANCE_MARGIN * (1 + distance)};
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

}  // namespace KelvoScreenDetail
