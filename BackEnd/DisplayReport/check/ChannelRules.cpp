#include "Common/Utf8.h"
#include "Configuration/IScreenConfig.h"
#include "Configuration/ProjectorConfig.h"
#include "DisplayReport/basics/NumberText.h"
#include "DisplayReport/check/Judgement.h"
#include "DisplayReport/check/RuleText.h"
#include "KelvoControl/CustomPlanarScreenToChannelMap.h"
#include "ScreenManager/CustomPlanarTargetLocator.h"
#include "ScreenManager/DisplayKinds.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace Veltrani::DisplayReport {

namespace {

constexpr double DEGREE = std::numbers::pi / 180.0;

/// Two bounds that belong in an order.
struct Edges {
    const char* element;
    const char* lower;
    const char* upper;
    double from;
    double to;
    bool isAngle;
};

std::string boundText(const Edges& edges, double bound) {
    return edges.isAngle ? degreesText(bound) + " deg" : significantText(bound);
}

bool isStated(double bound) {
    return bound != ProjectorConfig::SCREEN_BOUND_NOT_CONFIGURED;
}

std::vector<Edges> areaEdges(const ProjectorConfig& p) {
    return {{"ScreenArea", "left", "right", p.getScreenLeft(), p.getScreenRight(), false},
            {"ScreenArea", "bottom", "top", p.getScreenBottom(), p.getScreenTop(), false}};
}

/// The edges that the kind of the display uses.
std::vector<Edges> edgesInUse(const DisplayKind& kind, const ChannelFacts& channel) {
    const ProjectorConfig& p = channel.projector();
    std::vector<Edges> edges;
    if (channel.view() != nullptr) {
        edges.push_back({"Frustum", "left", "right", p.getFrustumLeft(), p.getFrustumRight(), true});
        edges.push_back({"Frustum", "bottom", "top", p.getFrustumBottom(), p.getFrustumTop(), true});
    }
    if (kind.source == DisplayKind::Source::SCREEN_AREA) {
        edges = areaEdges(p);
    }
    return edges;
}

bool areExchanged(const Edges& edges) {
    return isStated(edges.from) && isStated(edges.to) && edges.from > edges.to;
}

/// Whether all channels of several have these bounds of their areas exchanged: so are screens lit from behind
/// described, left and right alone, and projectors that hang on their heads, both. Bottom and top alone are exchanged
/// where a program counts downwards, and angles of projectors have no reason to be.
/// @param axis 0 for left and right, 1 for bottom and top
bool areAllExchanged(const DisplayFacts& display, std::size_t axis) {
    return display.kind->source == DisplayKind::Source::SCREEN_AREA && display.channels.size() > 1 &&
           std::all_of(display.channels.begin(), display.channels.end(), [axis](const ChannelFacts& channel) {
               const std::vector<Edges> edges = areaEdges(channel.projector());
               return areExchanged(edges.at(0)) && (axis == 0 || areExchanged(edges.at(1)));
           });
}

void judgeEdges(const ChannelCase& c) {
    const std::vector<Edges> inUse = edgesInUse(*c.display.kind, c.channel);
    for (std::size_t axis = 0; axis < inUse.size(); ++axis) {
        const Edges& edges = inUse[axis];
        if (areExchanged(edges) && !areAllExchanged(c.display, axis)) {
            c.report("edges-exchanged", std::string(edges.element) + " " + edges.lower + " " +
                                            boundText(edges, edges.from) + " lies beyond " + edges.upper + " " +
                                            boundText(edges, edges.to) +
                                            ", which mirrors the picture: exchange the two");
        }
    }
}

void judgeMirroredAreas(const DisplayFacts& display, FindingList& found) {
    if (!areAllExchanged(display, 0)) {
        return;
    }
    const bool isTurned = areAllExchanged(display, 1);
    found.add(Rule::named("mirrored-areas"), "channels", display.allowed,
              std::string("ScreenArea left lies beyond right") + (isTurned ? ", and bottom beyond top," : "") +
                  " in all " + std::to_string(display.channels.size()) + " of them, which " +
                  (isTurned ? "turns every picture by 180 degrees, as projectors that hang on their heads need"
                            : "mirrors every picture, as a screen that is lit from behind needs"));
}

/// Maps of a planar display refuse channels whose rectangle has no extent.
void judgeLayout(const ChannelCase& c) {
    const ProjectorConfig& p = c.projector;
    const bool hasExtent = p.getLayoutXMax() > p.getLayoutXMin() && p.getLayoutYMax() > p.getLayoutYMin();
    if (c.display.kind->layout != DisplayKind::Layout::PLANE || hasExtent) {
        return;
    }
    const bool isStatedAtAll = p.getLayoutXMax() != p.getLayoutXMin() || p.getLayoutYMax() != p.getLayoutYMin();
    c.report("no-layout",
             isStatedAtAll
                 ? "its Layout runs from " + significantText(p.getLayoutXMin()) + " to " +
                       significantText(p.getLayoutXMax()) + " along x and from " + significantText(p.getLayoutYMin()) +
                       " to " + significantText(p.getLayoutYMax()) +
                       " along y, and maps need xMin below xMax and yMin below yMax: exchange or correct them"
                 : "it has no Layout, which maps of this display need: give it one with xMin, xMax, yMin and yMax");
}

/// What a bound that is no part of a screen was probably written in.
std::string areaRemedy(double bound) {
    return std::abs(bound) <= 100.0 ? "write " + significantText(bound / 100.0) + " if this is a percentage"
                                    : "divide pixels by the width or the height of the screen in pixels";
}

void judgeArea(const ChannelCase& c) {
    const Rule& rule = Rule::named("area-off-screen");
    if (c.display.kind->source != DisplayKind::Source::SCREEN_AREA) {
        return;
    }
    for (const Edges& edges : areaEdges(c.projector)) {
        for (const auto& [name, bound] : {std::pair(edges.lower, edges.from), std::pair(edges.upper, edges.to)}) {
            if (isStated(bound) && (bound < rule.least || bound > rule.most)) {
                c.report(rule.name, "ScreenArea " + std::string(name) + " is " + significantText(bound) +
                                        ", and the screen runs from 0 to 1: " + areaRemedy(bound));
            }
        }
    }
}

void judgeOrientation(const ChannelCase& c) {
    const Rule& rule = Rule::named("large-angle");
    const ProjectorConfig& p = c.projector;
    for (const auto& [name, angle] : {std::pair("z", p.getOrientationZ()), std::pair("x", p.getOrientationX()),
                                      std::pair("y", p.getOrientationY())}) {
        if (std::abs(angle) > rule.most * DEGREE * (1 + 1e-9)) {
            c.report(rule.name, "Orientation " + std::string(name) + " is " + degreesText(angle) +
                                    " degrees, more than a turn: write it with angleUnit=\"deg\" if it is in degrees");
        }
    }
}

void judgePosition(const ChannelCase& c) {
    const DisplayFacts& display = c.display;
    // By way of a mirror neither targets nor maps look at the position.
    if (c.channel.view() == nullptr || display.screen == nullptr || display.size <= 0 || display.kind->hasMirror()) {
        return;
    }
    if (display.kind->addressedBy == DisplayKind::Addressing::EYE) {
        const Rule& rule = Rule::named("position-not-eye");
        const double apart = norm(c.projector.getPosition() - display.screen->getEyePoint());
        if (apart > rule.most * display.size) {
            c.report(rule.name, "its Position lies " + lengthText(apart, display.unit) +
                                    " away from the eye point that its picture is seen from: targets do not use it, "
                                    "and maps to the channel are wrong by it; leave Position out, or give the eye "
                                    "point. Channels that are described from their projectors have the target data "
                                    "ProjectorCentric");
        }
        return;
    }
    const Rule& rule = Rule::named("far-from-screen");
    const double away = norm(c.projector.getPosition() - display.middle());
    if (away > rule.most * display.size) {
        c.report(rule.name, "its Position lies " + lengthText(away, display.unit) +
                                " away from the middle of a screen of " + lengthText(display.size, display.unit) +
                                ": check its lengthUnit");
    }
}

/// The map of a channel that has one.
const CustomPlanarScreenToChannelMap* mapOf(const ChannelFacts& channel) {
    const bool hasMap = channel.locator() && LocatorKind::of(*channel.locator()).path == LocatorKind::Path::MAP_FILE;
    return hasMap ? &static_cast<const CustomPlanarTargetLocator&>(*channel.locator()).getTransform() : nullptr;
}

bool mapsAnything(const CustomPlanarScreenToChannelMap& map) {
    // Finer than the nodes of the maps in use; a used cell shows even where it is the only one.
    constexpr int STEPS = 400;
    const Point<double, 2> size = map.pictureSize();
    Point<double, 2> ignored;
    for (int row = 0; row <= STEPS; ++row) {
        for (int column = 0; column <= STEPS; ++column) {
            if (map.mapChannel2DToScreen2D({size[0] * column / STEPS, size[1] * row / STEPS}, ignored)) {
                return true;
            }
        }
    }
    return false;
}

/// How a map turns its picture: above 0 where it mirrors nothing, below 0 where it mirrors all of it.
int handednessOf(const CustomPlanarScreenToChannelMap& map) {
    constexpr int STEPS = 20;
    constexpr double STEP = 1.0 / STEPS;
    const Point<double, 2> size = map.pictureSize();
    const auto screenOf = [&](double u, double v, Point<double, 2>& st) {
        return map.mapChannel2DToScreen2D({size[0] * u, size[1] * v}, st);
    };
    int plain = 0;
    int mirrored = 0;
    for (int row = 0; row < STEPS; ++row) {
        for (int column = 0; column < STEPS; ++column) {
            Point<double, 2> here;
            Point<double, 2> right;
            Point<double, 2> up;
            if (screenOf(column * STEP, row * STEP, here) && screenOf((column + 1) * STEP, row * STEP, right) &&
                screenOf(column * STEP, (row + 1) * STEP, up)) {
                const Point<double, 2> u = right - here;
                const Point<double, 2> v = up - here;
                const double turn = u[0] * v[1] - u[1] * v[0];
                plain += turn > 0 ? 1 : 0;
                mirrored += turn < 0 ? 1 : 0;
            }
        }
    }
    return plain > mirrored ? 1 : (mirrored > plain ? -1 : 0);
}

void judgeMap(const ChannelCase& c) {
    const CustomPlanarScreenToChannelMap* const map = mapOf(c.channel);
    if (map == nullptr) {
        return;
    }
    const std::string file = toUtf8(c.projector.getCustomPlanarFile());
    if (!mapsAnything(*map)) {
        c.report("empty-map",
                 "map " + file + " has no used node: all of them have a brightness below 0; write it anew");
        return;
    }
    judgePixels(c, "map " + file, "made", map->pictureSize());
    if (handednessOf(*map) < 0) {
        c.report("mirrored-map", "map " + file +
                                     " mirrors the picture: s grows to the left, or t downwards; check the columns s "
                                     "and t of the file; projectors behind the screen are allowed by name");
    }
}

/// What the entry states and the kind of the display does not look at.
std::string ignoredValues(const DisplayFacts& display, const ProjectorConfig& p) {
    using Source = DisplayKind::Source;
    const DisplayKind& kind = *display.kind;
    const bool isSeen = kind.addressedBy != DisplayKind::Addressing::SCREEN_PARAMETERS;
    std::string ignored;
    const auto addIf = [&](bool isIgnored, const char* element) {
        if (isIgnored) {
            ignored += (ignored.empty() ? "" : ", ") + std::string(element);
        }
    };
    const std::array area{p.getScreenLeft(), p.getScreenRight(), p.getScreenBottom(), p.getScreenTop()};
    const std::array angles{p.getFrustumLeft(), p.getFrustumRight(), p.getFrustumBottom(), p.getFrustumTop()};
    const auto isTurn = [](double angle) { return angle != 0; };
    // Where it is not stated, the position is the eye point.
    const bool hasPosition = !(p.getPosition() == Point<double, 3>()) && display.screen != nullptr &&
                             !(p.getPosition() == display.screen->getEyePoint());
    addIf(kind.source != Source::SCREEN_AREA && std::any_of(area.begin(), area.end(), isStated), "ScreenArea");
    addIf(kind.layout != DisplayKind::Layout::PLANE &&
              (p.getLayoutXMin() != p.getLayoutXMax() || p.getLayoutYMin() != p.getLayoutYMax()),
          "Layout");
    addIf(kind.source != Source::MAP_FILE && !p.getCustomPlanarFile().empty(), "CustomPlanarMap");
    addIf(kind.source != Source::MODEL_OR_FRUSTUM && !p.getProjectionModelName().empty(), "ProjectionModel");
    addIf(!isSeen && (isTurn(p.getOrientationZ()) || isTurn(p.getOrientationX()) || isTurn(p.getOrientationY())),
          "Orientation");
    addIf(!isSeen && std::any_of(angles.begin(), angles.end(), isTurn), "Frustum");
    addIf((!isSeen || kind.hasMirror()) && hasPosition, "Position");
    return ignored;
}

void judgeEffect(const ChannelCase& c) {
    if (const std::string ignored = ignoredValues(c.display, c.projector); !ignored.empty()) {
        c.report("without-effect", "displays of the kind " + toUtf8(std::wstring(c.display.kind->type)) +
                                       " do not use what it states: " + ignored);
    }
}

}  // namespace

void judgePixels(const ChannelCase& c, const std::string& what, const std::string& made, const Point<double, 2>& size) {
    if (size[0] != c.projector.getWidth() || size[1] != c.projector.getHeight()) {
        c.report("other-resolution", what + " was " + made + " for " + significantText(size[0]) + " x " +
                                         significantText(size[1]) + " pixels, and its picture has " +
                                         std::to_string(c.projector.getWidth()) + " x " +
                                         std::to_string(c.projector.getHeight()) +
                                         ": take the file of this projector, or correct the Resolution");
    }
}

void judgeChannels(const DisplayFacts& display, FindingList& found) {
    for (const ChannelFacts& channel : display.channels) {
        const ChannelCase c{display, channel, channel.projector(), found};
        judgeOrientation(c);
        if (display.kind == nullptr) {
            continue;
        }
        judgeLayout(c);
        judgeEdges(c);
        judgeArea(c);
        judgePosition(c);
        judgeMap(c);
        judgeView(c);
        judgeEffect(c);
    }
    if (display.kind != nullptr) {
        judgeMirroredAreas(display, found);
    }
}

}  // namespace Veltrani::DisplayReport
