#include "Common/Matrix.h"
#include "Configuration/IScreenConfig.h"
#include "Configuration/TargetLocatorConfig.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayReport/check/Judgement.h"
#include "DisplayReport/check/RuleText.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/TriangleMesh.h"
#include "ScreenManager/DisplayKinds.h"
#include "ScreenManager/MirrorFrame.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <optional>
#include <vector>

namespace Veltrani::DisplayReport {

namespace {

constexpr double DEGREE = std::numbers::pi / 180.0;

/// A piece of the surface.
struct Patch {
    Point<double, 3> place;
    Point<double, 3> normal;  ///< to either side; as long as the piece is large
};

std::vector<Patch> patchesOfMesh(const TriangleMesh& mesh) {
    constexpr std::size_t MOST = 1500;
    const std::size_t step = mesh.triangles.size() / MOST + 1;
    std::vector<Patch> patches;
    for (std::size_t i = 0; i < mesh.triangles.size(); i += step) {
        const auto& [a, b, c] = mesh.triangles[i];
        const Point<double, 3> normal = cross(mesh.vertices[b] - mesh.vertices[a], mesh.vertices[c] - mesh.vertices[a]);
        for (const auto corner : mesh.triangles[i]) {
            patches.push_back({mesh.vertices[corner], normal});
        }
    }
    return patches;
}

std::vector<Patch> patchesOfParameters(const ScreenGeometry& surface) {
    constexpr int STEPS = 40;
    constexpr double STEP = 1.0 / STEPS;
    std::vector<Patch> patches;
    for (int row = 0; row < STEPS; ++row) {
        for (int column = 0; column < STEPS; ++column) {
            const Point<double, 2> st{column * STEP, row * STEP};
            Point<double, 3> here;
            Point<double, 3> right;
            Point<double, 3> up;
            if (surface.mapInto3D(st, here, false) && surface.mapInto3D({st[0] + STEP, st[1]}, right, false) &&
                surface.mapInto3D({st[0], st[1] + STEP}, up, false)) {
                const Point<double, 3> normal = cross(right - here, up - here);
                patches.insert(patches.end(), {{here, normal}, {right, normal}, {up, normal}});
            }
        }
    }
    return patches;
}

/// Pieces all over the surface, with places on its edges.
std::vector<Patch> patchesOf(const ScreenGeometry& surface) {
    const TriangleMesh* const mesh = surface.triangleMesh();
    return mesh != nullptr ? patchesOfMesh(*mesh) : patchesOfParameters(surface);
}

/// How the pieces look along the axes: the part of each in the sum of the squares of the normals.
Point<double, 3> partsOfNormals(const std::vector<Patch>& patches) {
    Point<double, 3> parts;
    double all = 0;
    for (const Patch& patch : patches) {
        const double area = norm(patch.normal);
        for (std::size_t i = 0; area > 0 && i < 3; ++i) {
            parts[i] += patch.normal[i] * patch.normal[i] / area;
        }
        all += area;
    }
    return all > 0 ? parts * (1.0 / all) : parts;
}

/// The azimuths between which a round screen extends, in the world.
struct RoundShape {
    double span = 0;  ///< radians
    Heading middle;   ///< seen from the axis
    bool isEyeInside = false;
};

std::optional<RoundShape> roundShapeOf(const ScreenCase& c) {
    const std::wstring shape = c.screen.getShape();
    if ((shape != L"Sphere" && shape != L"Cylinder") || !c.display.content) {
        return std::nullopt;
    }
    const Point<double, 3> turn = c.screen.getOrientation();
    const Matrix<double, 3> world_from_screen = rotationZXY(turn[0], turn[1], turn[2]);
    const double azimuth = 0.5 * (c.screen.getAzimuthMin() + c.screen.getAzimuthMax());
    const Point<double, 3> axis = world_from_screen * Point<double, 3>{0, 0, 1};
    const Point<double, 3> eye = c.display.eye - c.screen.getCentre();
    return RoundShape{c.screen.getAzimuthMax() - c.screen.getAzimuthMin(),
                      Heading::of(world_from_screen * Point<double, 3>{std::sin(azimuth), std::cos(azimuth), 0}),
                      norm(eye - axis * dot(axis, eye)) < c.screen.getRadius()};
}

/// Where the pictures of a display with a mirror look, on the whole.
Heading gazeOf(const DisplayFacts& display, const TargetLocatorConfig& targets) {
    Point<double, 3> sum;
    for (const ChannelFacts& channel : display.channels) {
        if (channel.view() != nullptr) {
            sum += channel.view()->middle;
        }
    }
    return norm(sum) > 0 ? Heading::of(MirrorFrame(targets).rotation() * sum) : Heading{};
}

/// A round screen with an opening has the opening behind the people that it is around. From outside of it, as of a
/// column, another side counts; and what a mirror shows lies where the pictures look.
void judgeBack(const ScreenCase& c) {
    const Rule& rule = Rule::named("beside-forward");
    constexpr double AROUND = 120.0 * DEGREE;
    constexpr double CLOSED = 330.0 * DEGREE;
    constexpr double STEEP = 60.0 * DEGREE;
    const std::optional<RoundShape> round = roundShapeOf(c);
    const TargetLocatorConfig* const targets = c.display.config->getTargetLocatorConfig();
    const bool hasMirror = c.display.kind->hasMirror() && targets != nullptr;
    const bool isBehind = c.display.isEyeStated && c.display.box.maximum()[1] < c.display.eye[1];
    if (!round || round->span <= AROUND || round->span >= CLOSED || std::abs(round->middle.elevation) > STEEP ||
        (!hasMirror && (!round->isEyeInside || isBehind))) {
        return;
    }
    const double beside = round->middle.rightOf(hasMirror ? gazeOf(c.display, *targets) : Heading{});
    if (std::abs(beside) > rule.most * DEGREE) {
        c.report(rule.name, "screen",
                 "it spans " + degreesText(round->span) + " degrees around its axis, with its middle " +
                     sidewaysText(beside) +
                     (hasMirror ? " of where the pictures look: check Azimuth and Orientation of the screen, and the "
                                  "Mirror"
                                : " of +y, which is forward: check its Azimuth and its Orientation"));
    }
}

/// The azimuth of the place (s, 1/2) from the eye, radians; nothing where there is none or it lies above the eye.
std::optional<double> azimuthAt(const DisplayFacts& display, double s) {
    constexpr double STEEP = 60.0 * DEGREE;
    Point<double, 3> place;
    if (!display.surface->mapInto3D({s, 0.5}, place, false)) {
        return std::nullopt;
    }
    const Heading heading = Heading::of(place - display.eye);
    return std::abs(heading.elevation) < STEEP ? std::optional(heading.azimuth) : std::nullopt;
}

/// A closed mesh is the same to all sides, but its texture is not: where s runs around the eye, its middle is ahead.
void judgeSeam(const ScreenCase& c) {
    const Rule& rule = Rule::named("beside-forward");
    constexpr double QUARTER = 90.0 * DEGREE;
    constexpr double ABOUT = 45.0 * DEGREE;
    const bool isTextured = c.display.surface->triangleMesh() != nullptr && c.display.surface->isParameterised() &&
                            c.display.kind->addressedBy == DisplayKind::Addressing::SCREEN_PARAMETERS;
    if (!isTextured || !c.display.isEyeStated) {
        return;
    }
    const auto left = azimuthAt(c.display, 0.25);
    const auto middle = azimuthAt(c.display, 0.5);
    const auto right = azimuthAt(c.display, 0.75);
    const auto start = azimuthAt(c.display, 0.02);
    const auto end = azimuthAt(c.display, 0.98);
    if (!left || !middle || !right || !start || !end) {
        return;
    }
    const auto isAt = [&middle](double azimuth, double turn) {
        return std::abs(std::remainder(azimuth - *middle - turn, 2 * std::numbers::pi)) < ABOUT;
    };
    const bool isAround =
        isAt(*left, -QUARTER) && isAt(*right, QUARTER) && isAt(*start, 2 * QUARTER) && isAt(*end, 2 * QUARTER);
    if (isAround && std::abs(*middle) > rule.most * DEGREE) {
        c.report(rule.name, "screen",
                 "the middle of its texture, s 0.5, lies " + sidewaysText(*middle) +
                     " of +y, which is forward: check forward of ImportOrientation, and where the texture begins");
    }
}

/// Nobody looks straight down at a wall, or straight up to it.
void judgeEyeHeight(const ScreenCase& c, const std::vector<Patch>& patches) {
    const Rule& rule = Rule::named("eye-off-height");
    constexpr double UPRIGHT = 0.3;  // of the normals that is vertical: of a dome it is a third
    if (c.display.kind->hasMirror() || !c.display.isEyeStated || partsOfNormals(patches)[2] > UPRIGHT ||
        c.screen.getShape() == L"Sphere") {
        return;
    }
    double lowest = std::numbers::pi;
    double highest = -std::numbers::pi;
    for (const Patch& patch : patches) {
        const double elevation = Heading::of(patch.place - c.display.eye).elevation;
        lowest = std::min(lowest, elevation);
        highest = std::max(highest, elevation);
    }
    const bool isBelow = highest < rule.least * DEGREE;
    if (!patches.empty() && (isBelow || lowest > rule.most * DEGREE)) {
        c.report(rule.name, "eye point",
                 "all of the upright screen lies " + degreesText(isBelow ? -highest : lowest) + " degrees and more " +
                     (isBelow ? "below" : "above") +
                     " its horizon: check z of the EyePoint, and the height of the "
                     "screen");
    }
}

/// Whether a mesh is round about +y, as a dome whose pole points forward.
bool isRoundAboutForward(const Extent& box, const Point<double, 3>& parts) {
    constexpr double ALIKE = 0.1;
    constexpr double DEPTH = 0.8;  // of its width: more than half a sphere is no dome on the floor
    const Point<double, 3> size = box.size();
    return std::abs(size[0] - size[2]) < ALIKE * size[0] && std::abs(parts[0] - parts[2]) < ALIKE * parts[0] &&
           size[1] < DEPTH * size[0] && parts[0] > ALIKE;
}

/// The elevation of the lowest edge of all pictures, where they are known by their views.
std::optional<double> lowestEdge(const DisplayFacts& display) {
    std::optional<double> lowest;
    for (const ChannelFacts& channel : display.channels) {
        const ChannelView* const view = channel.view();
        if (view == nullptr) {
            return std::nullopt;
        }
        const double edge = Heading::of(view->middle).elevation - 0.5 * view->high;
        lowest = std::min(lowest.value_or(edge), edge);
    }
    return lowest;
}

/// A dome from a file with y up, read with z up, has its pole ahead. A dome that is meant to stand so is lit below the
/// horizon as well.
void judgeLyingDome(const ScreenCase& c, const std::vector<Patch>& patches) {
    constexpr double HORIZON = -10.0 * DEGREE;
    constexpr double MUCH = 0.3;
    const bool hasAxes = c.screen.getImportOrientationParam1() != L"Z" || c.screen.getImportOrientationParam2() != L"Y";
    const std::optional<double> edge = lowestEdge(c.display);
    if (hasAxes || c.display.surface->triangleMesh() == nullptr || !edge || *edge < HORIZON ||
        !isRoundAboutForward(c.display.box, partsOfNormals(patches))) {
        return;
    }
    double below = 0;
    double all = 0;
    for (const Patch& patch : patches) {
        const double area = norm(patch.normal);
        all += area;
        below += Heading::of(patch.place - c.display.eye).elevation < HORIZON ? area : 0.0;
    }
    if (all > 0 && below > MUCH * all) {
        c.report("lying-mesh", "screen",
                 "the mesh is a dome that lies on its back: its pole points forward, and about " +
                     percentText(below / all) +
                     " of it lie below the eye point, where no picture looks; state the axes of the file, "
                     "ImportOrientation up=\"Y\" forward=\"-Z\" for most OBJ files");
    }
}

}  // namespace

void judgePlace(const DisplayFacts& display, FindingList& found) {
    if (display.screen == nullptr || display.kind == nullptr || display.surface == nullptr ||
        !(display.surface->isParameterised() || display.surface->triangleMesh() != nullptr)) {
        return;
    }
    const ScreenCase c{display, *display.screen, found};
    const std::vector<Patch> patches = patchesOf(*display.surface);
    judgeBack(c);
    judgeSeam(c);
    judgeEyeHeight(c, patches);
    judgeLyingDome(c, patches);
}

}  // namespace Veltrani::DisplayReport
