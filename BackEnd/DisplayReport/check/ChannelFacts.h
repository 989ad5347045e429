#pragma once

#include "Common/Point.h"
#include "DisplayReport/coverage/ChannelLight.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

class ProjectorConfig;
class ProjectionModel;
class ScreenGeometry;
class TargetLocator;
class XMLConfigManager;
struct DisplayKind;

namespace Veltrani::DisplayReport {

/// A direction in words and angles: azimuth to the right of forward and elevation above the horizon, radians.
struct Heading {
    double azimuth = 0;
    double elevation = 0;

    /// Of a vector of any length above zero, world frame.
    [[nodiscard]] static Heading of(const Point<double, 3>& direction);
    /// The turn from another heading to this one, within half a turn to either side; radians, to the right.
    [[nodiscard]] double rightOf(const Heading& other) const;
};

/// Where a channel looks: its rays leave one point through a frustum or a lens.
struct ChannelView {
    Point<double, 3> from;    ///< world frame; beside the mirror for a display that has one
    Point<double, 3> middle;  ///< the ray of the picture's middle; world axes, of length 1
    Point<double, 3> axis;    ///< forward, by the orientation; world axes, of length 1
    Heading heading;          ///< of the axis
    double roll = 0;          ///< of the picture about the axis, its right side down; radians
    double wide = 0;          ///< field of view, radians
    double high = 0;
    bool hasLens = false;  ///< a projection model, not the frustum, makes the rays
};

/// What the rules need to know of one channel, calculated once.
class ChannelFacts {
public:
    /// @param kind null where the display has no kind that is known; then only the entry itself is known
    ChannelFacts(const XMLConfigManager& config, const DisplayKind* kind, const ProjectorConfig& projector);

    /// Follows the lines of sight of a lattice over the picture to the screen.
    /// What the surface throws makes a channel without light.
    void measure(const std::shared_ptr<const ScreenGeometry>& surface);

    [[nodiscard]] const ProjectorConfig& projector() const { return *m_projector; }
    [[nodiscard]] const std::string& name() const { return m_name; }
    /// "channel Left".
    [[nodiscard]] std::string where() const { return "channel " + m_name; }
    /// The rules that its entry allows.
    [[nodiscard]] const std::string& allowed() const { return m_allowed; }
    /// Null where it cannot be built: that is a fault of its own.
    [[nodiscard]] const std::shared_ptr<const TargetLocator>& locator() const { return m_locator; }
    /// Null for a channel that is described by an area or a map.
    [[nodiscard]] const ChannelView* view() const { return m_hasView ? &m_view : nullptr; }
    /// Null for a channel whose rays no projection model makes; lives as long as the locator.
    [[nodiscard]] const ProjectionModel* lens() const;
    /// Where the axis of its lens leaves the picture, normalised; it may lie beside the picture. Nothing without a
    /// lens.
    [[nodiscard]] std::optional<Point<double, 2>> axisInPicture() const;
    /// Whether it states a projector that its rays start from, not an eye.
    [[nodiscard]] bool statesProjector() const { return m_statesProjector; }
    /// Null before `measure`, and for a channel without a light that is known.
    [[nodiscard]] const ChannelLight* light() const { return m_light.get(); }
    /// The part of the picture that lands on the screen; 0 before `measure`.
    [[nodiscard]] double landed() const { return m_landed; }
    /// Where the lines of sight of the lattice land, those that do.
    [[nodiscard]] const std::vector<Point<double, 3>>& landings() const { return m_landings; }
    /// The middle of these; only where there are any.
    [[nodiscard]] Point<double, 3> middleOfLight() const;
    /// How far these spread: the root of their mean squared distance from the middle; a rectangle has 0.29 of its
    /// diagonal. Native units.
    [[nodiscard]] double spreadOfLight() const;
    /// Native units from the projector to where the middle of the picture lands; 0 where it does not, and for channels
    /// that state no projector.
    [[nodiscard]] double throwDistance() const { return m_throw; }

private:
    void look(const DisplayKind& kind, const XMLConfigManager& config);
    /// The ray of a picture point, of length 1; the axis where the lens refuses it.
    [[nodiscard]] Point<double, 3> rayOf(const ProjectionModel* lens, const Point<double, 2>& picture) const;
    /// How far a lens sees from its picture's middle towards a point at the edge: radians.
    [[nodiscard]] double reachOf(const ProjectionModel& lens, const Point<double, 2>& edge) const;

    const ProjectorConfig* m_projector;  ///< not owned, never null
    std::string m_name;
    std::string m_allowed;
    std::shared_ptr<const TargetLocator> m_locator;
    std::shared_ptr<const ChannelLight> m_light;
    bool m_hasView = false;
    bool m_statesProjector = false;
    ChannelView m_view;
    std::vector<Point<double, 3>> m_landings;
    double m_landed = 0;
    double m_throw = 0;
};

}  // namespace Veltrani::DisplayReport
