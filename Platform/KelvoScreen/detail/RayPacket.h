#pragma once

#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/TriangleMesh.h"
#include "KelvoScreen/detail/Box.h"
#include "KelvoScreen/detail/BoxScene.h"
#include "KelvoScreen/detail/Lanes.h"
#include "KelvoScreen/detail/TriangleMath.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace Veltrani::KelvoScreenDetail {

/// What a packet of rays needs to know of a mesh.
struct PacketTarget {
    const TriangleMesh& mesh;
    const TriangleShapes& shapes;
    Box box;                     ///< around all triangles
    double clipMargin = 0;       ///< length by which the box is enlarged on all sides before rays are clipped to it
    double largestRounding = 0;  ///< rays whose coordinates are rounded by more than this length are refused
    double largestSpread = 0;    ///< rays that are further apart than this length where they leave the box are refused
    double largestCoordinate = 0;  ///< of the box
};

/// Which rays of a list stand in the lanes of a packet: `columns` neighbours of each of a few rows, one row after the
/// other, from ray `first` on.
struct PacketPlaces {
    std::size_t first = 0;
    std::size_t columns = 1;
    std::size_t rows = 1;
    std::size_t rowLength = 0;  ///< rays of the list from one row to the next

    [[nodiscard]] std::size_t count() const { return columns * rows; }
    /// Calls `action(lane, place)` for each lane, with the place of its ray in the list.
    template <class Action>
    void forEach(const Action& action) const {
        std::size_t lane = 0;
        for (std::size_t row = 0; row < rows; ++row) {
            for (std::size_t column = 0; column < columns; ++column) {
                action(lane++, first + row * rowLength + column);
            }
        }
    }
};

/// Up to sixteen rays, and the nearest hit of each so far.
///
/// Every ray gets the result of a single search, to the last bit: the arithmetic is that of `Box::clip`, of `RayProbe`
/// and of the collector of single hits, operation by operation, four rays at a time. What is rare, a ray that touches
/// an edge or a corner or sees no more of a triangle than a needle, is left to `RayProbe` itself.
///
/// Rays are refused, to be cast one by one, when they are unusual (parallel to an axis, extremely long or short, not
/// finite, from far away), when they run most along another axis than the first one, and all of them when they have so
/// little in common that a packet would cost time.
class RayPacket final : public PacketVisitor {
public:
    /// An empty packet. Refers to the target.
    explicit RayPacket(const PacketTarget& target) : m_target(target) {}

    /// Takes between one and `LANES` rays in place of those before; ray i is in lane i.
    void take(std::span<const Ray> rays) { take(rays, {0, rays.size()}); }
    /// As above, some rays of a list.
    void take(std::span<const Ray> rays, const PacketPlaces& places);

    /// Lanes of rays that must be cast one by one.
    [[nodiscard]] LaneMask refused() const { return m_refused; }
    /// Lanes of rays that come near the mesh; those in neither mask miss it.
    [[nodiscard]] LaneMask active() const { return m_active; }
    /// Returns the rays, from where they come near the mesh.
    [[nodiscard]] const LaneRays& rays() const { return m_rays; }

    LaneMask visit(std::uint32_t triangle, LaneMask lanes) override;
    [[nodiscard]] const Lanes& reach() const override { return m_reach; }

    /// Writes the results of all lanes that were not refused. `hits` is as long as the list that the rays are from.
    void finish(std::span<SurfaceHit> hits);

private:
    struct Target;
    struct Flat;

    /// What follows from the triangles that were hit.
    struct Completion {
        LanePoints point{}, normal{};
        Lanes t{};
        Lanes along{};  ///< the direction of the ray along the normal: its sign is the side
    };

    /// The rays as given; lanes without one repeat the last.
    using GivenRays = std::array<const Ray*, LANES>;
    [[nodiscard]] GivenRays given(std::span<const Ray> rays) const;
    /// Rays of several rows are further apart for as little in common.
    [[nodiscard]] bool isTooWide() const;
    void clip(const GivenRays& rays);
    void chooseAxis();
    void fillInactive();
    /// How far the rays are from the first one where they begin and where they leave the box: the largest component.
    [[nodiscard]] double spread() const;
    void aim();
    [[nodiscard]] LaneMask findPossible(const Target& target, LaneMask lanes) const;
    LaneMask keepNearer(const Target& target, LaneMask lanes, LaneMask& touching);
    bool touch(const Target& target, std::size_t lane);
    [[nodiscard]] LaneMask metLanes() const;
    void complete(LaneMask met);
    void completeNeedle(std::size_t lane);

    const PacketTarget& m_target;
    PacketPlaces m_places;
    LaneMask m_refused = 0;
    LaneMask m_active = 0;
    std::size_t m_along = 0;       ///< the axis along which the rays run most
    std::size_t m_x = 1, m_y = 2;  ///< the two across
    LanePoints m_direction{};
    LaneRays m_rays{};
    Lanes m_heading2{};         ///< square of the heading
    LanePoints m_exit{};        ///< where each ray leaves the box
    Lanes m_usable{}, m_met{};  ///< below zero: the ray may be taken; it meets the box
    Lanes m_axis{};
    Lanes m_rounding{};  ///< length that rounding the coordinates of ray and mesh can make
    Lanes m_earliest{};  ///< t before which a hit is behind the origin
    Lanes m_skipped{};   ///< t of the origin of `m_rays` on the ray as given
    Lanes m_shearX{}, m_shearY{}, m_perDepth{};
    Lanes m_reach{};     ///< t of the nearest hit, as are the following
    Lanes m_triangle{};  ///< -1 while there is none
    Lanes m_weight1{}, m_weight2{};
    Completion m_completion;
};

}  // namespace Veltrani::KelvoScreenDetail
