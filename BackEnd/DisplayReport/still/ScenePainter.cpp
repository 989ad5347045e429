#include "DisplayReport/still/ScenePainter.h"

#include "DisplayReport/scene/DisplayScene.h"
#include "DisplayReport/scene/SceneAxes.h"
#include "DisplayReport/scene/SceneCamera.h"
#include "DisplayReport/still/MarkPainter.h"
#include "DisplayReport/still/PicturePainter.h"
#include "DisplayReport/still/ResidualPainter.h"
#include "DisplayReport/still/SceneLegend.h"
#include "DisplayReport/still/StillLibrary.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

namespace Veltrani::DisplayReport {

namespace {

using P3 = Point<double, 3>;
using Polygon = std::vector<P3>;

constexpr Colour WHITE{255, 255, 255};
constexpr Colour BLACK{0, 0, 0};
constexpr Colour CONTENT_COLOUR{214, 221, 229};
constexpr Colour MEASURED_COLOUR{226, 219, 203};
constexpr Colour BORDER_COLOUR{120, 128, 138};
constexpr Colour SCALE_COLOUR{140, 147, 155};
constexpr Colour CLOUD_COLOUR{70, 140, 125};
constexpr Colour EYE_COLOUR{20, 20, 20};

/// Shares of the colour's light: of a surface that is seen edge on, and what facing it adds.
constexpr double LEAST_LIGHT = 0.72;
/// Steps of that light: neighbours of one colour are painted at once, without seams.
constexpr double LIGHT_STEPS = 24;
/// The opacity of a screen that is seen from behind, and of a part of a mirror.
constexpr double BEHIND_OPACITY = 0.12;
constexpr double MIRROR_OPACITY = 0.16;
/// The opacity of a screen that is seen by way of a mirror.
constexpr double MIRRORED_OPACITY = 0.5;
/// The opacity of the picture of a channel on the screen.
constexpr double PICTURE_OPACITY = 0.42;
/// Pixels, in a picture of a thousand lines.
constexpr double THIN = 1.1;
constexpr double THICK = 2.2;
constexpr double DOT = 2.6;
constexpr double SMALLEST_DOT = 0.5;
/// The most that the radius of a dot is of the distance to the next one.
constexpr double CLOSE = 0.17;
constexpr double CLOUD_DOT = 0.8;
constexpr double PLACE_DOT = 5;
constexpr double REFERENCE_HEIGHT = 1000;
/// Cosine of the angle to the camera's direction, 10 degrees, within which an axis is seen end on.
constexpr double END_ON = 0.985;
/// The axis that has its title above its end.
constexpr std::size_t UPRIGHT = 2;
/// Pieces of a line, so that it can be sorted between surfaces.
constexpr int PIECES = 12;

/// The parts of a polygon that are ahead of the camera.
Polygon clipped(const Polygon& seen, double nearest) {
    Polygon kept;
    for (std::size_t i = 0; i < seen.size(); ++i) {
        const P3& a = seen[i];
        const P3& b = seen[(i + 1) % seen.size()];
        if (a[2] >= nearest) {
            kept.push_back(a);
        }
        if ((a[2] >= nearest) != (b[2] >= nearest)) {
            kept.push_back(a + (b - a) * ((nearest - a[2]) / (b[2] - a[2])));
        }
    }
    return kept;
}

class Painting {
public:
    Painting(const DisplayScene& scene, const std::string& view, int width, int height)
        : m_scene(scene),
          m_legend(width, height, scene),
          m_camera(scene, view, m_legend.sceneWidth(), m_legend.sceneHeight()),
          m_pixel(std::max(1.0, height / REFERENCE_HEIGHT)) {
        m_drawing.width = width;
        m_drawing.height = height;
    }

    Drawing paint() {
        addScreen();
        addCloud();
        addScales();
        for (const SceneChannel& channel : m_scene.channels) {
            addPicture(channel);
            addFrustum(channel);
            addTargets(channel);
        }
        addPlaces();
        PicturePainter(m_scene, m_camera, m_legend, m_pixel).addTo(m_drawing);
        MarkPainter(m_camera, m_legend, m_pixel).addTo(m_drawing, m_scene);
        m_legend.addTo(m_drawing);
        ResidualPainter(m_camera, m_legend, m_pixel).addTo(m_drawing, m_scene);
        return std::move(m_drawing);
    }

private:
    [[nodiscard]] P3 inPicture(const P3& seen) const {
        const P3 placed = m_camera.placed(seen);
        return {placed[0], placed[1] + m_legend.sceneTop(), placed[2]};
    }

    void addTriangle(const P3& a, const P3& b, const P3& c, const Colour& colour, double opacity) {
        const Polygon kept = clipped({m_camera.seen(a), m_camera.seen(b), m_camera.seen(c)}, m_camera.nearest());
        for (std::size_t i = 2; i < kept.size(); ++i) {
            m_drawing.triangles.push_back(
                {{inPicture(kept[0]), inPicture(kept[i - 1]), inPicture(kept[i])}, colour, opacity});
        }
    }

    void addPiece(const P3& from, const P3& to, const Colour& colour, double width, bool isDashed = false) {
        if (const auto placed = m_camera.placeLine(from, to)) {
            const P3 down{0.0, m_legend.sceneTop(), 0.0};
            m_drawing.lines.push_back({placed->first + down, placed->second + down, colour, width * m_pixel, isDashed});
        }
    }

    void addLine(const P3& from, const P3& to, const Colour& colour, double width) {
        for (int i = 0; i < PIECES; ++i) {
            const P3 step = (to - from) * (1.0 / PIECES);
            addPiece(from + step * i, from + step * (i + 1), colour, width);
        }
    }

    /// Dashed where it lies on a continuation of the screen, on which there is no light.
    void addOutline(const SceneChannel& channel, const Colour& colour) {
        const Polygon& points = channel.targets.boundary;
        const auto isBeyond = [&](std::size_t i) { return i < channel.beyond.size() && channel.beyond[i]; };
        for (std::size_t i = 0; i < points.size(); ++i) {
            const std::size_t next = (i + 1) % points.size();
            const bool isDashed = isBeyond(i) || isBeyond(next);
            addPiece(points[i], points[next], colour, isDashed ? THIN : THICK, isDashed);
        }
    }

    void addRim(const SceneChannel& channel, const Colour& colour) {
        const Polygon& points = channel.frustum->rim;
        for (std::size_t i = 0; i < points.size(); ++i) {
            const PieceLook look = i < channel.rimPieces.size() ? channel.rimPieces[i] : PieceLook::WHOLE;
            if (look != PieceLook::NONE) {
                addPiece(points[i], points[(i + 1) % points.size()], colour, THIN, look == PieceLook::DASHED);
            }
        }
    }

    void addDisc(const P3& point, const Colour& colour, double radius) {
        const P3 seen = m_camera.seen(point);
        if (seen[2] >= m_camera.nearest()) {
            m_drawing.discs.push_back({inPicture(seen), colour, radius * m_pixel});
        }
    }

    /// True when a triangle is seen from the side that the eye is on, or when there is no eye.
    [[nodiscard]] bool isSeenByAudience(const P3& corner, const P3& normal) const {
        if (m_scene.eyes.empty()) {
            return true;
        }
        const double camera = dot(m_camera.position() - corner, normal);
        return camera * dot(m_scene.eyes.front().point - corner, normal) >= 0;
    }

    void addScreen() {
        if (m_scene.surfaces.empty()) {
            return;
        }
        const SceneSurface& surface = m_scene.surfaces.back();
        if (surface.shading) {
            for (const ShadedRegion& region : surface.shading->regions) {
                addScreenTriangles(surface.shading->vertices, region.triangles,
                                   softShade(coloursOf(region, ShadeBy::COUNT).front()));
            }
        } else {
            addScreenTriangles(surface.vertices, surface.triangles,
                               surface.name == "measured" ? MEASURED_COLOUR : CONTENT_COLOUR);
        }
        std::stable_sort(m_drawing.triangles.begin(), m_drawing.triangles.end(), [](const auto& a, const auto& b) {
            const auto look = [](const Drawing::Triangle& t) {
                return std::tuple(t.opacity, t.colour.red, t.colour.green, t.colour.blue);
            };
            return look(a) < look(b);
        });
        for (const auto& [a, b] : surface.border) {
            addPiece(surface.vertices[a], surface.vertices[b], BORDER_COLOUR, THIN);
        }
    }

    void addScreenTriangles(const Polygon& vertices, const std::vector<SceneSurface::Triangle>& triangles,
                            const Colour& colour) {
        for (const auto& [a, b, c] : triangles) {
            addScreenTriangle(vertices[a], vertices[b], vertices[c], colour);
        }
    }

    /// Where there is a mirror, light passes the screen on its way, which would be hidden.
    [[nodiscard]] double frontOpacity() const { return m_scene.mirror ? MIRRORED_OPACITY : 1; }

    void addScreenTriangle(const P3& a, const P3& b, const P3& c, const Colour& colour) {
        const P3 normal = cross(b - a, c - a);
        const double length = norm(normal);
        if (!(length > 0)) {
            return;
        }
        const double opacity = isSeenByAudience(a, normal) ? frontOpacity() : BEHIND_OPACITY;
        // What shines through is of one colour and painted at once, since seams would show.
        // One direction for all of it: a flat wall is of one shade.
        const double facing = opacity < 1 ? 1 : std::abs(dot(normal, m_camera.direction())) / length;
        const double step = std::round(LIGHT_STEPS * facing) / LIGHT_STEPS;
        addTriangle(a, b, c, mixed(BLACK, colour, LEAST_LIGHT + (1 - LEAST_LIGHT) * step), opacity);
    }

    void addCloud() {
        if (m_scene.cloud) {
            for (const P3& point : m_scene.cloud->points) {
                addDisc(point, CLOUD_COLOUR, CLOUD_DOT);
            }
        }
    }

    /// The cells of the grid of which all corners lie on the screen, where it is not known what is lit.
    void addPicture(const SceneChannel& channel) {
        if (!m_scene.surfaces.empty() && m_scene.surfaces.back().shading) {
            return;
        }
        std::map<std::pair<int, int>, P3> places;
        for (const GridTarget& target : channel.targets.grid) {
            places.emplace(std::pair(target.column, target.row), target.point);
        }
        for (const auto& [cell, a] : places) {
            const int step = m_scene.targetStep;
            const auto right = places.find({cell.first + step, cell.second});
            const auto down = places.find({cell.first, cell.second + step});
            const auto across = places.find({cell.first + step, cell.second + step});
            if (right != places.end() && down != places.end() && across != places.end()) {
                addTriangle(a, right->second, across->second, channel.colour, PICTURE_OPACITY);
                addTriangle(a, across->second, down->second, channel.colour, PICTURE_OPACITY);
            }
        }
    }

    void addTargets(const SceneChannel& channel) {
        // Where targets stand close together dots are smaller, so that the shades between them are seen.
        const double size =
            std::clamp(CLOSE * targetSpacing(channel, m_camera, m_scene.targetStep) / m_pixel, SMALLEST_DOT, DOT);
        const Colour dark = mixed(channel.colour, BLACK, 0.25);
        addOutline(channel, dark);
        if (!m_scene.marks.empty() || m_scene.residuals) {
            return;  // single targets would hide what the axes or the measured points show
        }
        for (const GridTarget& target : channel.targets.grid) {
            addDisc(target.point, dark, size);
        }
    }

    void addFrustum(const SceneChannel& channel) {
        if (!channel.frustum) {
            return;
        }
        const ChannelFrustum& frustum = *channel.frustum;
        const Colour pale = mixed(channel.colour, WHITE, 0.25);
        for (const Polygon& edge : frustum.edges) {
            for (std::size_t i = 1; i < edge.size(); ++i) {
                addLine(edge[i - 1], edge[i], pale, THIN);
            }
        }
        addRim(channel, pale);
        addDisc(frustum.apex, channel.colour, PLACE_DOT);
        for (const auto& [a, b, c] : frustum.mirrorTriangles) {
            addTriangle(frustum.mirrorVertices[a], frustum.mirrorVertices[b], frustum.mirrorVertices[c], channel.colour,
                        MIRROR_OPACITY);
        }
    }

    void addPlaces() {
        for (const ScenePlace& eye : m_scene.eyes) {
            addDisc(eye.point, EYE_COLOUR, PLACE_DOT);
            addName(eye);
        }
        addMirrorName();
    }

    void addName(const ScenePlace& eye) {
        if (m_camera.place(eye.point)) {
            const AxisLayout::Place place = flat(eye.point);
            const double beside = PLACE_DOT * m_pixel + 0.5 * labelSize();
            m_drawing.texts.push_back({place[0] + beside, place[1] + labelSize() / 2, eye.name, labelSize(), EYE_COLOUR,
                                       Drawing::Anchor::LEFT, true});
        }
    }

    /// At the part of the mirror that lies lowest in the picture, where the screen is least in the way.
    void addMirrorName() {
        std::optional<P3> lowest;
        for (const SceneChannel& channel : m_scene.channels) {
            if (!channel.frustum) {
                continue;
            }
            for (const P3& point : channel.frustum->mirrorVertices) {
                if (m_camera.place(point) && (!lowest || flat(point)[1] > flat(*lowest)[1])) {
                    lowest = point;
                }
            }
        }
        if (lowest) {
            const AxisLayout::Place place = flat(*lowest);
            addLabel({place[0], place[1] + 2 * labelSize()}, "mirror");
        }
    }

    void addScales() {
        const SceneAxes scales = SceneAxes::of(m_scene.frame(), m_scene.unit);
        const SceneAxes::Edges edges = SceneAxes::edgesFor(scales.box, m_camera.direction());
        for (std::size_t number = 0; number < scales.axes.size(); ++number) {
            addScale(scales.axes[number], edges, number);
        }
    }

    void addScale(const SceneAxes::Axis& axis, const SceneAxes::Edges& edges, std::size_t number) {
        // As long as half a letter is high.
        const P3 tick = edges.outwards[number] * (0.5 * m_legend.letterSize() / m_camera.magnification());
        addLine(edges.starts[number], edges.ends[number], SCALE_COLOUR, THIN);
        std::vector<P3> feet;
        AxisLayout::Box widest{0.0, labelBox("")[1]};
        for (const SceneAxes::Tick& mark : axis.ticks) {
            feet.push_back(edges.starts[number]);
            feet.back()[number] = mark.value;
            addPiece(feet.back(), feet.back() + tick, SCALE_COLOUR, THIN);
            widest[0] = std::max(widest[0], labelBox(mark.text)[0]);
        }
        const AxisLayout layout(flat(edges.starts[number]), flat(edges.ends[number]), flat(edges.starts[number] + tick),
                                m_legend.letterSize());
        if (isEndOn(number) || !layout.hasRoomFor(axis.ticks.size(), widest)) {
            return;
        }
        for (std::size_t i = 0; i < feet.size(); ++i) {
            const std::string& text = axis.ticks[i].text;
            addLabel(layout.number(flat(feet[i]), labelBox(text)), text);
        }
        const AxisLayout::Box box = labelBox(axis.title);
        addLabel(number == UPRIGHT ? layout.titleAtEnd(box, widest) : layout.title(box, widest), axis.title);
    }

    /// True for an axis along which the camera looks: its numbers would stand in the midst of the scene.
    [[nodiscard]] bool isEndOn(std::size_t axis) const { return std::abs(m_camera.direction()[axis]) > END_ON; }

    /// Where a place of the frame, which is ahead, lies in the picture.
    [[nodiscard]] AxisLayout::Place flat(const P3& world) const {
        const P3 place = inPicture(m_camera.seen(world));
        return {place[0], place[1]};
    }

    [[nodiscard]] double labelSize() const { return 0.8 * m_legend.letterSize(); }

    [[nodiscard]] AxisLayout::Box labelBox(const std::string& text) const {
        constexpr double WITH_BRACKETS = 1.4;  // of the height of a capital letter
        return {StillLibrary::get().width(text, labelSize()), WITH_BRACKETS * labelSize()};
    }

    /// Moved to the right or left until all of it is beside the list of channels.
    void addLabel(const AxisLayout::Place& middle, const std::string& text) {
        const double half = labelBox(text)[0] / 2 + 0.5 * labelSize();
        const double right = std::max(half, std::min(m_legend.sceneWidth() - half, middle[0]));
        m_drawing.texts.push_back(
            {right, middle[1] + labelSize() / 2, text, labelSize(), SCALE_COLOUR, Drawing::Anchor::MIDDLE});
    }

    const DisplayScene& m_scene;
    SceneLegend m_legend;
    SceneCamera m_camera;
    double m_pixel;
    Drawing m_drawing;
};

}  // namespace

ScenePainter::ScenePainter(std::string view, int width, int height)
    : m_view(std::move(view)), m_width(width), m_height(height) {}

Drawing ScenePainter::paint(const DisplayScene& scene) const {
    return Painting(scene, m_view, m_width, m_height).paint();
}

}  // namespace Veltrani::DisplayReport
