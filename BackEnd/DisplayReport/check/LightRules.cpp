#include "Common/VeltraniException.h"
#include "Configuration/IScreenConfig.h"
#include "DisplayReport/basics/NumberText.h"
#include "DisplayReport/check/Judgement.h"
#include "DisplayReport/check/RuleText.h"
#include "DisplayReport/coverage/RayLight.h"
#include "KelvoControl/ProjectionModel.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/TriangleMesh.h"
#include "ScreenManager/DisplayKinds.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace Veltrani::DisplayReport {

namespace {

/// A lens that sees more to both sides together has a picture whose corners may well pass a screen.
constexpr double WIDE_LENS = 120.0 * std::numbers::pi / 180.0;

void report(const ChannelFacts& channel, FindingList& found, std::string_view rule, const std::string& what) {
    found.add(Rule::named(rule), channel.where(), channel.allowed(), what);
}

/// Where the picture's middle looks against the direction of the screen's middle, and what to check.
std::string aimText(const DisplayFacts& display, const ChannelView& view) {
    const Point<double, 3> toScreen = display.middle() - view.from;
    // From the middle of a dome every direction is as good as another.
    constexpr double BESIDE = 0.2;
    if (norm(toScreen) < BESIDE * display.size) {
        return "check its Orientation, its Frustum and its Position";
    }
    const Heading looks = Heading::of(view.middle);
    const Heading screen = Heading::of(toScreen);
    const double right = looks.rightOf(screen);
    const double up = looks.elevation - screen.elevation;
    if (std::abs(right) >= std::abs(up)) {
        return "the middle of its picture looks " + sidewaysText(right) +
               " of the screen's middle: check z of its Orientation, and its Position";
    }
    return "the middle of its picture looks " + degreesText(std::abs(up)) + " degrees " + (up < 0 ? "below" : "above") +
           " the screen's middle: check x of its Orientation, and its Position";
}

std::string remedy(const DisplayFacts& display, const ChannelFacts& channel) {
    if (channel.view() != nullptr) {
        return display.kind->hasMirror()
                   ? "check the Mirror, the eye point beside it, and the channel's Orientation and Frustum"
                   : aimText(display, *channel.view());
    }
    return display.kind->source == DisplayKind::Source::MAP_FILE ? "check its map, whose screen runs from 0 to 1"
                                                                 : "check its ScreenArea: the screen runs from 0 to 1";
}

void judgeLanding(const DisplayFacts& display, const ChannelFacts& channel, FindingList& found) {
    if (channel.light() == nullptr) {
        return;
    }
    if (channel.landings().empty()) {
        report(channel, found, "looks-away", "nothing of its picture lands on the screen: " + remedy(display, channel));
        return;
    }
    const ChannelView* const view = channel.view();
    const bool isWide = view != nullptr && view->hasLens && std::max(view->wide, view->high) > WIDE_LENS;
    const Rule& rule = Rule::named(isWide ? "wide-misses-screen" : "misses-screen");
    if (channel.landed() < rule.least) {
        report(channel, found, rule.name,
               percentText(1.0 - channel.landed()) + " of its picture misses the screen (at most " +
                   percentText(1.0 - rule.least) + " is usual): " + remedy(display, channel));
    }
}

/// The parts of the picture of `channel` that `other` lights as well, along the middle row and the middle column.
std::pair<double, double> sharedStrips(const ChannelFacts& channel, const ChannelLight& other) {
    constexpr std::size_t STEPS = 200;
    std::vector<Point<double, 2>> cross;
    for (std::size_t i = 0; i < 2 * STEPS; ++i) {
        const double along = (static_cast<double>(i % STEPS) + 0.5) / STEPS;
        cross.push_back(i < STEPS ? Point<double, 2>{along, 0.5} : Point<double, 2>{0.5, along});
    }
    std::vector<ChannelLight::Landing> landings(cross.size());
    channel.light()->land(cross, landings);
    std::array<double, 2> shared{};
    for (std::size_t i = 0; i < landings.size(); ++i) {
        shared[i / STEPS] += landings[i].hits && other.lights(landings[i].on) ? 1.0 / STEPS : 0.0;
    }
    return {shared[0], shared[1]};
}

/// Whether most of a picture lies in that of another channel.
bool isInset(const DisplayFacts& display, const ChannelFacts& channel) {
    constexpr double MOST = 0.9;
    return std::any_of(display.channels.begin(), display.channels.end(), [&](const ChannelFacts& other) {
        if (&other == &channel || other.light() == nullptr) {
            return false;
        }
        const auto [across, upwards] = sharedStrips(channel, *other.light());
        return std::min(across, upwards) > MOST;
    });
}

/// How wide the pictures are that straight lines of sight make, as tangents of half the angle; of all others.
std::vector<double> widthsOfOthers(const DisplayFacts& display, const ChannelFacts& channel) {
    std::vector<double> widths;
    for (const ChannelFacts& other : display.channels) {
        if (&other != &channel && other.view() != nullptr && other.view()->wide < WIDE_LENS) {
            widths.push_back(std::tan(0.5 * other.view()->wide));
        }
    }
    std::sort(widths.begin(), widths.end());
    return widths;
}

std::string widthText(double halfAsTangent) {
    return degreesText(2 * std::atan(halfAsTangent));
}

/// A calibrated lens among others that all see much the same. Its own numbers are plausible whatever they are.
void judgeLensAmongOthers(const DisplayFacts& display, const ChannelFacts& channel, FindingList& found) {
    const Rule& rule = Rule::named("lens-among-others");
    constexpr double ALIKE = 1.35;
    const ProjectionModel* const lens = channel.lens();
    if (lens == nullptr || lens->calibratedSize()[0] == 0 || channel.light() == nullptr ||
        channel.view()->wide > WIDE_LENS) {
        return;
    }
    const std::vector<double> others = widthsOfOthers(display, channel);
    if (others.size() < 2 || others.back() > ALIKE * others.front()) {
        return;
    }
    const double width = std::tan(0.5 * channel.view()->wide);
    const bool isApart = width < rule.least * others.front() || width > rule.most * others.back();
    if (isApart && !isInset(display, channel)) {
        report(channel, found, rule.name,
               "its lens sees " + degreesText(channel.view()->wide) + " degrees to the sides, those of all others " +
                   widthText(others.front()) + " to " + widthText(others.back()) + " (" +
                   widthText(rule.least * others.front()) + " to " + widthText(rule.most * others.back()) +
                   " is usual beside them): check fx, fy and the size of the picture in its file, and that the file is "
                   "that of this lens");
    }
}

/// On which side of the surface's tangent plane at `place` a point lies: above 0 along the normal.
double sideOf(const ScreenGeometry& surface, const Point<double, 3>& place, const Point<double, 3>& point) {
    return dot(surface.getScreenNormal(place), point - place);
}

/// The part of what a projector lights that it lights from the other side than the eye sees.
double partFromBehind(const DisplayFacts& display, const ChannelFacts& channel) {
    std::size_t behind = 0;
    for (const Point<double, 3>& place : channel.landings()) {
        const double light = sideOf(*display.surface, place, channel.view()->from);
        behind += light * sideOf(*display.surface, place, display.eye) < 0 ? 1U : 0U;
    }
    return static_cast<double>(behind) / static_cast<double>(channel.landings().size());
}

void judgeSide(const DisplayFacts& display, const ChannelFacts& channel, FindingList& found) {
    const Rule& rule = Rule::named("inside-surface");
    if (channel.light() == nullptr || channel.view() == nullptr || channel.landings().empty() ||
        display.kind->addressedBy != DisplayKind::Addressing::PROJECTOR) {
        return;
    }
    if (channel.throwDistance() > 0 && channel.throwDistance() * display.metres < rule.least && display.metres > 0) {
        report(channel, found, rule.name,
               "its Position lies " + lengthText(channel.throwDistance(), display.unit) +
                   " from the screen, inside its surface: check its Position, and the Centre of the screen");
    } else if (display.isEyeStated && channel.landed() < rule.most && partFromBehind(display, channel) > 0.5) {
        report(channel, found, rule.name,
               "its Position lies on the far side of the screen, seen from the eye, and only " +
                   percentText(channel.landed()) +
                   " of its picture lands there: check its Position; a rear projection "
                   "lands whole");
    }
}

/// Whether people are meant to be inside of a round screen: not of a globe, nor of a dome on a table.
bool isAroundPeople(const DisplayFacts& display) {
    constexpr double NEARLY_ALL = 300.0 * std::numbers::pi / 180.0;
    constexpr double POLE_TO_POLE = 120.0 * std::numbers::pi / 180.0;
    constexpr double ROOM_FOR_ONE = 1.5;  // metres
    const IScreenConfig& screen = *display.screen;
    const bool isSphere = screen.getShape() == L"Sphere";
    const bool isGlobe = isSphere && screen.getAzimuthMax() - screen.getAzimuthMin() > NEARLY_ALL &&
                         screen.getElevationMax() - screen.getElevationMin() > POLE_TO_POLE;
    return (isSphere || screen.getShape() == L"Cylinder") && !isGlobe &&
           screen.getRadius() * display.metres >= ROOM_FOR_ONE;
}

/// Whether projectors stand outside of a round screen and light most of it from there, as a column is lit. Where all
/// rays start at an eye, its own place is what is in doubt.
bool isLitFromOutside(const DisplayFacts& display) {
    std::size_t all = 0;
    std::size_t outside = 0;
    for (const ChannelFacts& channel : display.channels) {
        for (const Point<double, 3>& place : channel.landings()) {
            const bool isOutside =
                channel.statesProjector() && sideOf(*display.surface, place, channel.view()->from) > 0;
            ++all;
            outside += isOutside ? 1U : 0U;
        }
    }
    return 2 * outside > all;
}

/// The normals of round screens point outwards.
double partSeenFromInside(const DisplayFacts& display) {
    std::size_t all = 0;
    std::size_t seen = 0;
    for (const ChannelFacts& channel : display.channels) {
        for (const Point<double, 3>& place : channel.landings()) {
            const bool isInside = sideOf(*display.surface, place, display.eye) < 0;
            ++all;
            seen += isInside && isInSight(*display.surface, display.eye, place) ? 1U : 0U;
        }
    }
    return all == 0 ? 1.0 : static_cast<double>(seen) / static_cast<double>(all);
}

void judgeEye(const DisplayFacts& display, FindingList& found) {
    const Rule& rule = Rule::named("eye-outside");
    if (display.screen == nullptr || display.kind->hasMirror() || !isAroundPeople(display)) {
        return;
    }
    if (const double seen = partSeenFromInside(display); seen < rule.least && !isLitFromOutside(display)) {
        found.add(rule, "screen", display.allowed,
                  "the eye point sees " + percentText(seen) + " of what is lit from the inside (at least " +
                      percentText(rule.least) + " is usual): it lies outside of the " +
                      lengthText(display.screen->getRadius(), display.unit) +
                      " radius; check EyePoint, Centre and Radius");
    }
}

/// Points of the surface, each with the area that it stands for, up to a factor that all have.
struct Sample {
    SurfacePoint on;
    double weight = 0;
};

std::vector<Sample> samplesOfMesh(const TriangleMesh& mesh) {
    constexpr std::size_t MOST = 1500;
    const std::size_t step = mesh.triangles.size() / MOST + 1;
    std::vector<Sample> samples;
    for (std::size_t i = 0; i < mesh.triangles.size(); i += step) {
        const auto& [a, b, c] = mesh.triangles[i];
        const Point<double, 3>& p = mesh.vertices[a];
        const Point<double, 3>& q = mesh.vertices[b];
        const Point<double, 3>& r = mesh.vertices[c];
        Sample sample{{(p + q + r) * (1.0 / 3.0), {}, false}, norm(cross(q - p, r - p))};
        if (!mesh.textureTriangles.empty()) {
            const auto& [u, v, w] = mesh.textureTriangles[i];
            const auto& st = mesh.textureCoordinates;
            sample.on.parameters = (st[u] + st[v] + st[w]) * (1.0 / 3.0);
            sample.on.hasParameters = true;
        }
        samples.push_back(sample);
    }
    return samples;
}

std::vector<Sample> samplesOfParameters(const ScreenGeometry& surface) {
    constexpr int STEPS = 40;
    constexpr double STEP = 1.0 / STEPS;
    std::vector<Sample> samples;
    for (int row = 0; row < STEPS; ++row) {
        for (int column = 0; column < STEPS; ++column) {
            const Point<double, 2> st{(column + 0.5) * STEP, (row + 0.5) * STEP};
            Point<double, 3> here;
            Point<double, 3> right;
            Point<double, 3> up;
            if (surface.mapInto3D(st, here, false) && surface.mapInto3D({st[0] + 0.5 * STEP, st[1]}, right, false) &&
                surface.mapInto3D({st[0], st[1] + 0.5 * STEP}, up, false)) {
                samples.push_back({{here, st, true}, norm(cross(right - here, up - here))});
            }
        }
    }
    return samples;
}

double darkPart(const DisplayFacts& display) {
    const TriangleMesh* const mesh = display.surface->triangleMesh();
    double dark = 0;
    double all = 0;
    for (const Sample& sample : mesh != nullptr ? samplesOfMesh(*mesh) : samplesOfParameters(*display.surface)) {
        const bool isLit =
            std::any_of(display.channels.begin(), display.channels.end(), [&](const ChannelFacts& channel) {
                return channel.light() != nullptr && channel.light()->lights(sample.on);
            });
        all += sample.weight;
        dark += isLit ? 0.0 : sample.weight;
    }
    return all > 0 ? dark / all : 0.0;
}

void judgeDarkness(const DisplayFacts& display, FindingList& found) {
    const Rule& rule = Rule::named("dark-parts");
    const bool isLit = std::any_of(display.channels.begin(), display.channels.end(),
                                   [](const ChannelFacts& channel) { return !channel.landings().empty(); });
    if (!isLit) {
        return;
    }
    const Rule& mostly = Rule::named("mostly-dark");
    const double dark = darkPart(display);
    if (dark > mostly.most) {
        found.add(mostly, "screen", display.allowed,
                  "about " + percentText(dark) + " of it is lit by no channel (at most " + percentText(mostly.most) +
                      " is usual): check the size of the screen, and the fields of view");
    } else if (dark > rule.most) {
        found.add(rule, "screen", display.allowed,
                  "about " + percentText(dark) + " of it is lit by no channel: screenmanager coverage measures it");
    }
}

void judgeOverlap(const DisplayFacts& display, FindingList& found) {
    const Rule& rule = Rule::named("narrow-overlap");
    for (const ChannelFacts& channel : display.channels) {
        bool isAlone = display.channels.size() > 1 && !channel.landings().empty();
        for (const ChannelFacts& other : display.channels) {
            if (&channel == &other || channel.light() == nullptr || other.light() == nullptr) {
                continue;
            }
            const auto [across, upwards] = sharedStrips(channel, *other.light());
            isAlone = isAlone && across + upwards == 0;
            for (const double shared : {across, upwards}) {
                if (shared > 0 && shared < rule.least) {
                    report(channel, found, rule.name,
                           "it shares " + percentText(shared) + " of its picture with " + other.where() +
                               ", which leaves little to blend (" + percentText(rule.least) + " and more is usual)");
                }
            }
        }
        if (isAlone) {
            report(channel, found, rule.name,
                   "it shares nothing of its picture with any other channel, so that nothing can be blended: check "
                   "its field of view, and the size of the screen, unless the pictures are meant to stand apart");
        }
    }
}

}  // namespace

void judgeLight(const DisplayFacts& display, FindingList& found) {
    if (!display.isMeasured || display.kind == nullptr) {
        return;
    }
    for (const ChannelFacts& channel : display.channels) {
        judgeLanding(display, channel, found);
        judgeLensAmongOthers(display, channel, found);
        judgeSide(display, channel, found);
    }
    judgeEye(display, found);
    judgeDarkness(display, found);
    judgeOverlap(display, found);
}

}  // namespace Veltrani::DisplayReport
