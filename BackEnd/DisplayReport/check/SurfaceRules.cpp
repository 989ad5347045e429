#include "Common/Utf8.h"
#include "Configuration/IScreenConfig.h"
#include "DisplayReport/basics/NumberText.h"
#include "DisplayReport/check/Judgement.h"
#include "DisplayReport/check/RuleText.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/TriangleMesh.h"
#include "ScreenManager/DisplayKinds.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <numbers>

namespace Veltrani::DisplayReport {

namespace {

constexpr double DEGREE = std::numbers::pi / 180.0;

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

void judgeLying(const ScreenCase& c) {
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

/// How the 2D coordinates of a surface run, as the eye sees them, at some places of it.
struct TextureRun {
    int mirrored = 0;  ///< places where t is to the right of s turned upwards
    int right = 0;     ///< places where it is not
    int down = 0;      ///< places where t falls
    int up = 0;
    int upright = 0;  ///< places where s rises or falls
};

/// Adds the place (s, t); nothing where the surface has a gap.
void addPlace(const ScreenGeometry& surface, const Point<double, 3>& eye, const Point<double, 2>& st, TextureRun& run) {
    constexpr double STEP = 0.02;
    constexpr double CLEAR = 0.1;  // a sine: what is seen at a flatter angle says nothing
    constexpr double STEEP = 0.7;  // sine of 45 degrees
    Point<double, 3> here;
    Point<double, 3> right;
    Point<double, 3> up;
    if (!surface.mapInto3D(st, here, false) || !surface.mapInto3D({st[0] + STEP, st[1]}, right, false) ||
        !surface.mapInto3D({st[0], st[1] + STEP}, up, false)) {
        return;
    }
    const Point<double, 3> s = right - here;
    const Point<double, 3> t = up - here;
    const Point<double, 3> sight = here - eye;
    const double turn = dot(cross(s, t), sight) / (norm(s) * norm(t) * norm(sight));
    run.mirrored += turn > CLEAR ? 1 : 0;
    run.right += turn < -CLEAR ? 1 : 0;
    run.down += t[2] < -STEEP * norm(t) ? 1 : 0;
    run.up += t[2] > STEEP * norm(t) ? 1 : 0;
    run.upright += std::abs(s[2]) > STEEP * norm(s) ? 1 : 0;
}

void judgeTexture(const ScreenCase& c, const std::string& where, const std::shared_ptr<const ScreenGeometry>& surface) {
    if (c.display.kind->addressedBy != DisplayKind::Addressing::SCREEN_PARAMETERS || !surface ||
        !surface->isParameterised() || !surface->isValid()) {
        return;
    }
    TextureRun run;
    for (const Point<double, 2>& st : {Point<double, 2>{0.5, 0.5}, {0.3, 0.3}, {0.7, 0.3}, {0.3, 0.7}, {0.7, 0.7}}) {
        addPlace(*surface, c.display.eye, st, run);
    }
    // From outside, a globe shows the back of what is meant to be seen from within: that is a matter of the eye.
    const bool isRound = c.screen.getShape() == L"Sphere" || c.screen.getShape() == L"Cylinder";
    const bool isEyeKnown = c.display.isEyeStated || c.display.box.minimum()[1] > 0;
    const auto places = [](int count) { return ", at " + std::to_string(count) + " of 5 places (0 is usual): "; };
    if (run.down > run.up) {
        c.report("mirrored-texture", where,
                 "t runs downwards, so that pictures stand on their heads" + places(run.down) +
                     "check t of the texture coordinates, the Orientation, the rails, and up of ImportOrientation");
    } else if (run.mirrored > 0 && run.right == 0 && !isRound && isEyeKnown) {
        c.report("mirrored-texture", where,
                 "s runs to the left as the eye point sees the screen, so that pictures are mirrored" +
                     places(run.mirrored) +
                     "check s of the texture coordinates, the Orientation, and the order of the rails");
    } else if (run.upright > 0 && run.up == 0 && run.down == 0) {
        c.report("mirrored-texture", where,
                 "s runs up or down, so that pictures lie on their sides" + places(run.upright) +
                     "check up of ImportOrientation, and the Orientation");
    }
}

void judgeRails(const ScreenCase& c) {
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

/// Rails are joined point by point: where two neighbours of one run against those of the other, the surface folds.
void judgeTwist(const ScreenCase& c) {
    const auto lower = c.screen.getLowerRail();
    const auto upper = c.screen.getUpperRail();
    if (c.screen.getShape() != L"Ruled" || lower.size() != upper.size()) {
        return;
    }
    std::size_t against = 0;
    std::size_t first = 0;
    for (std::size_t i = 1; i < lower.size(); ++i) {
        if (dot(lower[i] - lower[i - 1], upper[i] - upper[i - 1]) < 0) {
            first = against == 0 ? i : first;
            ++against;
        }
    }
    if (against > 0) {
        const bool isReversed = dot(lower.back() - lower.front(), upper.back() - upper.front()) < 0;
        c.report("twisted-rails", "screen",
                 "the rails run against each other between " + std::to_string(against) + " of " +
                     std::to_string(lower.size() - 1) + " pairs of points, first between points " +
                     std::to_string(first) + " and " + std::to_string(first + 1) + ": " +
                     (isReversed ? "reverse the order of one of them"
                                 : "check order and signs of the points of both rails"));
    }
}

/// Rails run side by side, so that the steps from point to point of both are of one size. A rail that is a single
/// point, as the tip of a fan, has none.
void judgeSteps(const ScreenCase& c) {
    const Rule& rule = Rule::named("uneven-rails");
    const auto lower = c.screen.getLowerRail();
    const auto upper = c.screen.getUpperRail();
    if (c.screen.getShape() != L"Ruled" || lower.size() != upper.size()) {
        return;
    }
    double worst = 1.0;
    std::size_t at = 0;
    for (std::size_t i = 1; i < lower.size(); ++i) {
        const double below = norm(lower[i] - lower[i - 1]);
        const double above = norm(upper[i] - upper[i - 1]);
        const double ratio = std::min(below, above) > 0 ? std::max(below / above, above / below) : 1.0;
        at = ratio > worst ? i : at;
        worst = std::max(worst, ratio);
    }
    if (worst > rule.most) {
        c.report(
            rule.name, "screen",
            "the rails run at different paces: from point " + std::to_string(at) + " to " + std::to_string(at + 1) +
                " the LowerRail goes " + lengthText(norm(lower[at] - lower[at - 1]), c.display.unit) +
                ", the UpperRail " + lengthText(norm(upper[at] - upper[at - 1]), c.display.unit) +
                " (up to 4 times as far is usual): check the digits of these points, and lengthUnit of both rails");
    }
}

/// How the points of a mesh lie around the eye, in plan.
struct Surround {
    Heading middle;
    double span = 0;  ///< radians; 0 where no direction is in the middle
};

Surround surroundOf(const TriangleMesh& mesh, const Point<double, 3>& eye) {
    constexpr double CLOSED = 0.3;  // length of the mean of unit vectors: of a ring it is 0
    Point<double, 3> sum;
    std::size_t count = 0;
    const auto forAll = [&](const auto& use) {
        for (const Point<double, 3>& vertex : mesh.vertices) {
            const Point<double, 3> aside{vertex[0] - eye[0], vertex[1] - eye[1], 0.0};
            if (const double length = norm(aside); length > 0) {
                use(aside * (1.0 / length));
            }
        }
    };
    forAll([&](const Point<double, 3>& direction) {
        sum += direction;
        ++count;
    });
    if (norm(sum) < CLOSED * static_cast<double>(count) || count == 0) {
        return {};
    }
    Surround surround{Heading::of(sum), 0};
    forAll([&](const Point<double, 3>& direction) {
        surround.span = std::max(surround.span, 2 * std::abs(Heading::of(direction).rightOf(surround.middle)));
    });
    return surround;
}

/// A screen around the eye has its middle ahead. A plane wall may lie to any side.
void judgeAround(const ScreenCase& c) {
    const Rule& rule = Rule::named("beside-forward");
    constexpr double AROUND = 120.0 * DEGREE;
    const TriangleMesh* const mesh = c.display.surface ? c.display.surface->triangleMesh() : nullptr;
    const bool isBehind = !c.display.box.empty() && c.display.box.maximum()[1] < c.display.eye[1];
    if (mesh == nullptr || !c.display.isEyeStated || c.display.kind->hasMirror() || isBehind) {
        return;
    }
    const Surround surround = surroundOf(*mesh, c.display.eye);
    if (surround.span > AROUND && std::abs(surround.middle.azimuth) > rule.most * DEGREE) {
        c.report(rule.name, "screen",
                 "it spans " + degreesText(surround.span) + " degrees around the eye point, with its middle " +
                     sidewaysText(surround.middle.azimuth) +
                     " of +y, which is forward: check forward of ImportOrientation, and the EyePoint");
    }
}

void judgeFiles(const ScreenCase& c) {
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

}  // namespace

void judgeSurface(const DisplayFacts& display, FindingList& found) {
    if (display.screen == nullptr) {
        return;
    }
    const ScreenCase c{display, *display.screen, found};
    judgeLying(c);
    judgeRails(c);
    judgeTwist(c);
    judgeSteps(c);
    judgeFiles(c);
    if (display.kind != nullptr) {
        judgeAround(c);
        judgeTexture(c, "screen", display.content);
        judgeTexture(c, "measured mesh", display.measured);
    }
}

}  // namespace Veltrani::DisplayReport
