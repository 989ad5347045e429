#include "DisplayReport/scene/SceneMarks.h"

#include "Common/Finite.h"
#include "Common/Matrix.h"
#include "Common/Utf8.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/TargetLocatorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayReport/basics/NumberText.h"
#include "DisplayReport/channels/ScreenArea.h"
#include "DisplayReport/scene/DisplayScene.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/DisplayKinds.h"
#include "ScreenManager/MirrorFrame.h"
#include "ScreenManager/ScreenManager.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

using P3 = Point<double, 3>;
using Polyline = std::vector<P3>;
using Stroke = SceneMark::Stroke;

const P3 RIGHT{1, 0, 0};
const P3 FORWARD{0, 1, 0};
const P3 UP{0, 0, 1};

constexpr Colour RIGHT_COLOUR{176, 32, 32};
constexpr Colour FORWARD_COLOUR{24, 120, 48};
constexpr Colour UP_COLOUR{32, 64, 176};
constexpr Colour SCREEN_COLOUR{70, 50, 110};
constexpr Colour MIRROR_COLOUR{110, 70, 20};
constexpr Colour TURN_COLOUR{160, 20, 110};
constexpr Colour BLACK{0, 0, 0};
constexpr double DARKER = 0.3;

/// Pieces of an arc, and of an edge of the screen.
constexpr int PIECES = 24;
/// Length of the axes of the world and of a mirror, as a share of the size of the screen.
constexpr double AXIS_SHARE = 0.14;
/// Shares of the way from a channel's apex to the screen.
constexpr double VIEW_SHARE = 0.9;
constexpr double EDGE_SHARE = 0.7;
constexpr double ANGLE_SHARE = 0.62;
constexpr double TURN_SHARE = 0.36;
constexpr double ROLL_SHARE = 0.46;
constexpr double ROLL_RADIUS = 0.13;
/// The turns of channels that share an eye lie beside each other: each is that much nearer to it.
constexpr double NESTING = 0.05;
constexpr std::size_t NESTED = 5;
/// What the arc of a turn by nothing shows: the positive way, radians.
constexpr double SENSE = 15 * std::numbers::pi / 180;
/// How far the (u, v) of a picture are drawn in from its edges, so that they lie beside those of the screen.
constexpr double INSET = 0.06;

std::string degrees(double radians) {
    return roundedText(radians * 180 / std::numbers::pi);
}

/// "left -30", "right +10".
std::string signedAngle(const std::string& name, double radians) {
    const std::string text = degrees(radians);
    return name + (radians > 0 ? " +" : " ") + text;
}

Polyline moved(Polyline line, const P3& towards, double share) {
    for (P3& point : line) {
        point += (towards - point) * share;
    }
    return line;
}

P3 middleOf(const Polyline& points) {
    P3 sum;
    for (const P3& point : points) {
        sum += point;
    }
    return sum * (1 / static_cast<double>(points.size()));
}

/// Marks are left out where they would lead to no place.
void add(DisplayScene& scene, SceneMark mark) {
    if (mark.line.size() > 1 && std::all_of(mark.line.begin(), mark.line.end(), isFinite<3>) &&
        isFinite(mark.labelPlace)) {
        scene.marks.push_back(std::move(mark));
    }
}

void addArrow(DisplayScene& scene, const P3& from, const P3& to, const std::string& label, const Colour& colour) {
    add(scene, {{from, to}, label, to, colour, true});
}

void addPaleLine(DisplayScene& scene, const P3& from, const P3& to, const Colour& colour) {
    add(scene, {{from, to}, "", to, colour, false, Stroke::PALE});
}

void addFrame(DisplayScene& scene, const P3& origin, const Matrix<double, 3>& turn, const std::string& prefix) {
    const double length = AXIS_SHARE * norm(scene.core().size());
    addArrow(scene, origin, origin + turn * RIGHT * length, prefix + "x", RIGHT_COLOUR);
    addArrow(scene, origin, origin + turn * FORWARD * length, prefix + "y", FORWARD_COLOUR);
    addArrow(scene, origin, origin + turn * UP * length, prefix + "z", UP_COLOUR);
}

void addMirror(DisplayScene& scene, const TargetLocatorConfig& targets) {
    const MirrorFrame frame(targets);
    addFrame(scene, frame.centre(), frame.rotation(), "mirror +");
    const P3 eye = targets.getTargetPosition();
    addArrow(scene, frame.centre(), frame.toWorld(eye),
             "EyePoint x " + roundedText(eye[0]) + " y " + roundedText(eye[1]) + " z " + roundedText(eye[2]),
             MIRROR_COLOUR);
    const double radius = targets.getMirrorRadius();
    addPaleLine(scene, frame.centre(), frame.centre() + frame.rotation() * FORWARD * radius, MIRROR_COLOUR);
    scene.marks.back().label = "mirror radius " + roundedText(radius);
}

/// A line of constant s or t, from 0 to 1.
Polyline edgeOf(const ScreenGeometry& screen, const Point<double, 2>& end) {
    Polyline line;
    for (int i = 0; i <= PIECES; ++i) {
        P3 point;
        if (screen.mapInto3D(end * (static_cast<double>(i) / PIECES), point, false)) {
            line.push_back(point);
        }
    }
    return line;
}

/// Two edges of something, from where its two coordinates are 0.
void addCoordinates(DisplayScene& scene, const std::array<Polyline, 2>& edges, const std::array<std::string, 2>& names,
                    const Colour& colour) {
    for (std::size_t i = 0; i < edges.size(); ++i) {
        if (!edges[i].empty()) {
            add(scene, {edges[i], names[i] + " = 1", edges[i].back(), colour, true});
        }
    }
    if (edges[0].size() > 1) {
        const std::string both = names[0] + " = " + names[1] + " = 0";
        add(scene, {{edges[0][0], edges[0][1]}, both, edges[0][0], colour});
    }
}

void addScreen(DisplayScene& scene) {
    const auto screen = ScreenManager::getInstance()->getScreenGeometry();
    if (screen && screen->isParameterised()) {
        addCoordinates(scene, {edgeOf(*screen, {1, 0}), edgeOf(*screen, {0, 1})}, {"s", "t"}, SCREEN_COLOUR);
    }
}

/// The targets of an edge of the picture from (0, 0) on.
Polyline edgeOf(const std::vector<GridTarget>& grid, std::size_t along) {
    std::vector<std::pair<double, P3>> places;
    for (const GridTarget& target : grid) {
        if (target.picture[1 - along] == 0) {
            places.emplace_back(target.picture[along], target.point);
        }
    }
    std::sort(places.begin(), places.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    Polyline line;
    for (const auto& [place, point] : places) {
        line.push_back(point);
    }
    return line;
}

/// The marks of one channel that is described by rays.
class ChannelMarks {
public:
    /// @param number of the channel, from 0
    /// @param base what the frame of its angles is turned by
    ChannelMarks(DisplayScene& scene, std::size_t number, const ProjectorConfig& projector,
                 const Matrix<double, 3>& base, bool isAlone)
        : m_scene(scene),
          m_projector(projector),
          m_base(base),
          m_colour(mixed(scene.channels[number].colour, BLACK, DARKER)),
          m_turnColour(isAlone ? TURN_COLOUR : m_colour),
          m_apex(scene.channels[number].frustum->apex),
          m_reach(reachOf(*scene.channels[number].frustum)),
          m_turn(m_reach * (TURN_SHARE - NESTING * static_cast<double>(number % NESTED))),
          m_showsZero(isAlone) {}

    void addView(const std::string& name) {
        addArrow(m_scene, m_apex, m_apex + forward() * (VIEW_SHARE * m_reach), "view of " + name, m_colour);
    }

    /// z from the direction +y at the apex, x from the horizon there, y from upright.
    void addTurns() {
        const auto [z, x, y] =
            std::array{m_projector.getOrientationZ(), m_projector.getOrientationX(), m_projector.getOrientationY()};
        addTurn(
            "z", z, [this](double angle) { return m_apex + turned(angle, 0, 0) * FORWARD * m_turn; }, m_apex);
        addTurn(
            "x", x, [this, z = z](double angle) { return m_apex + turned(z, angle, 0) * FORWARD * m_turn; }, m_apex);
        const P3 middle = m_apex + forward() * (ROLL_SHARE * m_reach);
        addTurn(
            "y", y,
            [&, z = z, x = x](double angle) { return middle + turned(z, x, angle) * UP * (ROLL_RADIUS * m_reach); },
            middle);
    }

    void addFrustum() {
        addEdge("left", m_projector.getFrustumLeft(), RIGHT);
        addEdge("right", m_projector.getFrustumRight(), RIGHT);
        addEdge("bottom", m_projector.getFrustumBottom(), UP);
        addEdge("top", m_projector.getFrustumTop(), UP);
    }

private:
    /// To the nearest corner of the picture on the screen or on the mirror.
    static double reachOf(const ChannelFrustum& frustum) {
        double reach = std::numeric_limits<double>::infinity();
        for (const Polyline& edge : frustum.edges) {
            reach = std::min(reach, norm(edge[1] - edge[0]));
        }
        return reach;
    }

    [[nodiscard]] Matrix<double, 3> turned(double z, double x, double y) const { return m_base * rotationZXY(z, x, y); }
    [[nodiscard]] Matrix<double, 3> whole() const {
        return turned(m_projector.getOrientationZ(), m_projector.getOrientationX(), m_projector.getOrientationY());
    }
    [[nodiscard]] P3 forward() const { return whole() * FORWARD; }

    /// An arc with its label in its middle.
    template <class PointAt>
    void addArc(const std::string& label, double angle, const Colour& colour, Stroke stroke, PointAt&& pointAt) {
        Polyline arc;
        for (int i = 0; i <= PIECES; ++i) {
            arc.push_back(pointAt(angle * i / PIECES));
        }
        add(m_scene, {arc, label, arc[PIECES / 2], colour, true, stroke});
    }

    template <class PointAt>
    void addTurn(const std::string& name, double angle, PointAt&& pointAt, const P3& middle) {
        if (angle == 0 && !m_showsZero) {
            return;
        }
        // What the angle is measured from reaches a little beyond the arc.
        constexpr double BEYOND = 1.15;
        addPaleLine(m_scene, middle, middle + (pointAt(0) - middle) * BEYOND, m_turnColour);
        if (angle != 0) {
            addPaleLine(m_scene, middle, middle + (pointAt(angle) - middle) * BEYOND, m_turnColour);
        }
        addArc(signedAngle(name, angle), angle != 0 ? angle : SENSE, m_turnColour,
               angle != 0 ? Stroke::THICK : Stroke::PALE, pointAt);
    }

    /// A line to the middle of an edge of the picture, on the plane through the axis, and its angle from the axis.
    void addEdge(const std::string& name, double angle, const P3& side) {
        const auto at = [&](double part) {
            return m_apex + whole() * (FORWARD * std::cos(part) + side * std::sin(part)) * (ANGLE_SHARE * m_reach);
        };
        const P3 end = m_apex + (at(angle) - m_apex) * (EDGE_SHARE / ANGLE_SHARE);
        add(m_scene, {{m_apex, end}, signedAngle(name, angle), end, m_colour, false, Stroke::THIN});
        if (angle != 0) {
            addArc("", angle, m_colour, Stroke::THIN, at);
        }
    }

    DisplayScene& m_scene;
    const ProjectorConfig& m_projector;
    Matrix<double, 3> m_base;
    Colour m_colour;
    Colour m_turnColour;  ///< a colour of their own, where no other channel has turns
    P3 m_apex;
    double m_reach;
    double m_turn;  ///< radius of the arcs of z and x
    bool m_showsZero;
};

/// A calibration file states the edges of the picture; the frustum of the entry counts for nothing then.
bool hasLensFile(const ProjectorConfig& projector) {
    return projector.getProjectionModelName().find(L':') != std::wstring::npos;
}

std::vector<std::string> factsOf(const ProjectorConfig& projector) {
    std::vector<std::string> facts{"z " + degrees(projector.getOrientationZ()) + "  x " +
                                   degrees(projector.getOrientationX()) + "  y " +
                                   degrees(projector.getOrientationY()) + "  degrees"};
    if (hasLensFile(projector)) {
        facts.emplace_back("edges from the file of its lens");
        return facts;
    }
    facts.push_back("left " + degrees(projector.getFrustumLeft()) + "  right " + degrees(projector.getFrustumRight()));
    facts.push_back("bottom " + degrees(projector.getFrustumBottom()) + "  top " + degrees(projector.getFrustumTop()));
    return facts;
}

std::vector<std::string> factsOf(const ScreenArea& area) {
    if (!area.complete()) {
        return {};
    }
    return {"left " + roundedText(area.left) + "  right " + roundedText(area.right),
            "bottom " + roundedText(area.bottom) + "  top " + roundedText(area.top)};
}

void addPicture(DisplayScene& scene, std::size_t number, bool isOnScreen) {
    const SceneChannel& channel = scene.channels[number];
    std::array<Polyline, 2> edges;
    if (isOnScreen) {
        edges = {edgeOf(channel.targets.grid, 0), edgeOf(channel.targets.grid, 1)};
    } else if (channel.frustum) {
        edges = {channel.frustum->lowerEdge, channel.frustum->leftEdge};
    }
    const Polyline& outline = channel.targets.boundary.empty() ? edges[0] : channel.targets.boundary;
    if (outline.empty()) {
        return;
    }
    const P3 middle = middleOf(outline);
    addCoordinates(scene, {moved(edges[0], middle, INSET), moved(edges[1], middle, INSET)}, {"u", "v"},
                   mixed(channel.colour, BLACK, DARKER));
}

}  // namespace

void MarkCollector::addTo(DisplayScene& scene) const {
    const DisplayKind* const kind = DisplayKind::of(m_config);
    const TargetLocatorConfig* const targets = m_config.getTargetLocatorConfig();
    addFrame(scene, P3(), {}, "+");
    if (kind == nullptr || targets == nullptr) {
        return;
    }
    if (kind->addressedBy == DisplayKind::Addressing::SCREEN_PARAMETERS) {
        addScreen(scene);
    }
    Matrix<double, 3> base;
    if (kind->hasMirror() && scene.mirror) {
        addMirror(scene, *targets);
        base = MirrorFrame(*targets).rotation();
    }
    for (std::size_t i = 0; i < scene.channels.size(); ++i) {
        if (m_only == nullptr || projectorOf(scene.channels[i]) == m_only) {
            addChannel(scene, i, base);
        } else {
            scene.channels[i].frustum.reset();
            scene.channels[i].targets.grid.clear();
        }
    }
}

const ProjectorConfig* MarkCollector::projectorOf(const SceneChannel& channel) const {
    return m_config.getProjectorConfig(fromUtf8(channel.targets.projectorId));
}

void MarkCollector::addChannel(DisplayScene& scene, std::size_t number, const Matrix<double, 3>& base) const {
    SceneChannel& channel = scene.channels[number];
    const ProjectorConfig* const projector = projectorOf(channel);
    if (projector == nullptr) {
        return;
    }
    const bool isOnScreen = DisplayKind::of(m_config)->addressedBy == DisplayKind::Addressing::SCREEN_PARAMETERS;
    channel.facts = isOnScreen ? factsOf(screenAreaOf(*projector)) : factsOf(*projector);
    addPicture(scene, number, isOnScreen);
    if (isOnScreen || !channel.frustum || channel.frustum->edges.empty()) {
        return;
    }
    ChannelMarks marks(scene, number, *projector, base, m_only != nullptr || scene.channels.size() == 1);
    marks.addView(channel.targets.name);
    marks.addTurns();
    if (!hasLensFile(*projector)) {
        marks.addFrustum();
    }
}

}  // namespace Veltrani::DisplayReport
