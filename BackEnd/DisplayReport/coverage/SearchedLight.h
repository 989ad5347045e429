#pragma once

#include "DisplayReport/coverage/ChannelLight.h"
#include "DisplayReport/coverage/PointIndex.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace Veltrani::DisplayReport {

/// The light of a channel that can be followed from its picture to the screen, but not backwards in closed form: by way
/// of a mirror, bent by tables of headings, or laid out in the 2D coordinates of a screen.
///
/// Single places are followed: what reaches the screen from the side that fewer rays reach, which a grid of targets
/// leaves out, is light as well. The way back starts at the nearest point of a lattice over the picture and
/// goes on by Newton's method; a point whose picture point is not found is not lit. Where the picture lies on a spot of
/// the screen twice, one of the two is enough.
class SearchedLight : public ChannelLight {
public:
    /// Returns where the light of a picture point, which may lie outside of the picture, arrives; none where it misses.
    using Way = std::function<std::optional<Point<double, 3>>(const Point<double, 2>& picture)>;

    /// @param arrival on the current screen
    /// @param surface that screen
    SearchedLight(Way arrival, const ScreenGeometry& surface);

    void land(std::span<const Point<double, 2>> picture, std::span<Landing> landings) const override;
    [[nodiscard]] bool lights(const SurfacePoint& point) const override;
    /// A point that no light reaches has none.
    bool findPicture(const SurfacePoint& point, Point<double, 2>& picture) const override;

private:
    /// The landing of a picture point, and how it moves with u and v.
    struct Probe {
        Point<double, 3> place;
        Point<double, 3> alongU;
        Point<double, 3> alongV;
    };

    /// A point of the lattice, where every search starts.
    struct Node {
        Point<double, 2> picture;
        Probe probe;
    };

    /// A step of Newton's method.
    struct Step {
        Point<double, 2> inPicture;
        double rest = 0;  ///< native units: how far away from the place it ends where the screen is flat
    };

    /// When a search may end.
    enum class Aim { SIDE_OF_EDGE, PICTURE_POINT };

    void addLattice();
    /// The picture point of a place, or, where that is enough, one on the same side of the picture's edge.
    [[nodiscard]] std::optional<Point<double, 2>> search(const Point<double, 3>& place, Aim aim) const;
    /// The point of the lattice that lands nearest to a place; null when that is too far away.
    [[nodiscard]] const Node* nearestOfLattice(const Point<double, 3>& place) const;
    [[nodiscard]] std::optional<Probe> probe(const Point<double, 2>& picture) const;
    /// How the landing moves with one step of the picture; from behind where it misses ahead.
    [[nodiscard]] std::optional<Point<double, 3>> slope(const Point<double, 2>& picture, const Point<double, 3>& place,
                                                        const Point<double, 2>& step) const;
    /// Towards a gap; none where the landing stands still.
    [[nodiscard]] static std::optional<Step> stepTo(const Point<double, 3>& gap, const Probe& here);
    /// Goes the step from `picture`, or a part of it; false when none comes nearer to `place`.
    bool approach(const Point<double, 3>& place, Point<double, 2> step, Point<double, 2>& picture, Probe& here) const;

    Way m_arrival;
    std::vector<Node> m_lattice;           ///< those of its points that land on the screen
    std::unique_ptr<PointIndex> m_places;  ///< where they do
    double m_reach = 0;                    ///< native units: no lit point is further away from the lattice
    double m_samePlace;                    ///< native units: nearer points are the same
};

}  // namespace Veltrani::DisplayReport
