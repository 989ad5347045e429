#include "DisplayReport/still/DrawingRaster.h"

#include "DisplayReport/still/Drawing.h"
#include "DisplayReport/still/StrokeFont.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

using Place = Drawing::Place;

/// Twice the area of the triangle; above zero when it turns to the right on the paper.
double turn(const Place& a, const Place& b, const Place& c) {
    return (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]);
}

/// The pixels that a triangle can cover along one axis.
std::pair<int, int> span(const Drawing::Triangle& triangle, std::size_t axis, int end) {
    const auto& [a, b, c] = triangle.corners;
    const auto [low, high] = std::minmax({a[axis], b[axis], c[axis]});
    return {static_cast<int>(std::clamp(std::floor(low), 0.0, static_cast<double>(end))),
            static_cast<int>(std::clamp(std::ceil(high), 0.0, static_cast<double>(end)))};
}

using Place = Drawing::Place;

/// Samples along each side of a pixel.
constexpr int SAMPLES = 3;
/// Rows of pixels that are drawn at once: bounds the memory for their samples.
constexpr int BAND_ROWS = 64;
constexpr Colour PAPER{255, 255, 255};
/// Width of the strokes of letters, of the height of a capital one.
constexpr double STROKE = 0.13;
/// Corners of the polygon that stands for a disc.
constexpr int DISC_CORNERS = 20;

constexpr double ON_TOP = std::numeric_limits<double>::infinity();

/// How a shape is put on the paper.
struct Ink {
    Colour colour;
    double opacity = 1;
    bool hides = false;  ///< keeps farther shapes from being drawn later
    double lift = 0;     ///< see `Drawing::LIFT`
};

/// Some rows of a picture, sample by sample.
class Band {
public:
    Band(int width, int firstRow, int rows)
        : m_columns(width * SAMPLES),
          m_firstRow(firstRow * SAMPLES),
          m_rows(rows * SAMPLES),
          m_colours(static_cast<std::size_t>(m_columns) * static_cast<std::size_t>(m_rows), PAPER),
          m_nearness(m_colours.size(), 0.0F) {}

    void fill(const std::array<Place, 3>& corners, const Ink& ink) {
        std::array<Place, 3> c = corners;
        for (Place& corner : c) {
            corner = {corner[0] * SAMPLES, corner[1] * SAMPLES - m_firstRow, corner[2]};
        }
        double twiceArea = turn(c[0], c[1], c[2]);
        if (twiceArea < 0) {
            std::swap(c[1], c[2]);
            twiceArea = -twiceArea;
        }
        if (!(twiceArea > 0)) {
            return;
        }
        const auto [left, right] = span(c, 0, m_columns);
        const auto [top, bottom] = span(c, 1, m_rows);
        for (int row = top; row < bottom; ++row) {
            for (int column = left; column < right; ++column) {
                const Place sample{column + 0.5, row + 0.5, 0.0};
                const double a = turn(c[1], c[2], sample);
                const double b = turn(c[2], c[0], sample);
                const double d = turn(c[0], c[1], sample);
                if (isInside(a, c[1], c[2]) && isInside(b, c[2], c[0]) && isInside(d, c[0], c[1])) {
                    put(column, row, (a * c[0][2] + b * c[1][2] + d * c[2][2]) / twiceArea, ink);
                }
            }
        }
    }

    /// The mean of the samples of each pixel.
    void writeTo(PngPicture& picture) const {
        for (int row = 0; row < m_rows / SAMPLES; ++row) {
            for (int column = 0; column < m_columns / SAMPLES; ++column) {
                std::array<int, 3> sum{};
                for (int i = 0; i < SAMPLES * SAMPLES; ++i) {
                    const Colour& colour =
                        m_colours[index(column * SAMPLES + i % SAMPLES, row * SAMPLES + i / SAMPLES)];
                    sum[0] += colour.red;
                    sum[1] += colour.green;
                    sum[2] += colour.blue;
                }
                for (const int part : sum) {
                    constexpr int HALF = SAMPLES * SAMPLES / 2;
                    picture.colours.push_back(static_cast<unsigned char>((part + HALF) / (SAMPLES * SAMPLES)));
                }
            }
        }
    }

private:
    /// Twice the area of the triangle; above zero when it turns to the right on the paper.
    static double turn(const Place& a, const Place& b, const Place& c) {
        return (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]);
    }

    /// A sample on the edge of two triangles belongs to one of them.
    static bool isInside(double turned, const Place& from, const Place& to) {
        return turned > 0 || (turned == 0 && (to[1] < from[1] || (to[1] == from[1] && to[0] > from[0])));
    }

    /// The samples that a triangle can cover along one axis.
    static std::pair<int, int> span(const std::array<Place, 3>& c, std::size_t axis, int end) {
        const double low = std::min({c[0][axis], c[1][axis], c[2][axis]});
        const double high = std::max({c[0][axis], c[1][axis], c[2][axis]});
        const double last = end;
        return {static_cast<int>(std::clamp(std::floor(low - 0.5), 0.0, last)),
                static_cast<int>(std::clamp(std::ceil(high + 0.5), 0.0, last))};
    }

    [[nodiscard]] std::size_t index(int column, int row) const {
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(m_columns) + static_cast<std::size_t>(column);
    }

    void put(int column, int row, double nearness, const Ink& ink) {
        const std::size_t i = index(column, row);
        if (nearness * (1 + ink.lift) < static_cast<double>(m_nearness[i])) {
            return;
        }
        m_colours[i] = ink.opacity < 1 ? mixed(m_colours[i], ink.colour, ink.opacity) : ink.colour;
        if (ink.hides) {
            m_nearness[i] = static_cast<float>(nearness);
        }
    }

    int m_columns;
    int m_firstRow;
    int m_rows;
    std::vector<Colour> m_colours;
    std::vector<float> m_nearness;
};

void fillLine(Band& band, const Place& from, const Place& to, double width, const Ink& ink) {
    const double across = to[0] - from[0];
    const double down = to[1] - from[1];
    const double length = std::hypot(across, down);
    if (!(length > 0)) {
        return;
    }
    const Place side{-down / length * width / 2, across / length * width / 2, 0.0};
    band.fill({from + side, to + side, to - side}, ink);
    band.fill({from + side, to - side, from - side}, ink);
}

void fillDisc(Band& band, const Place& centre, double radius, const Ink& ink) {
    const auto corner = [&](int i) {
        const double angle = 2 * 3.141592653589793 * i / DISC_CORNERS;
        return centre + Place{radius * std::cos(angle), radius * std::sin(angle), 0.0};
    };
    for (int i = 0; i < DISC_CORNERS; ++i) {
        band.fill({centre, corner(i), corner(i + 1)}, ink);
    }
}

void fillText(Band& band, const Drawing::Text& text) {
    const double width = StrokeFont::width(text.text, text.size);
    const double shift = text.anchor == Drawing::Anchor::LEFT     ? 0
                         : text.anchor == Drawing::Anchor::MIDDLE ? width / 2
                                                                  : width;
    const Ink ink{text.colour, 1, false, 0};
    const double stroke = std::max(1.0, STROKE * text.size);
    for (const StrokeFont::Stroke& line : StrokeFont::strokes(text.text, text.size)) {
        const auto place = [&](const Point<double, 2>& corner) {
            return Place{text.right - shift + corner[0], text.down - corner[1], ON_TOP};
        };
        for (std::size_t i = 0; i < line.size(); ++i) {
            fillDisc(band, place(line[i]), stroke / 2, ink);
            if (i > 0) {
                fillLine(band, place(line[i - 1]), place(line[i]), stroke, ink);
            }
        }
    }
}

void drawOnTop(Band& band, const Drawing& drawing) {
    for (const Drawing::Box& box : drawing.boxes) {
        const Ink ink{box.colour, 1, false, 0};
        const Place a{box.left, box.top, ON_TOP};
        const Place b{box.left + box.width, box.top, ON_TOP};
        const Place c{box.left + box.width, box.top + box.height, ON_TOP};
        const Place d{box.left, box.top + box.height, ON_TOP};
        band.fill({a, b, c}, ink);
        band.fill({a, c, d}, ink);
    }
    for (const Drawing::Disc& disc : drawing.discsOnTop) {
        fillDisc(band, {disc.centre[0], disc.centre[1], ON_TOP}, disc.radius, {disc.colour, 1, false, 0});
    }
    for (const Drawing::Text& text : drawing.texts) {
        fillText(band, text);
    }
}

void draw(Band& band, const Drawing& drawing) {
    for (const Drawing::Triangle& triangle : drawing.triangles) {
        if (triangle.opacity >= 1) {
            band.fill(triangle.corners, {triangle.colour, 1, true, 0});
        }
    }
    for (const Drawing::Triangle& triangle : drawing.triangles) {
        if (triangle.opacity < 1) {
            band.fill(triangle.corners, {triangle.colour, triangle.opacity, false, Drawing::LIFT});
        }
    }
    for (const Drawing::Line& line : drawing.lines) {
        fillLine(band, line.from, line.to, line.width, {line.colour, 1, false, Drawing::LIFT});
    }
    for (const Drawing::Disc& disc : drawing.discs) {
        fillDisc(band, disc.centre, disc.radius, {disc.colour, 1, false, Drawing::LIFT});
    }
    drawOnTop(band, drawing);
}

}  // namespace

NearnessMap::NearnessMap(const Drawing& drawing)
    : m_width(std::max(0, drawing.width)),
      m_height(std::max(0, drawing.height)),
      m_nearness(static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_height), 0.0F) {
    for (const Drawing::Triangle& triangle : drawing.triangles) {
        if (triangle.opacity >= 1) {
            add(triangle);
        }
    }
}

void NearnessMap::add(const Drawing::Triangle& triangle) {
    const auto& [a, b, c] = triangle.corners;
    const double twiceArea = turn(a, b, c);
    if (!(std::abs(twiceArea) > 0)) {
        return;
    }
    const auto [left, right] = span(triangle, 0, m_width);
    const auto [top, bottom] = span(triangle, 1, m_height);
    for (int row = top; row < bottom; ++row) {
        for (int column = left; column < right; ++column) {
            const Place middle{column + 0.5, row + 0.5, 0.0};
            const double shareA = turn(b, c, middle) / twiceArea;
            const double shareB = turn(c, a, middle) / twiceArea;
            const double shareC = turn(a, b, middle) / twiceArea;
            if (shareA >= 0 && shareB >= 0 && shareC >= 0) {
                float& nearest = m_nearness[static_cast<std::size_t>(row) * static_cast<std::size_t>(m_width) +
                                            static_cast<std::size_t>(column)];
                nearest = std::max(nearest, static_cast<float>(shareA * a[2] + shareB * b[2] + shareC * c[2]));
            }
        }
    }
}

bool NearnessMap::shows(const Drawing::Place& place) const {
    const bool isInside = place[0] >= 0 && place[0] < m_width && place[1] >= 0 && place[1] < m_height;
    if (!isInside) {
        return true;
    }
    const double lifted = place[2] * (1 + Drawing::LIFT);
    const int column = static_cast<int>(place[0]);
    const int row = static_cast<int>(place[1]);
    for (int y = std::max(0, row - 1); y <= std::min(m_height - 1, row + 1); ++y) {
        for (int x = std::max(0, column - 1); x <= std::min(m_width - 1, column + 1); ++x) {
            const auto pixel =
                static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) + static_cast<std::size_t>(x);
            if (lifted >= static_cast<double>(m_nearness[pixel])) {
                return true;
            }
        }
    }
    return false;
}

PngPicture rasterised(const Drawing& drawing) {
    PngPicture picture{static_cast<std::size_t>(drawing.width), static_cast<std::size_t>(drawing.height), {}};
    for (int row = 0; row < drawing.height; row += BAND_ROWS) {
        Band band(drawing.width, row, std::min(BAND_ROWS, drawing.height - row));
        draw(band, drawing);
        band.writeTo(picture);
    }
    return picture;
}

}  // namespace Veltrani::DisplayReport
