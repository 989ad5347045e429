#pragma once

#include "Common/Point.h"
#include "KelvoScreen/detail/Lanes.h"

#include <embree3/rtcore.h>

#include <cstddef>
#include <cstdint>
#include <vector>

// Scenes of boxes in Embree: their units, the device of the process, and the casting of packets of rays.
namespace Veltrani::KelvoScreenDetail {

/// How places and lengths are turned into those of a search structure in single precision: relative to the centre of
/// all triangles, in units of half the longest side of their box. No coordinate inside the box exceeds 1.
struct IndexUnits {
    /// Units by which rays start before their origin and reach past their end: the boxes are enlarged along the ray as
    /// well.
    static constexpr double RAY_MARGIN = 1e-5;

    Point<double, 3> centre;
    double perLength = 1;

    /// Evaluated in this order nothing overflows: a position inside the box is a length like that of the box.
    [[nodiscard]] float reach(double t, double lengthPerT) const {
        return static_cast<float>(t * lengthPerT * perLength + 2 * RAY_MARGIN);
    }
};

/// Returns the one Embree device of the process, made on first use.
///
/// It runs on the caller's thread alone (`threads=1`; otherwise Embree starts threads of its own), and it is
/// intentionally never released: releasing a device starts one more thread, and scenes may outlive every static object.
/// Throws `VeltraniException` when Embree cannot be started.
[[nodiscard]] RTCDevice embreeDevice();

/// Throws what the device reports since the last call: `std::bad_alloc` when memory ran out, else `VeltraniException`.
void throwEmbreeFault();

/// Rays side by side, as a search structure needs them. Lanes that do not take part hold anything finite.
struct LaneRays {
    LanePoints origin{};
    LanePoints heading{};  ///< the direction divided by its largest component
    Lanes largest{};       ///< that component: length per t along each ray
    Lanes end{};           ///< t up to which triangles matter at first
};

/// Receives the triangles that a packet of rays may meet.
class PacketVisitor {
public:
    /// Tests one triangle with some of the lanes. Returns those for which it brought the reach nearer.
    virtual LaneMask visit(std::uint32_t triangle, LaneMask lanes) = 0;
    /// How far along each ray, in units of its direction, triangles still matter.
    [[nodiscard]] virtual const Lanes& reach() const = 0;

protected:
    ~PacketVisitor() = default;
};

/// A scene of boxes, each under the number of the lowest triangle in it; further boxes of a triangle follow behind.
struct BoxScene {
    RTCScene scene = nullptr;
    /// States for each triangle whether the next one is in its box as well. (A bit each, which stays in the cache.)
    const std::vector<bool>& isPaired;
    /// The triangles of the further boxes.
    const std::vector<std::uint32_t>& furtherOf;
    const IndexUnits& units;
};

/// Calls `visit` for each triangle in a box of a scene; returns its last result, combined by `combine` with the first
/// where there are two.
template <class Visit, class Combine>
auto visitBox(const BoxScene& scene, std::uint32_t box, const Visit& visit, const Combine& combine) {
    const std::size_t count = scene.isPaired.size();
    if (box >= count) {
        return visit(scene.furtherOf[box - count]);
    }
    const auto first = visit(box);
    return scene.isPaired[box] ? combine(first, visit(box + 1)) : first;
}

/// How many rays Embree takes at once on this processor: 4, 8 or 16.
[[nodiscard]] std::size_t widestPacket();

/// Visits every triangle that one of the lanes may meet, roughly nearest first.
/// @param width how many rays are passed to Embree at once: not more than `widestPacket`
void castPacket(const BoxScene& scene, const LaneRays& rays, LaneMask lanes, std::size_t width, PacketVisitor& visitor);

/// The part of the intersection call-back of such a scene for packets.
void visitAlongPacket(const RTCIntersectFunctionNArguments* arguments);

}  // namespace Veltrani::KelvoScreenDetail
