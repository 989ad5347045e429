#pragma once

#include "Common/Point.h"
#include "DisplayReport/basics/Extent.h"
#include "DisplayReport/coverage/SurfacePoint.h"

#include <memory>
#include <span>
#include <vector>

class ScreenGeometry;
class TargetLocator;

namespace Veltrani::DisplayReport {

/// The light of one channel: where its picture lands on the screen, and which points of the screen it reaches.
///
/// Picture points are normalised, (0, 0) the bottom left corner and (1, 1) the top right one. Light stops at the first
/// surface that it meets, from whichever side. The two ways belong together: a point that a picture point lands on is
/// lit.
class ChannelLight {
public:
    /// Where a picture point lands.
    struct Landing {
        SurfacePoint on;  ///< as it was on a miss
        bool hits = false;
        int side = 0;  ///< of the surface, as `SurfaceHit::side`; 0 where light is not known to come from a side
    };

    /// How a channel stands to a point of the surface.
    struct Reach {
        Point<double, 2> picture;  ///< as by `findPicture`; (0, 0) when there is none
        bool hasPicture = false;
        /// Nothing stands in the way. False, too, for points further than `NEAR_PICTURE` outside of the picture, which
        /// are not examined.
        bool inSight = false;
        int side = 0;  ///< as that of a landing
    };

    /// A part of the picture.
    static constexpr double NEAR_PICTURE = 0.125;

    virtual ~ChannelLight();
    ChannelLight(const ChannelLight&) = delete;
    ChannelLight& operator=(const ChannelLight&) = delete;

    /// Many picture points at once. What the surface throws passes through: `VeltraniException` where a picture is
    /// addressed by 2D coordinates that the surface does not have.
    /// @param landings as long as `picture`
    virtual void land(std::span<const Point<double, 2>> picture, std::span<Landing> landings) const = 0;

    /// True when the channel lights a point of the surface, the edge of its picture included.
    [[nodiscard]] virtual bool lights(const SurfacePoint& point) const = 0;

    /// The picture point that a point of the surface belongs to, whether or not something stands in the way. It may lie
    /// outside of the picture. False, and `picture` as it was, when there is none.
    virtual bool findPicture(const SurfacePoint& point, Point<double, 2>& picture) const = 0;

    /// Many points of the surface at once.
    /// @param reaches as long as `points`
    virtual void reach(std::span<const SurfacePoint> points, std::span<Reach> reaches) const;

    /// One picture point.
    [[nodiscard]] Landing landingOf(const Point<double, 2>& picture) const;

    /// Whether a picture point is in the picture or at most `NEAR_PICTURE` outside of it; false for NaN.
    [[nodiscard]] static bool isNearPicture(const Point<double, 2>& picture);

    /// The light of a channel whose targets this locator places, by the path of its kind (`LocatorKind`). Throws
    /// `VeltraniException` for one of which nothing is known, and what reading a map file throws.
    /// @param locator not null
    /// @param surface not null; the current screen
    [[nodiscard]] static std::unique_ptr<ChannelLight> of(const std::shared_ptr<const TargetLocator>& locator,
                                                          const std::shared_ptr<const ScreenGeometry>& surface);

protected:
    ChannelLight() = default;

    /// Whether nothing stands between the channel and a point of the surface that belongs to a picture point. Here:
    /// what has a picture point is in sight.
    [[nodiscard]] virtual bool isReached(const SurfacePoint& point) const;

    /// False for NaN.
    [[nodiscard]] static bool isInPicture(const Point<double, 2>& picture);
};

/// The light of all channels of a display.
using ChannelLights = std::vector<std::unique_ptr<ChannelLight>>;

/// What a lattice over the picture of a channel lands on: where its light is to be looked for closely, and how closely.
struct LandingExtent {
    Extent box;         ///< empty when no point lands, which happens when the picture is much larger than the screen
    double narrow = 0;  ///< native units: the width of the picture on the screen or its height, whichever is less; 0
                        ///< when too little lands to determine it

    /// Throws what `ChannelLight::land` throws.
    [[nodiscard]] static LandingExtent of(const ChannelLight& light);
};

}  // namespace Veltrani::DisplayReport
