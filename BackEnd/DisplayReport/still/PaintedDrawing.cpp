#include "DisplayReport/still/PaintedDrawing.h"

#include "Common/QuotedText.h"
#include "DisplayReport/still/NearnessMap.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <optional>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

using Corner = Drawing::Place;
using Corners = std::array<Corner, 3>;
using Shape = PaintedDrawing::Shape;
using Kind = Shape::Kind;

/// Around opaque triangles, so that no paper shines through between neighbours; pixels.
constexpr double HAIR = 0.6;
/// Pieces of this size are seen or hidden as a whole; pixels.
constexpr double FINE = 2;
/// Pieces above this size are halved before they are judged; pixels.
constexpr double COARSE = 32;
/// How far beyond the edges of the picture shapes are kept; pixels.
constexpr double MARGIN = 64;

double lengthOf(const Corner& a, const Corner& b) {
    return std::hypot(b[0] - a[0], b[1] - a[1]);
}

PaintedDrawing::Place flat(const Corner& corner) {
    return {corner[0], corner[1]};
}

Corner middleOf(const Corners& c) {
    return (c[0] + c[1] + c[2]) * (1.0 / 3);
}

/// The picture with some room around it.
class Paper {
public:
    Paper(int width, int height) : m_ends{width + MARGIN, height + MARGIN} {}

    [[nodiscard]] std::vector<Corner> clipped(std::vector<Corner> area) const {
        for (std::size_t axis = 0; axis < m_ends.size(); ++axis) {
            area = clipped(area, [&](const Corner& corner) { return corner[axis] + MARGIN; });
            area = clipped(area, [&](const Corner& corner) { return m_ends[axis] - corner[axis]; });
        }
        return area;
    }

    /// None for a line that passes by.
    [[nodiscard]] std::optional<std::pair<Corner, Corner>> clipped(Corner from, Corner to) const {
        for (std::size_t axis = 0; axis < m_ends.size(); ++axis) {
            if (!cut(from, to, axis, -MARGIN, m_ends[axis]) || !cut(to, from, axis, -MARGIN, m_ends[axis])) {
                return std::nullopt;
            }
        }
        return std::pair(from, to);
    }

private:
    /// @param inside above zero for what stays
    template <class Inside>
    static std::vector<Corner> clipped(const std::vector<Corner>& area, Inside&& inside) {
        std::vector<Corner> kept;
        for (std::size_t i = 0; i < area.size(); ++i) {
            const Corner& a = area[i];
            const Corner& b = area[(i + 1) % area.size()];
            const double atA = inside(a);
            const double atB = inside(b);
            if (atA >= 0) {
                kept.push_back(a);
            }
            if ((atA >= 0) != (atB >= 0)) {
                kept.push_back(a + (b - a) * (atA / (atA - atB)));
            }
        }
        return kept;
    }

    /// Moves an end that is outside; false when both are on the same side.
    static bool cut(Corner& end, const Corner& other, std::size_t axis, double least, double most) {
        const double limit = end[axis] < least ? least : most;
        if (end[axis] >= least && end[axis] <= most) {
            return true;
        }
        const bool isBeyond = limit == least ? other[axis] < least : other[axis] > most;
        if (isBeyond) {
            return false;
        }
        end = end + (other - end) * ((limit - end[axis]) / (other[axis] - end[axis]));
        return true;
    }

    std::array<double, 2> m_ends;
};

class Painting {
public:
    explicit Painting(const Drawing& drawing)
        : m_drawing(drawing), m_paper(drawing.width, drawing.height), m_nearest(drawing) {}

    PaintedDrawing paint() {
        addTriangles();
        for (const Drawing::Line& line : m_drawing.lines) {
            addLine(line);
        }
        for (const Drawing::Disc& disc : m_drawing.discs) {
            if (m_nearest.shows(disc.centre)) {
                addDisc(disc);
            }
        }
        addOnTop();
        addOverTexts();
        return std::move(m_painted);
    }

private:
    /// What is painted next, together with what was painted last when both look alike.
    Shape& next(Kind kind, const Colour& colour, double opacity, double width, bool isDashed = false) {
        std::vector<Shape>& shapes = m_painted.shapes;
        if (shapes.empty() || shapes.back().kind != kind || !(shapes.back().colour == colour) ||
            shapes.back().opacity != opacity || shapes.back().width != width || shapes.back().isDashed != isDashed) {
            shapes.push_back({kind, colour, opacity, width, {}, isDashed});
        }
        return shapes.back();
    }

    void addTriangles() {
        std::vector<Drawing::Triangle> opaque;
        std::vector<Drawing::Triangle> others;
        for (const Drawing::Triangle& triangle : m_drawing.triangles) {
            (triangle.opacity < 1 ? others : opaque).push_back(triangle);
        }
        std::stable_sort(opaque.begin(), opaque.end(),
                         [](const auto& a, const auto& b) { return middleOf(a.corners)[2] < middleOf(b.corners)[2]; });
        for (const Drawing::Triangle& triangle : opaque) {
            addTriangle(triangle, HAIR);
        }
        for (const Drawing::Triangle& triangle : others) {
            addTriangle(triangle, 0);
        }
    }

    void addTriangle(const Drawing::Triangle& triangle, double hair) {
        const auto& [a, b, c] = triangle.corners;
        const std::vector<Corner> kept = m_paper.clipped({a, b, c});
        std::vector<Corners> pieces;
        for (std::size_t i = 2; i < kept.size(); ++i) {
            const Corners part{kept[0], kept[i - 1], kept[i]};
            if (isShownOrSplit(part, pieces)) {
                pieces.push_back(part);
            }
        }
        for (const Corners& piece : pieces) {
            addArea(next(Kind::AREA, triangle.colour, triangle.opacity, hair), piece);
        }
    }

    /// Areas that turn alike add up to one area, whatever their order of corners was.
    static void addArea(Shape& shape, const Corners& c) {
        const double turn = (c[1][0] - c[0][0]) * (c[2][1] - c[0][1]) - (c[1][1] - c[0][1]) * (c[2][0] - c[0][0]);
        if (turn > 0) {
            shape.parts.push_back({flat(c[0]), flat(c[1]), flat(c[2])});
        } else if (turn < 0) {
            shape.parts.push_back({flat(c[0]), flat(c[2]), flat(c[1])});
        }
    }

    /// True when all of it is shown; else the parts that are shown become pieces.
    bool isShownOrSplit(const Corners& c, std::vector<Corners>& pieces) const {
        std::size_t longest = 0;
        for (std::size_t side = 1; side < c.size(); ++side) {
            longest =
                lengthOf(c[side], c[(side + 1) % 3]) > lengthOf(c[longest], c[(longest + 1) % 3]) ? side : longest;
        }
        const Corner& a = c[longest];
        const Corner& b = c[(longest + 1) % 3];
        const Corner& top = c[(longest + 2) % 3];
        if (lengthOf(a, b) <= FINE) {
            return m_nearest.shows(middleOf(c));
        }
        if (lengthOf(a, b) <= COARSE) {
            const int shown = shownPlaces(c);
            if (shown == 0 || shown == PLACES) {
                return shown > 0;
            }
        }
        const Corner half = (a + b) * 0.5;
        const std::array<Corners, 2> halves{{{a, half, top}, {half, b, top}}};
        const std::size_t before = pieces.size();
        const std::array<bool, 2> areShown{isShownOrSplit(halves[0], pieces), isShownOrSplit(halves[1], pieces)};
        if (areShown[0] && areShown[1] && pieces.size() == before) {
            return true;
        }
        for (std::size_t i = 0; i < halves.size(); ++i) {
            if (areShown[i]) {
                pieces.push_back(halves[i]);
            }
        }
        return false;
    }

    static constexpr int PLACES = 7;

    /// Of the corners, the middles of the sides and the middle.
    [[nodiscard]] int shownPlaces(const Corners& c) const {
        int shown = m_nearest.shows(middleOf(c)) ? 1 : 0;
        for (std::size_t i = 0; i < c.size(); ++i) {
            shown += m_nearest.shows(c[i]) ? 1 : 0;
            shown += m_nearest.shows((c[i] + c[(i + 1) % 3]) * 0.5) ? 1 : 0;
        }
        return shown;
    }

    void addLine(const Drawing::Line& line) {
        const auto kept = m_paper.clipped(line.from, line.to);
        if (!kept || !(lengthOf(kept->first, kept->second) > 0)) {
            return;
        }
        const auto& [from, to] = *kept;
        const int count = static_cast<int>(std::ceil(lengthOf(from, to) / FINE));
        const auto at = [&, &start = from, &end = to](double step) {
            // The end itself, so that the next line is seen to continue this one.
            return step < count ? start + (end - start) * (step / count) : end;
        };
        for (int first = 0; first < count;) {
            int last = first;
            while (last < count && m_nearest.shows(at(last + 0.5))) {
                ++last;
            }
            if (last > first) {
                addRun(line, flat(at(first)), flat(at(last)));
            }
            first = last + 1;
        }
    }

    /// Continues the line before where that ends there.
    void addRun(const Drawing::Line& line, const PaintedDrawing::Place& from, const PaintedDrawing::Place& to) {
        Shape& shape = next(Kind::LINE, line.colour, 1, line.width, line.isDashed);
        if (shape.parts.empty() || !(shape.parts.back().back() == from)) {
            shape.parts.push_back({from});
        }
        shape.parts.back().push_back(to);
    }

    void addDisc(const Drawing::Disc& disc) {
        const bool isInside = disc.centre[0] >= -MARGIN && disc.centre[0] <= m_drawing.width + MARGIN &&
                              disc.centre[1] >= -MARGIN && disc.centre[1] <= m_drawing.height + MARGIN;
        if (isInside) {
            Shape& shape = next(Kind::DISC, disc.colour, 1, disc.radius);
            shape.parts.resize(1);
            shape.parts[0].push_back(flat(disc.centre));
        }
    }

    void addOnTop() {
        for (const Drawing::Box& box : m_drawing.boxes) {
            addBox(box);
        }
        for (const Drawing::Disc& disc : m_drawing.discsOnTop) {
            addDisc(disc);
        }
    }

    void addOverTexts() {
        std::vector<Shape> below = std::exchange(m_painted.shapes, {});
        for (const Drawing::Box& box : m_drawing.boxesOverTexts) {
            addBox(box);
        }
        m_painted.shapesOverTexts = std::exchange(m_painted.shapes, std::move(below));
    }

    void addBox(const Drawing::Box& box) {
        const double right = box.left + box.width;
        const double bottom = box.top + box.height;
        next(Kind::AREA, box.colour, 1, 0)
            .parts.push_back({{box.left, box.top}, {right, box.top}, {right, bottom}, {box.left, bottom}});
    }

    const Drawing& m_drawing;
    Paper m_paper;
    NearnessMap m_nearest;
    PaintedDrawing m_painted;
};

}  // namespace

PaintedDrawing PaintedDrawing::of(const Drawing& drawing) {
    PaintedDrawing painted = Painting(drawing).paint();
    painted.width = drawing.width;
    painted.height = drawing.height;
    painted.title = drawableText(drawing.title);
    painted.texts = drawing.texts;
    for (Drawing::Text& text : painted.texts) {
        text.text = drawableText(text.text);
    }
    return painted;
}

std::string drawableText(const std::string& text) {
    std::string shown = onOneLine(text);
    // U+FFFE and U+FFFF are characters to some decoders of UTF-8, and to no reader of XML.
    for (const char* const none : {"\xEF\xBF\xBE", "\xEF\xBF\xBF"}) {
        for (std::size_t at = shown.find(none); at != std::string::npos; at = shown.find(none, at)) {
            shown.replace(at, 3, "\xEF\xBF\xBD");
        }
    }
    return shown;
}

}  // namespace Veltrani::DisplayReport
