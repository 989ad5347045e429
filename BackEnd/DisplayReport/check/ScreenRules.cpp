#include "Common/Matrix.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/IScreenConfig.h"
#include "Configuration/TargetLocatorConfig.h"
#include "Configuration/UnitConversionTable.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayReport/basics/GeometryText.h"
#include "DisplayReport/basics/NumberText.h"
#include "DisplayReport/check/Judgement.h"
#include "DisplayReport/check/RuleText.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/TriangleMesh.h"
#include "ScreenManager/DisplayKinds.h"
#include "ScreenManager/ScreenManager.h"

#include <pcl/point_cloud.h>
#include <pcl/point_types.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace Veltrani::DisplayReport {

namespace {

constexpr double DEGREE = std::numbers::pi / 180.0;

struct Case {
    const DisplayFacts& display;
    const IScreenConfig& screen;
    FindingList& found;

    void report(std::string_view rule, const std::string& where, const std::string& what) const {
        found.add(Rule::named(rule), where, display.allowed, what);
    }
};

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

void judgeSize(const Case& c) {
    const Rule& rule = Rule::named("screen-size");
    const double metres = c.display.size * c.display.metres;
    if (c.display.surface == nullptr || c.display.metres <= 0 || (metres >= rule.least && metres <= rule.most)) {
        return;
    }
    const std::string unit = plausibleUnit(c.display.size, c.display);
    c.report(rule.name, "screen",
             "it measures " + lengthText(c.display.size, c.display.unit) +
                 ", and rooms hold screens of 0.3 to 150 m: " + (unit.empty() ? "check its numbers" : unit) +
                 "; check lengthUnit, or fileUnit for meshes");
}

void judgeShape(const Case& c) {
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

void judgeTurn(const Case& c, const std::string& where, const Point<double, 3>& orientation) {
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
void judgeDistance(const Case& c, const std::string& where, const Point<double, 3>& point) {
    const Rule& rule = Rule::named("far-from-screen");
    const double away = norm(point - c.display.middle());
    if (c.display.size > 0 && away > rule.most * c.display.size) {
        c.report(rule.name, where,
                 "it lies " + lengthText(away, c.display.unit) + " away from the middle of a screen of " +
                     lengthText(c.display.size, c.display.unit) + ": check its lengthUnit");
    }
}

void judgeForward(const Case& c) {
    const bool isBehind = c.display.isEyeStated && !c.display.box.empty() && !c.display.kind->hasMirror() &&
                          c.display.box.maximum()[1] < c.display.eye[1];
    if (isBehind) {
        const bool isMesh = c.screen.getShape() == L"Mesh";
        c.report("behind-eye", "screen",
                 "all of it lies behind the eye point, up to y = " + roundedText(c.display.box.maximum()[1]) +
                     " with the eye at y = " + roundedText(c.display.eye[1]) + ", and +y is forward: check " +
                     (isMesh ? "forward of ImportOrientation" : "the signs of its y") + ", and the EyePoint");
    }
}

void judgeEdgeOn(const Case& c) {
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

/// How the areas of a mesh look along the axes: the part of each in the sum of the squares of the normals.
Point<double, 3> partsOfNormals(const TriangleMesh& mesh) {
    Point<double, 3> parts;
    for (const auto& [a, b, c] : mesh.triangles) {
        const Point<double, 3> normal = cross(mesh.vertices[b] - mesh.vertices[a], mesh.vertices[c] - mesh.vertices[a]);
        const double area = norm(normal);
        for (std::size_t i = 0; area > 0 && i < 3; ++i) {
            parts[i] += normal[i] * normal[i] / area;
        }
    }
    const double all = parts[0] + parts[1] + parts[2];
    return all > 0 ? parts * (1.0 / all) : parts;
}

bool isOver(const Extent& box, const Point<double, 3>& point) {
    return point[0] >= box.minimum()[0] && point[0] <= box.maximum()[0] && point[1] >= box.minimum()[1] &&
           point[1] <= box.maximum()[1];
}

void judgeLying(const Case& c) {
    const Rule& rule = Rule::named("lying-mesh");
    const bool hasAxes = c.screen.getImportOrientationParam1() != L"Z" || c.screen.getImportOrientationParam2() != L"Y";
    const TriangleMesh* const mesh = c.display.surface ? c.display.surface->triangleMesh() : nullptr;
    if (hasAxes || mesh == nullptr) {
        return;
    }
    // Normals of no wall are all across forward; those of one on its back are. A floor under the eye is level.
    constexpr double NONE = 0.02;
    const Point<double, 3> parts = partsOfNormals(*mesh);
    const bool isFloor = parts[2] > 1.0 - NONE && (isOver(c.display.box, c.display.eye) || !c.display.isEyeStated);
    if (parts[2] > rule.most && parts[1] < NONE && !isFloor) {
        c.report(rule.name, "screen",
                 "the mesh lies on its back: " + percentText(parts[2]) +
                     " of it look up or down and none forward, with up Z and forward Y; state the "
                     "axes of the file, ImportOrientation up=\"Y\" forward=\"-Z\" for most OBJ files");
    }
}

void judgeApart(const Case& c, const std::string& where, const Extent& measured, const std::string& axes) {
    const Rule& rule = Rule::named("measured-apart");
    if (!c.display.content || measured.empty()) {
        return;
    }
    const Extent content = extentOf(*c.display.content);
    const double size = norm(content.size());
    if (content.empty() || size <= 0) {
        return;
    }
    const double ratio = norm(measured.size()) / size;
    const double shift = norm((measured.minimum() + measured.maximum() - content.minimum() - content.maximum()) * 0.5);
    const std::string sizes = sizeText(measured, c.display.unit) + " beside " + sizeText(content, c.display.unit);
    if (ratio > rule.most || ratio < 1.0 / rule.most) {
        c.report(rule.name, where,
                 "it is " + significantText(ratio) + " times as large as the content screen, " + sizes +
                     ": check fileUnit and scale, which hold for all files of the screen");
    } else if (shift > rule.least * size) {
        c.report(rule.name, where,
                 "its middle lies " + lengthText(shift, c.display.unit) + " away from that of the content screen, " +
                     sizes + ": " + axes);
    }
}

/// How the 2D coordinates of a surface run, as the eye sees them, at some places of it.
struct TextureRun {
    int mirrored = 0;  ///< places where t is to the right of s turned upwards
    int right = 0;     ///< places where it is not
    int down = 0;      ///< places where t falls
    int up = 0;
    int upright = 0;  ///< places where s rises or falls
};

/// Adds the place (s, t); nothing where the surface has a gap.
void addPlace(const DisplayFacts& display, const Point<double, 2>& st, TextureRun& run) {
    constexpr double STEP = 0.02;
    constexpr double CLEAR = 0.1;  // a sine: what is seen at a flatter angle says nothing
    constexpr double STEEP = 0.7;  // sine of 45 degrees
    Point<double, 3> here;
    Point<double, 3> right;
    Point<double, 3> up;
    const ScreenGeometry& surface = *display.content;
    if (!surface.mapInto3D(st, here, false) || !surface.mapInto3D({st[0] + STEP, st[1]}, right, false) ||
        !surface.mapInto3D({st[0], st[1] + STEP}, up, false)) {
        return;
    }
    const Point<double, 3> s = right - here;
    const Point<double, 3> t = up - here;
    const Point<double, 3> sight = here - display.eye;
    const double turn = dot(cross(s, t), sight) / (norm(s) * norm(t) * norm(sight));
    run.mirrored += turn > CLEAR ? 1 : 0;
    run.right += turn < -CLEAR ? 1 : 0;
    run.down += t[2] < -STEEP * norm(t) ? 1 : 0;
    run.up += t[2] > STEEP * norm(t) ? 1 : 0;
    run.upright += std::abs(s[2]) > STEEP * norm(s) ? 1 : 0;
}

void judgeTexture(const Case& c) {
    const auto& surface = c.display.content;
    if (c.display.kind->addressedBy != DisplayKind::Addressing::SCREEN_PARAMETERS || !surface ||
        !surface->isParameterised() || !surface->isValid()) {
        return;
    }
    TextureRun run;
    for (const Point<double, 2>& st : {Point<double, 2>{0.5, 0.5}, {0.3, 0.3}, {0.7, 0.3}, {0.3, 0.7}, {0.7, 0.7}}) {
        addPlace(c.display, st, run);
    }
    // From outside, a globe shows the back of what is meant to be seen from within: that is a matter of the eye.
    const bool isRound = c.screen.getShape() == L"Sphere" || c.screen.getShape() == L"Cylinder";
    const bool isEyeKnown = c.display.isEyeStated || c.display.box.minimum()[1] > 0;
    if (run.down > run.up) {
        c.report("mirrored-texture", "screen",
                 "t runs downwards, so that pictures stand on their heads: check t of the texture coordinates, the "
                 "Orientation, the rails, and up of ImportOrientation");
    } else if (run.mirrored > 0 && run.right == 0 && !isRound && isEyeKnown) {
        c.report("mirrored-texture", "screen",
                 "s runs to the left as the eye point sees the screen, so that pictures are mirrored: check s of the "
                 "texture coordinates, the Orientation, and the order of the rails");
    } else if (run.upright > 0 && run.up == 0 && run.down == 0) {
        c.report("mirrored-texture", "screen",
                 "s runs up or down, so that pictures lie on their sides: check up of ImportOrientation, and the "
                 "Orientation");
    }
}

void judgeRails(const Case& c) {
    const auto lower = c.screen.getLowerRail();
    const auto upper = c.screen.getUpperRail();
    if (c.screen.getShape() != L"Ruled" || lower.size() != upper.size() || lower.empty()) {
        return;
    }
    std::size_t below = 0;
    for (std::size_t i = 0; i < lower.size(); ++i) {
        below += upper[i][2] < lower[i][2] ? 1U : 0U;
    }
    if (2 * below > lower.size()) {
        c.report("rails-exchanged", "screen",
                 "the UpperRail lies below the LowerRail at " + std::to_string(below) + " of " +
                     std::to_string(lower.size()) + " points: exchange the two");
    }
}

void judgeFiles(const Case& c) {
    const bool hasFiles = !c.screen.getMeasuredMeshFile(0).empty() || !c.screen.getModelPcdFile(0).empty();
    const bool isFollowed = c.screen.getShape() == L"Mesh";
    const bool isPlain = toUtf8(c.screen.getUnitName()) == c.display.unit &&
                         c.screen.getImportOrientationParam1() == L"Y" && c.screen.getImportOrientationParam2() == L"Z";
    if (hasFiles && !isFollowed && !isPlain) {
        c.report("program-only", "screen",
                 "unit and axes of its files hold in this program; a program that calls "
                 "ScreenManager::setScreenGeometry sets them before, with Screen::setScale and "
                 "Screen::setImportTransformParams");
    }
}

void judgeCloud(const Case& c) {
    const auto cloud = ScreenManager::getInstance()->getScreen().getModelPCD();
    if (c.screen.getModelPcdFile(0).empty() || !cloud) {
        return;
    }
    Extent extent;
    for (const pcl::PointXYZ& point : *cloud) {
        extent.add({point.x, point.y, point.z});
    }
    if (extent.empty()) {
        c.report("empty-cloud", "model cloud",
                 "none of its " + std::to_string(cloud->size()) + " points is finite: check the export of the scan");
        return;
    }
    judgeApart(c, "model cloud", extent, "check up and forward of ImportOrientation, and the origin of the scan");
    const Rule& rule = Rule::named("single-precision");
    for (std::size_t i = 0; i < 3; ++i) {
        const double farthest = std::max(std::abs(extent.minimum()[i]), std::abs(extent.maximum()[i]));
        if (farthest * c.display.metres > rule.most) {
            c.report(rule.name, "model cloud",
                     "coordinates up to " + lengthText(farthest, c.display.unit) +
                         " lose more than 1 mm in single precision: move its origin to the room");
            return;
        }
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

void judgeMirror(const Case& c, double radius) {
    const Rule& rule = Rule::named("mirror-size");
    if (c.display.size > 0 && (radius < rule.least * c.display.size || radius > rule.most * c.display.size)) {
        c.report(rule.name, "mirror",
                 "its radius is " + lengthText(radius, c.display.unit) + " before a screen of " +
                     lengthText(c.display.size, c.display.unit) + ": check its lengthUnit");
    }
}

void judgePoints(const Case& c) {
    judgeDistance(c, "eye point", c.screen.getEyePoint());
    if (const TargetLocatorConfig* targets = c.display.config->getTargetLocatorConfig()) {
        judgeTurn(c, "mirror", targets->getMirrorOrientation());
        if (!(targets->getTargetPosition() == c.screen.getEyePoint())) {
            judgeDistance(c, "target position", targets->getTargetPosition());
        }
        if (c.display.kind != nullptr && c.display.kind->hasMirror()) {
            judgeMirror(c, targets->getMirrorRadius());
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
    const Case c{display, *display.screen, found};
    judgeSize(c);
    judgeShape(c);
    judgeTurn(c, "screen", c.screen.getOrientation());
    judgePoints(c);
    judgeEdgeOn(c);
    judgeLying(c);
    judgeRails(c);
    judgeFiles(c);
    judgeCloud(c);
    if (display.measured) {
        judgeApart(c, "measured mesh", extentOf(*display.measured),
                   "check up and forward of ImportOrientation, and that both files have one origin");
    }
    if (display.kind != nullptr) {
        judgeForward(c);
        judgeTexture(c);
    }
}

}  // namespace Veltrani::DisplayReport
