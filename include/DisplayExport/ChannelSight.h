#pragma once

#include "Common/Point.h"
#include "DisplayReport/channels/ChannelChoice.h"

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

class XMLConfigManager;

namespace Veltrani::DisplayExport {

class PictureWay;
struct Arrival;

/// What a place of a channel's picture is seen as.
struct SeenPlace {
    Point<double, 3> point;      ///< on the screen; world frame, native units; zero without `isSeen`
    Point<double, 3> direction;  ///< from the eye to what is seen, world axes, of any length; zero without `isSeen`
    Point<double, 2> screen;     ///< (s, t), the screen's 2D coordinates, where `hasScreen`
    bool hasScreen = false;      ///< whether the picture is addressed by the 2D coordinates of the screen
    bool isSeen = false;         ///< whether the light of the place arrives on the screen
};

/// From the places of a channel's picture to what an eye sees there, each kind of display by the way of its own
/// addressing: a screen area or a map file by way of the 2D coordinates of the screen, any other as the ray that leaves
/// the projector or the eye there. Picture points are normalised, (0, 0) the bottom left corner.
///
/// On a display with a mirror the direction is the one in which the eye sees the place in the mirror; the point is
/// where the light arrives on the screen behind it. Such a picture is seen from the eye of its own alone.
///
/// A query uses room that the sight keeps: not safe from two threads at once.
class ChannelSight {
public:
    /// Build the screen first.
    ///
    /// Throws `VeltraniException`, naming the channel and what it lacks, without a screen, without a locator, for a
    /// screen without 2D coordinates where the channel needs these, and for an eye other than its own on a display with
    /// a mirror.
    /// @param config not owned, must outlive the sight
    /// @param eye world frame, native units; none: the eye point of the screen, on a display with a mirror the eye of
    /// the channel
    /// @param pulse called now and then by every query, whatever asks; what it throws ends the query; may be empty
    ChannelSight(const XMLConfigManager& config, const DisplayReport::ChannelChoice& channel,
                 const std::optional<Point<double, 3>>& eye = std::nullopt, std::function<void()> pulse = {});
    ~ChannelSight();
    ChannelSight(ChannelSight&&) noexcept;

    [[nodiscard]] const DisplayReport::ChannelChoice& channel() const { return m_channel; }
    /// World frame, native units.
    [[nodiscard]] const Point<double, 3>& eye() const { return m_eye; }
    /// Whether the direction is one in a mirror, so that it does not lead from the eye to the point.
    [[nodiscard]] bool isInMirror() const { return m_isInMirror; }
    /// Whether `SeenPlace::screen` is known.
    [[nodiscard]] bool hasScreenCoordinates() const { return m_hasScreenCoordinates; }

    /// Many places at once, which is much faster than one by one.
    /// @param seen as long as `picture`
    void see(std::span<const Point<double, 2>> picture, std::span<SeenPlace> seen) const;

    /// A place whose light misses the screen, as it were if the screen went on beyond its edge; with `isSeen`, if it
    /// has a continuation there. For the nodes of meshes around what is lit.
    [[nodiscard]] SeenPlace continued(const Point<double, 2>& picture) const;

    /// The mean of the directions, each of length one, of the places of the picture that are seen; none when there is
    /// none, or when they cancel out.
    [[nodiscard]] std::optional<Point<double, 3>> meanDirection() const;

private:
    void seeAs(const Arrival& arrival, SeenPlace& seen) const;

    DisplayReport::ChannelChoice m_channel;
    std::function<void()> m_pulse;
    std::unique_ptr<const PictureWay> m_way;
    Point<double, 3> m_eye;
    bool m_isInMirror;
    bool m_hasScreenCoordinates;
    mutable std::vector<Arrival> m_arrivals;  ///< room that is used again
};

}  // namespace Veltrani::DisplayExport
