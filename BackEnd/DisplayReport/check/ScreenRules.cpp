#include "Common/Utf8.h"
#include "Configuration/IScreenConfig.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/TargetLocatorConfig.h"
#include "Configuration/UnitConversionTable.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayReport/basics/NumberText.h"
#include "DisplayReport/check/Judgement.h"
#include "DisplayReport/check/RuleText.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/DisplayKinds.h"
#include "ScreenManager/MirrorFrame.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace Veltrani::DisplayReport {

namespace {

constexpr double DEGREE = std::numbers::pi / 180.0;

constexpr double SMALLEST_ROOM = 1.0;  // metres
constexpr double LARGEST_ROOM = 60.0;

/// "its numbers would be plausible in mm"; empty when there is no such unit.
std::string plausibleUnit(double length, const DisplayFacts& display) {
    for (const wchar_t* const name : {L"m", L"mm", L"cm", L"ft", L"in"}) {
        const std::string unit = toUtf8(name);
        const double metres = UnitConversionTable::metresPer(UnitConversionTable::getUnitSubTypeFromName(name));
        const double asStated = length * metres;
        const double meantNative = length * display.metres / metres * display.metres;
        if (unit != display.unit && asStated >= SMALLEST_ROOM && asStated <= LARGEST_ROOM) {
            return "its numbers would be plausible in " + unit;
        }
        if (unit != display.unit && meantNative >= SMALLEST_ROOM && meantNative <= LARGEST_ROOM) {
            return "its numbers would be plausible in " + display.unit + ", if " + unit + " is stated";
        }
    }
    return {};
}

/// From a point to the nearest of a box, 0 within it.
double distanceTo(const Extent& box, const Point<double, 3>& point) {
    Point<double, 3> away;
    for (std::size_t i = 0; i < 3; ++i) {
        away[i] = point[i] - std::clamp(point[i], box.minimum()[i], box.maximum()[i]);
    }
    return norm(away);
}

/// The longest that the file states beside the size of the screen, metres: how far places lie from the origin, and
/// layouts.
double longestOtherLength(const ScreenCase& c) {
    double longest = std::max(norm(c.display.eye), norm(c.screen.getCentre()));
    for (const ChannelFacts& channel : c.display.channels) {
        const ProjectorConfig& p = channel.projector();
        longest = std::max({longest, norm(p.getPosition()), std::abs(p.getLayoutXMax() - p.getLayoutXMin()),
                            std::abs(p.getLayoutYMax() - p.getLayoutYMin())});
    }
    return longest * c.display.metres;
}

/// Why the other lengths of the file do not fit a screen that is a model or a facade; empty where they do. A slip in
/// the unit of the screen alone shows beside them; one in that of the whole file puts the eye nearer than eyes can
/// see, or higher than people stand.
std::string misfitOfSize(const ScreenCase& c, double metres) {
    constexpr double NEAREST = 0.25;  // metres: an eye sees nothing sharp nearer
    constexpr double FARTHEST = 5.0;  // sizes of a model
    constexpr double HIGHEST = 20.0;  // metres above the origin
    constexpr double TENTH = 0.1;
    const bool isModel = metres < SMALLEST_ROOM;
    const double away = distanceTo(c.display.box, c.display.eye) * c.display.metres;
    const double height = c.display.isEyeStated ? c.display.eye[2] * c.display.metres : 0.0;
    const double longest = longestOtherLength(c);
    if (isModel && !c.display.isEyeStated) {
        return "a model has an eye point before it";
    }
    if (isModel && (away < NEAREST || away > FARTHEST * metres)) {
        return "a model is seen from 0.25 m to 5 sizes away, and the eye point lies " + lengthText(away, "m") + " away";
    }
    if (!isModel && std::abs(height) > HIGHEST) {
        return "a facade is seen from the ground, and the eye point lies at a height of " + lengthText(height, "m");
    }
    if (!isModel && longest < TENTH * metres) {
        return "beside a facade other lengths are a tenth of it and more, and the longest is " +
               lengthText(longest, "m");
    }
    return {};
}

void judgeSize(const ScreenCase& c) {
    const Rule& rule = Rule::named("screen-size");
    constexpr double SMALLEST_MODEL = 0.1;  // metres
    constexpr double LARGEST_FACADE = 500.0;
    const double metres = c.display.size * c.display.metres;
    if (c.display.surface == nullptr || c.display.metres <= 0 || (metres >= rule.least && metres <= rule.most)) {
        return;
    }
    const bool mayBe = metres >= SMALLEST_MODEL && metres <= LARGEST_FACADE;
    const std::string misfit = mayBe ? misfitOfSize(c, metres) : std::string();
    if (mayBe && misfit.empty()) {
        return;
    }
    const std::string unit = plausibleUnit(c.display.size, c.display);
    c.report(rule.name, "screen",
             "it measures " + lengthText(c.display.size, c.display.unit) + ", and rooms hold screens of 0.3 to 150 m" +
                 (misfit.empty() ? "" : " (" + misfit + ")") + ": " + (unit.empty() ? "check its numbers" : unit) +
                 "; check lengthUnit, or fileUnit for meshes");
}

void judgeShape(const ScreenCase& c) {
    const Rule& rule = Rule::named("narrow-shape");
    const std::wstring shape = c.screen.getShape();
    const bool isSphere = shape == L"Sphere";
    if (!isSphere && shape != L"Cylinder") {
        return;
    }
    const auto judge = [&](const char* element, double span) {
        if (span < rule.least * DEGREE) {
            c.report(rule.name, "screen",
                     std::string(element) + " spans " + degreesText(span) +
                         " degrees, and round screens 10 and more: check its angleUnit");
        }
    };
    judge("Azimuth", c.screen.getAzimuthMax() - c.screen.getAzimuthMin());
    if (isSphere) {
        judge("Elevation", c.screen.getElevationMax() - c.screen.getElevationMin());
    }
}

void judgeTurn(const ScreenCase& c, const std::string& where, const Point<double, 3>& orientation) {
    const Rule& rule = Rule::named("large-angle");
    constexpr std::array NAMES{"z", "x", "y"};
    for (std::size_t i = 0; i < NAMES.size(); ++i) {
        if (std::abs(orientation[i]) > rule.most * DEGREE * (1 + 1e-9)) {
            c.report(rule.name, where,
                     std::string("Orientation ") + NAMES[i] + " is " + degreesText(orientation[i]) +
                         " degrees, more than a turn: write it with angleUnit=\"deg\" if it is in "
                         "degrees");
        }
    }
}

/// A point that should not be far from the screen.
void judgeDistance(const ScreenCase& c, const std::string& where, const Point<double, 3>& point) {
    const Rule& rule = Rule::named("far-from-screen");
    const double away = norm(point - c.display.middle());
    if (c.display.size > 0 && away > rule.most * c.display.size) {
        c.report(rule.name, where,
                 "it lies " + lengthText(away, c.display.unit) + " away from the middle of a screen of " +
                     lengthText(c.display.size, c.display.unit) + ": check its lengthUnit");
    }
}

/// Whether the eye sees the front of a plane screen, where s runs to the right and t upwards: the rear wall of a cave
/// is turned to the eye, a wall with a wrong sign shows its back.
bool isTurnedToTheEye(const ScreenCase& c) {
    constexpr double STEP = 0.02;
    const bool isPlane = c.screen.getShape() == L"Flat" || c.screen.getShape() == L"Ruled";
    Point<double, 3> here;
    Point<double, 3> right;
    Point<double, 3> up;
    return isPlane && c.display.content && c.display.content->isValid() &&
           c.display.content->mapInto3D({0.5, 0.5}, here, false) &&
           c.display.content->mapInto3D({0.5 + STEP, 0.5}, right, false) &&
           c.display.content->mapInto3D({0.5, 0.5 + STEP}, up, false) &&
           dot(cross(right - here, up - here), here - c.display.eye) < 0;
}

void judgeForward(const ScreenCase& c) {
    const bool isBehind = c.display.isEyeStated && !c.display.box.empty() && !c.display.kind->hasMirror() &&
                          c.display.box.maximum()[1] < c.display.eye[1];
    if (isBehind && !isTurnedToTheEye(c)) {
        const bool isMesh = c.screen.getShape() == L"Mesh";
        c.report("behind-eye", "screen",
                 "all of it lies behind the eye point, up to y = " + roundedText(c.display.box.maximum()[1]) +
                     " with the eye at y = " + roundedText(c.display.eye[1]) + ", and +y is forward: check " +
                     (isMesh ? "forward of ImportOrientation" : "the signs of its y") + ", and the EyePoint");
    }
}

void judgeEdgeOn(const ScreenCase& c) {
    const Rule& rule = Rule::named("edge-on");
    if (c.screen.getShape() != L"Flat" || !c.display.isEyeStated || !c.display.content) {
        return;
    }
    const Point<double, 3> sight = c.screen.getCentre() - c.display.eye;
    const double sine =
        norm(sight) > 0 ? std::abs(dot(c.display.content->getScreenNormal(c.screen.getCentre()), sight)) / norm(sight)
                        : 0.0;
    if (sine < rule.least) {
        c.report(rule.name, "screen",
                 "the eye point lies in the plane of the screen, " + degreesText(std::asin(sine)) +
                     " degrees beside it, and sees only its edge: check Orientation and Centre, and "
                     "the EyePoint");
    }
}

void judgeTargetData(const DisplayFacts& display, FindingList& found) {
    const TargetLocatorConfig* const targets = display.config->getTargetLocatorConfig();
    if (targets == nullptr) {
        return;
    }
    const bool hasTables = !targets->getYawTable().empty() || !targets->getPitchTable().empty();
    if (display.kind->hasMirror() && hasTables) {
        found.add(Rule::named("tables-not-in-maps"), "target data", display.allowed,
                  "its heading tables bend targets and outlines; layout maps do not follow them");
    } else if (!display.kind->hasMirror() && (hasTables || targets->getMirrorRadius() > 0)) {
        found.add(Rule::named("without-effect"), "target data", display.allowed,
                  "displays of the kind " + toUtf8(std::wstring(display.kind->type)) +
                      " do not use what it states: " + (hasTables ? "heading tables" : "Mirror"));
    }
}

void judgeMirrorSize(const ScreenCase& c, double radius) {
    const Rule& rule = Rule::named("mirror-size");
    if (c.display.size > 0 && (radius < rule.least * c.display.size || radius > rule.most * c.display.size)) {
        c.report(rule.name, "mirror",
                 "its radius is " + lengthText(radius, c.display.unit) + " before a screen of " +
                     lengthText(c.display.size, c.display.unit) + ": check its lengthUnit");
        return;
    }
    const Rule& focus = Rule::named("mirror-focus");
    const double ratio = c.screen.getShape() == L"Sphere" ? radius / c.screen.getRadius() : focus.least;
    if (ratio < focus.least || ratio > focus.most) {
        c.report(focus.name, "mirror",
                 "its radius is " + lengthText(radius, c.display.unit) + ", " + significantText(ratio) +
                     " times that of the screen, where a mirror of twice the screen's radius shows the picture far "
                     "away: check both radii, which are no diameters");
    }
}

/// The eye of a display with a mirror is stated beside the mirror. Coordinates of the room show by lying nearer to the
/// mirror's middle when they are taken for such.
void judgeMirrorEye(const ScreenCase& c, const TargetLocatorConfig& targets) {
    const Rule& rule = Rule::named("eye-in-room");
    const MirrorFrame mirror(targets);
    const Point<double, 3> eye = targets.getTargetPosition();
    const double beside = norm(eye);
    const double inRoom = norm(eye - mirror.centre());
    if (norm(mirror.centre()) > 0 && inRoom < rule.least * beside) {
        c.report(rule.name, "eye point",
                 "it lies " + lengthText(beside, c.display.unit) +
                     " from the middle of the mirror, beside which it is stated, and " +
                     lengthText(inRoom, c.display.unit) +
                     " if these are coordinates of the room: subtract the Position of the Mirror");
    }
}

/// Targets are placed from the target position, and maps are seen from the eye point.
void judgeTargetPosition(const ScreenCase& c, const TargetLocatorConfig& targets) {
    const Rule& rule = Rule::named("target-not-eye");
    const double apart = norm(targets.getTargetPosition() - c.screen.getEyePoint());
    if (apart > rule.most * c.display.size && c.display.size > 0) {
        c.report(rule.name, "target position",
                 "it lies " + lengthText(apart, c.display.unit) +
                     " away from the EyePoint of the screen: targets are placed from the one and maps are made from "
                     "the other; leave TargetPosition out, or correct one of them");
    }
}

void judgePoints(const ScreenCase& c) {
    judgeDistance(c, "eye point", c.screen.getEyePoint());
    if (const TargetLocatorConfig* targets = c.display.config->getTargetLocatorConfig()) {
        judgeTurn(c, "mirror", targets->getMirrorOrientation());
        if (!(targets->getTargetPosition() == c.screen.getEyePoint())) {
            judgeDistance(c, "target position", targets->getTargetPosition());
        }
        if (c.display.kind != nullptr && c.display.kind->hasMirror()) {
            judgeMirrorSize(c, targets->getMirrorRadius());
            judgeMirrorEye(c, *targets);
        }
        if (c.display.kind != nullptr && c.display.kind->addressedBy == DisplayKind::Addressing::EYE) {
            judgeTargetPosition(c, *targets);
        }
    }
}

}  // namespace

void judgeScreen(const DisplayFacts& display, FindingList& found) {
    if (display.kind != nullptr) {
        judgeTargetData(display, found);
    }
    if (display.screen == nullptr) {
        return;
    }
    const ScreenCase c{display, *display.screen, found};
    judgeSize(c);
    judgeShape(c);
    judgeTurn(c, "screen", c.screen.getOrientation());
    judgePoints(c);
    judgeEdgeOn(c);
    if (display.kind != nullptr) {
        judgeForward(c);
    }
}

}  // namespace Veltrani::DisplayReport
