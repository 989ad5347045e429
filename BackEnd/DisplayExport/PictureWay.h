#pragma once

#include "Common/Point.h"

#include <memory>
#include <optional>
#include <span>
#include <string>

class ScreenGeometry;
class TargetLocator;

namespace Veltrani::DisplayExport {

/// Where the light of a place of a picture arrives.
struct Arrival {
    Point<double, 3> point;    ///< on the screen; world frame, native units
    Point<double, 3> leaving;  ///< the direction in which its ray leaves where it starts; zero without rays
    Point<double, 2> screen;   ///< (s, t), without rays
    bool arrives = false;
};

/// The way of a channel's light from its picture to the screen.
class PictureWay {
public:
    virtual ~PictureWay();
    PictureWay(const PictureWay&) = delete;
    PictureWay& operator=(const PictureWay&) = delete;

    /// By the path of the kind of the locator; null for a kind of which nothing is known.
    /// @param locator not null
    /// @param surface not null; the current screen
    [[nodiscard]] static std::unique_ptr<const PictureWay> of(const std::shared_ptr<const TargetLocator>& locator,
                                                              const std::shared_ptr<const ScreenGeometry>& surface);

    /// @param arrivals as long as `picture`
    virtual void follow(std::span<const Point<double, 2>> picture, std::span<Arrival> arrivals) const = 0;

    /// Onto the screen, or onto what continues it beyond its edge.
    [[nodiscard]] virtual Arrival continued(const Point<double, 2>& picture) const = 0;

    /// The only eye that sees the picture, in a mirror; none without a mirror.
    [[nodiscard]] virtual std::optional<Point<double, 3>> eyeOfMirror() const { return std::nullopt; }
    /// Where that eye sees what arrived; world axes. Of meaning with a mirror alone.
    [[nodiscard]] virtual Point<double, 3> directionInMirror(const Arrival& arrival) const { return arrival.leaving; }

    /// Whether places are found by the 2D coordinates of the screen.
    [[nodiscard]] virtual bool goesThroughScreenCoordinates() const { return false; }

protected:
    PictureWay() = default;
};

}  // namespace Veltrani::DisplayExport
