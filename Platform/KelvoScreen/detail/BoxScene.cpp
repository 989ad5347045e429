#include "KelvoScreen/detail/BoxScene.h"

#include "Common/VeltraniException.h"

#include <algorithm>
#include <array>
#include <new>
#include <string>

namespace Veltrani::KelvoScreenDetail {

namespace {

/// Nodes of eight boxes, which Embree would use for its own triangles, make rays a fifth faster where the processor can
/// test eight at once. (The results are the same: they are decided in double precision.)
const char* configuration() {
    return __builtin_cpu_supports("avx") != 0 ? "threads=1,object_accel=bvh8.object" : "threads=1";
}

RTCDevice createDevice() {
    RTCDevice device = rtcNewDevice(configuration());
    if (device == nullptr) {
        const RTCError error = rtcGetDeviceError(nullptr);
        if (error == RTC_ERROR_OUT_OF_MEMORY) {
            throw std::bad_alloc();
        }
        throw VeltraniException(__FILE__, __LINE__,
                                L"Embree cannot be started on this processor (error " + std::to_wstring(error) +
                                    L"); meshes cannot be searched");
    }
    return device;
}

/// Rays in single precision, in units of the structure.
struct NarrowRays {
    using Row = std::array<float, LANES>;
    alignas(64) std::array<Row, 3> origin{};
    alignas(64) std::array<Row, 3> direction{};
    alignas(64) Row end{};
};

/// A query as its call-back finds it: Embree passes the context through.
struct PacketQuery : RTCIntersectContext {
    PacketVisitor* visitor;
    const BoxScene* scene;
    const Lanes* largest;
    std::size_t firstLane;
    float* end;  ///< of the rays that Embree works on, the first of which stands in `firstLane`
};

[[gnu::always_inline]] inline void storeNarrow(NarrowRays::Row& row, std::size_t i, Wide value) {
    for (std::size_t k = 0; k < WIDTH; ++k) {
        row[i + k] = static_cast<float>(value[k]);
    }
}

KELVO_SCREEN_WIDE_VECTORS void narrow(const LaneRays& rays, const IndexUnits& units, NarrowRays& out) {
    for (std::size_t i = 0; i < LANES; i += WIDTH) {
        for (std::size_t k = 0; k < 3; ++k) {
            const Wide heading = load(rays.heading[k], i);
            const Wide start = (load(rays.origin[k], i) - units.centre[k]) * units.perLength;
            storeNarrow(out.origin[k], i, start - IndexUnits::RAY_MARGIN * heading);
            storeNarrow(out.direction[k], i, heading);
        }
        const Wide end = load(rays.end, i) * load(rays.largest, i) * units.perLength;
        storeNarrow(out.end, i, end + 2 * IndexUnits::RAY_MARGIN);
    }
}

/// @param rays all zero
template <class Rays, std::size_t COUNT>
void fill(Rays& rays, const NarrowRays& from, std::size_t first) {
    std::copy_n(&from.origin[0][first], COUNT, rays.ray.org_x);
    std::copy_n(&from.origin[1][first], COUNT, rays.ray.org_y);
    std::copy_n(&from.origin[2][first], COUNT, rays.ray.org_z);
    std::copy_n(&from.direction[0][first], COUNT, rays.ray.dir_x);
    std::copy_n(&from.direction[1][first], COUNT, rays.ray.dir_y);
    std::copy_n(&from.direction[2][first], COUNT, rays.ray.dir_z);
    std::copy_n(&from.end[first], COUNT, rays.ray.tfar);
    std::fill_n(rays.ray.mask, COUNT, ~0U);
    std::fill_n(rays.hit.geomID, COUNT, RTC_INVALID_GEOMETRY_ID);
    std::fill_n(rays.hit.instID[0], COUNT, RTC_INVALID_GEOMETRY_ID);
}

/// Casts all lanes, COUNT at a time, with the function of Embree for that many.
template <class Rays, std::size_t COUNT, class Intersect>
void castInParts(PacketQuery& query, const NarrowRays& rays, LaneMask lanes, const Intersect& intersect) {
    for (std::size_t first = 0; first < LANES; first += COUNT) {
        alignas(64) std::array<int, COUNT> valid{};
        for (std::size_t i = 0; i < COUNT; ++i) {
            valid[i] = (lanes >> (first + i) & 1U) != 0 ? -1 : 0;
        }
        Rays part{};
        fill<Rays, COUNT>(part, rays, first);
        query.firstLane = first;
        query.end = part.ray.tfar;
        intersect(valid.data(), query.scene->scene, &query, &part);
    }
}

bool isNative(RTCDeviceProperty property) {
    return rtcGetDeviceProperty(embreeDevice(), property) != 0;
}

/// Returns a bit for each of N numbers, a multiple of four, that is -1 and not 0.
LaneMask validRays(const int* valid, std::size_t count) {
    LaneMask mask = 0;
    for (std::size_t i = 0; i < count; i += 4) {
        const __m128i four = _mm_loadu_si128(reinterpret_cast<const __m128i*>(valid + i));
        mask |= static_cast<LaneMask>(_mm_movemask_ps(_mm_castsi128_ps(four))) << i;
    }
    return mask;
}

}  // namespace

RTCDevice embreeDevice() {
    static RTCDevice device = createDevice();
    return device;
}

void throwEmbreeFault() {
    const RTCError error = rtcGetDeviceError(embreeDevice());
    if (error == RTC_ERROR_OUT_OF_MEMORY) {
        throw std::bad_alloc();
    }
    if (error != RTC_ERROR_NONE) {
        throw VeltraniException(
            __FILE__, __LINE__,
            L"Embree could not build the search structure of a mesh (error " + std::to_wstring(error) + L")");
    }
}

std::size_t widestPacket() {
    static const std::size_t width = isNative(RTC_DEVICE_PROPERTY_NATIVE_RAY16_SUPPORTED)  ? 16
                                     : isNative(RTC_DEVICE_PROPERTY_NATIVE_RAY8_SUPPORTED) ? 8
                                                                                           : 4;
    return width;
}

void castPacket(const BoxScene& scene, const LaneRays& rays, LaneMask lanes, std::size_t width,
                PacketVisitor& visitor) {
    PacketQuery query{};
    rtcInitIntersectContext(&query);
    query.flags = RTC_INTERSECT_CONTEXT_FLAG_COHERENT;
    query.visitor = &visitor;
    query.scene = &scene;
    query.largest = &rays.largest;
    NarrowRays narrowRays;
    narrow(rays, scene.units, narrowRays);
    if (width == 16) {
        castInParts<RTCRayHit16, 16>(query, narrowRays, lanes, rtcIntersect16);
    } else if (width == 8) {
        castInParts<RTCRayHit8, 8>(query, narrowRays, lanes, rtcIntersect8);
    } else {
        castInParts<RTCRayHit4, 4>(query, narrowRays, lanes, rtcIntersect4);
    }
}

void visitAlongPacket(const RTCIntersectFunctionNArguments* arguments) {
    const PacketQuery& query = *static_cast<const PacketQuery*>(arguments->context);
    const LaneMask lanes = validRays(arguments->valid, arguments->N) << query.firstLane;
    const LaneMask nearer = visitBox(
        *query.scene, arguments->primID, [&](std::uint32_t triangle) { return query.visitor->visit(triangle, lanes); },
        [](LaneMask first, LaneMask second) { return first | second; });
    const Lanes& reach = query.visitor->reach();
    forEachLane(nearer, [&](std::size_t lane) {
        float& end = query.end[lane - query.firstLane];
        end = std::min(end, query.scene->units.reach(reach[lane], (*query.largest)[lane]));
    });
}

}  // namespace Veltrani::KelvoScreenDetail
