#include "DisplayReport/still/ChannelPicturePainter.h"

#include "Common/Finite.h"
#include "DisplayReport/basics/NumberText.h"
#include "DisplayReport/scene/DisplayScene.h"
#include "DisplayReport/still/ResidualPen.h"
#include "DisplayReport/still/SceneLegend.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

namespace Veltrani::DisplayReport {

namespace {

constexpr Colour PAPER{255, 255, 255};
constexpr Colour BLACK{0, 0, 0};
constexpr Colour SCALE_COLOUR{95, 103, 112};
constexpr Colour GRID_COLOUR{205, 210, 216};
constexpr double REFERENCE_HEIGHT = 1000;
/// How much darker vectors are than the channel's colour, and share of it in its picture.
constexpr double DARKER = 0.55;
constexpr double PALENESS = 0.9;
/// Pixels, in a picture of a thousand lines.
constexpr double THIN = 1.1;
constexpr double EDGE = 2;
/// Free space around the picture, for its scales, in heights of a letter.
constexpr double LEFT = 7;
constexpr double RIGHT = 3;
constexpr double ABOVE = 2;
constexpr double BELOW = 5;
constexpr double LABEL_SHARE = 0.8;
/// About as many lines across the longer side.
constexpr double LINES = 8;

/// One drawing.
class PictureOfChannel {
public:
    PictureOfChannel(const DisplayScene& scene, std::size_t number, int width, int height)
        : m_scene(scene),
          m_channel(scene.channels.at(number)),
          m_legend(width, height, scene),
          m_pixel(std::max(1.0, height / REFERENCE_HEIGHT)) {
        m_drawing.width = width;
        m_drawing.height = height;
        const double letter = m_legend.letterSize();
        const double room = m_legend.sceneWidth() - (LEFT + RIGHT) * letter;
        const double high = m_legend.sceneHeight() - (ABOVE + BELOW) * letter;
        m_pixels = {std::max(1.0, static_cast<double>(m_channel.width)),
                    std::max(1.0, static_cast<double>(m_channel.height))};
        m_scale = std::max(std::min(room / m_pixels[0], high / m_pixels[1]), 1e-6);
        m_left = LEFT * letter + (room - m_scale * m_pixels[0]) / 2;
        m_top = m_legend.sceneTop() + ABOVE * letter + (high - m_scale * m_pixels[1]) / 2;
    }

    Drawing paint() {
        addFrame();
        addVectors();
        m_legend.addTo(m_drawing);
        pen().addLabels(m_drawing, m_vectors);
        pen().addKey(m_drawing, m_legend.residualKey(),
                     {"from stated to measured place", m_scene.residuals->inPicture, m_scale, "pixels", ""});
        return std::move(m_drawing);
    }

private:
    [[nodiscard]] ResidualPen pen() const { return {m_pixel, m_legend.letterSize()}; }

    /// A place of the picture in pixels from its bottom left corner, in the drawing.
    [[nodiscard]] ResidualPen::Place placed(const Point<double, 2>& pixels) const {
        return {m_left + m_scale * pixels[0], m_top + m_scale * (m_pixels[1] - pixels[1])};
    }

    void addLine(const Point<double, 2>& from, const Point<double, 2>& to, const Colour& colour, double width) {
        const auto a = placed(from);
        const auto b = placed(to);
        m_drawing.lines.push_back({{a[0], a[1], 1}, {b[0], b[1], 1}, colour, width * m_pixel});
    }

    void addTriangle(const std::array<Point<double, 2>, 3>& corners) {
        Drawing::Triangle triangle;
        for (std::size_t i = 0; i < corners.size(); ++i) {
            const auto place = placed(corners[i]);
            triangle.corners[i] = {place[0], place[1], 0.5};
        }
        triangle.colour = mixed(m_channel.colour, PAPER, PALENESS);
        m_drawing.triangles.push_back(triangle);
    }

    void addFrame() {
        const Point<double, 2> right{m_pixels[0], 0.0};
        const Point<double, 2> top{0.0, m_pixels[1]};
        addTriangle({Point<double, 2>{}, right, m_pixels});
        addTriangle({Point<double, 2>{}, m_pixels, top});
        addScales();
        for (const auto& [from, to] : {std::pair(Point<double, 2>{}, right), std::pair(right, m_pixels),
                                       std::pair(m_pixels, top), std::pair(top, Point<double, 2>{})}) {
            addLine(from, to, SCALE_COLOUR, EDGE);
        }
    }

    /// Lines at round pixels, with their numbers below and to the left.
    void addScales() {
        const double step = ResidualCollector::roundFactor(1, std::max(m_pixels[0], m_pixels[1]) / LINES);
        const double size = LABEL_SHARE * m_legend.letterSize();
        for (std::size_t axis = 0; axis < 2; ++axis) {
            for (int i = 0; i * step <= m_pixels[axis]; ++i) {
                Point<double, 2> from;
                from[axis] = i * step;
                Point<double, 2> to = from;
                to[1 - axis] = m_pixels[1 - axis];
                addLine(from, to, GRID_COLOUR, THIN);
                const auto place = placed(from);
                const std::string text = significantText(i * step);
                if (axis == 0) {
                    m_drawing.texts.push_back(
                        {place[0], place[1] + 2 * size, text, size, SCALE_COLOUR, Drawing::Anchor::MIDDLE});
                } else {
                    m_drawing.texts.push_back(
                        {place[0] - size, place[1] + size / 2, text, size, SCALE_COLOUR, Drawing::Anchor::RIGHT});
                }
            }
        }
        const auto below = placed({m_pixels[0] / 2, 0.0});
        m_drawing.texts.push_back({below[0], below[1] + 4 * size, "pixels of its picture, from the bottom left corner",
                                   size, SCALE_COLOUR, Drawing::Anchor::MIDDLE});
    }

    void addVectors() {
        for (const SceneResidual& residual : m_channel.residuals) {
            const Point<double, 2> from{residual.picture[0] * m_pixels[0], residual.picture[1] * m_pixels[1]};
            ResidualPen::Vector vector{placed(from),       {},    mixed(m_channel.colour, BLACK, DARKER),
                                       residual.isOutlier, false, residual.line};
            if (isFinite(residual.pixels)) {
                const auto [offset, isCut] =
                    drawnResidual(residual.pixels, m_scene.residuals->inPicture, m_scene.residuals->longestInPicture);
                vector.to = placed(from + offset);
                vector.isCut = isCut;
            }
            pen().add(m_drawing, vector);
            m_vectors.push_back(vector);
        }
    }

    const DisplayScene& m_scene;
    const SceneChannel& m_channel;
    SceneLegend m_legend;
    double m_pixel;
    Point<double, 2> m_pixels;  ///< of the channel's picture
    double m_scale = 1;         ///< of the drawing, for one of the picture
    double m_left = 0;
    double m_top = 0;
    std::vector<ResidualPen::Vector> m_vectors;
    Drawing m_drawing;
};

}  // namespace

Drawing ChannelPicturePainter::paint(const DisplayScene& scene, std::size_t number) const {
    DisplayScene flat;
    flat.title = scene.title + ": residuals in the picture of " + scene.channels.at(number).targets.name;
    flat.unit = scene.unit;
    flat.channels = scene.channels;
    flat.residuals = scene.residuals;
    flat.complete = scene.complete;
    // Remarks on what the screen shows mean nothing here; what is wrong does.
    flat.notes = scene.complete ? std::vector<std::string>() : scene.notes;
    if (scene.channels[number].residuals.empty()) {
        flat.notes.insert(flat.notes.begin(), "the report has no measured point of this channel");
    }
    return PictureOfChannel(flat, number, m_width, m_height).paint();
}

}  // namespace Veltrani::DisplayReport
