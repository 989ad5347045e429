#include "DisplayReport/still/ResidualPen.h"

#include "DisplayReport/basics/NumberText.h"
#include "DisplayReport/still/SceneLegend.h"

#include <algorithm>
#include <cmath>

namespace Veltrani::DisplayReport {

namespace {

constexpr Colour INK{35, 40, 46};
constexpr Colour PALE_INK{95, 103, 112};
constexpr Colour OUTLIER_INK{170, 20, 20};
/// Nearer than any surface: vectors leave curved screens, which must not hide them.
constexpr double ON_TOP = 1e9;
/// Pixels, in a picture of a thousand lines.
constexpr double THIN = 1.3;
constexpr double THICK = 2.0;
constexpr double DOT = 2.2;
constexpr double CROSS = 4.2;
constexpr double BAR = 4;
/// Between the two bars of a vector that was cut.
constexpr double BAR_GAP = 3.5;
/// Of the key: from line to line and height of its letters, in heights of the legend's; the most of its width that a
/// scale bar takes.
constexpr double KEY_LINE = 1.8;
constexpr double KEY_LETTER = 0.8;
constexpr double SYMBOL = 4.2;
constexpr double MOST_OF_WIDTH = 0.4;
constexpr int KEY_LINES = 6;

/// The greatest of 1, 2 and 5 times a power of ten up to a value above zero.
double roundBelow(double value) {
    const double power = std::pow(10, std::floor(std::log10(value)));
    for (const double digit : {5.0, 2.0}) {
        if (digit * power <= value) {
            return digit * power;
        }
    }
    return power;
}

Drawing::Place onTop(const ResidualPen::Place& place) {
    return {place[0], place[1], ON_TOP};
}

}  // namespace

double ResidualPen::keyHeight(double letterSize) {
    return KEY_LINE * letterSize * KEY_LINES;
}

void ResidualPen::addLine(Drawing& drawing, const Place& from, const Place& to, const Colour& colour, double width,
                          bool isDashed) const {
    drawing.lines.push_back({onTop(from), onTop(to), colour, width * m_pixel, isDashed});
}

void ResidualPen::add(Drawing& drawing, const Vector& vector) const {
    const Colour colour = vector.isOutlier ? OUTLIER_INK : vector.colour;
    if (vector.to) {
        addLine(drawing, vector.from, *vector.to, colour, vector.isOutlier ? THICK : THIN, vector.isOutlier);
    }
    if (vector.isCut) {
        addBars(drawing, vector);
    }
    if (!vector.isOutlier) {
        drawing.discs.push_back({onTop(vector.from), colour, DOT * m_pixel});
        return;
    }
    const double reach = CROSS * m_pixel;
    for (const double side : {-1.0, 1.0}) {
        const Place arm{reach, side * reach};
        addLine(drawing, vector.from - arm, vector.from + arm, colour, THICK, false);
    }
}

void ResidualPen::addBars(Drawing& drawing, const Vector& vector) const {
    const Place way = *vector.to - vector.from;
    const double length = norm(way);
    if (!(length > 0)) {
        return;
    }
    const Place along = way * (1 / length);
    const Place across = Place{-along[1], along[0]} * (BAR * m_pixel);
    for (const double back : {0.0, BAR_GAP * m_pixel}) {
        const Place foot = *vector.to - along * back;
        addLine(drawing, foot - across, foot + across, vector.isOutlier ? OUTLIER_INK : vector.colour, THICK, false);
    }
}

void ResidualPen::addLabels(Drawing& drawing, const std::vector<Vector>& vectors) const {
    TakenAreas taken(drawing);
    const double size = KEY_LETTER * m_letterSize;
    for (const Vector& vector : vectors) {
        if (!vector.isOutlier || vector.line == 0) {
            continue;
        }
        const Drawing::Text text{vector.from[0] + 1.6 * CROSS * m_pixel,
                                 vector.from[1] + size / 2,
                                 std::to_string(vector.line),
                                 size,
                                 OUTLIER_INK,
                                 Drawing::Anchor::LEFT,
                                 true};
        const PaperArea area = PaperArea::of(text);
        if (taken.isFree(area)) {
            taken.add(area);
            drawing.texts.push_back(text);
        }
    }
}

void ResidualPen::addKey(Drawing& drawing, const PaperArea& area, const Meaning& meaning) const {
    const double line = KEY_LINE * m_letterSize;
    const double size = KEY_LETTER * m_letterSize;
    const double symbol = SYMBOL * m_letterSize;
    double down = area.top + size;
    const auto say = [&](const std::string& text, double left, const Colour& ink) {
        drawing.texts.push_back(
            {left, down, SceneLegend::fitting(text, area.right - left, size), size, ink, Drawing::Anchor::LEFT});
    };
    /// Boxes, since the paper of the list covers lines.
    const auto stroke = [&](double from, double to, double middle, double width, const Colour& ink) {
        drawing.boxes.push_back({area.left + from, middle - width / 2, to - from, width, ink});
    };
    say("residuals after the fit, drawn " + significantText(meaning.factor) + " times as long", area.left, PALE_INK);
    down += line;
    double middle = down - size / 2;
    drawing.discsOnTop.push_back({{area.left + DOT * m_pixel, middle, 0}, INK, DOT * m_pixel});
    stroke(0, symbol, middle, THIN * m_pixel, INK);
    say(meaning.text, area.left + symbol + m_letterSize, INK);
    down += line;
    middle = down - size / 2;
    drawing.texts.push_back({area.left, down, "\xc3\x97", 1.3 * size, OUTLIER_INK, Drawing::Anchor::LEFT});
    const double dash = symbol / 5;
    stroke(1.5 * dash, 2.5 * dash, middle, THICK * m_pixel, OUTLIER_INK);
    stroke(3.5 * dash, 4.5 * dash, middle, THICK * m_pixel, OUTLIER_INK);
    say("outlier, with its line of the table", area.left + symbol + m_letterSize, INK);
    down += line;
    middle = down - size / 2;
    stroke(0, symbol, middle, THIN * m_pixel, INK);
    for (const double back : {0.0, BAR_GAP * m_pixel}) {
        const double right = area.left + symbol - back;
        drawing.boxes.push_back(
            {right - THICK * m_pixel, middle - BAR * m_pixel, THICK * m_pixel, 2 * BAR * m_pixel, INK});
    }
    say("cut: it is longer", area.left + symbol + m_letterSize, INK);
    addScaleBar(drawing, area, down + line, meaning);
}

void ResidualPen::addScaleBar(Drawing& drawing, const PaperArea& area, double down, const Meaning& meaning) const {
    const double perUnit = meaning.factor * meaning.pixelsPerUnit;
    const double most = MOST_OF_WIDTH * (area.right - area.left);
    if (!(perUnit > 0) || !(most > 0)) {
        return;
    }
    const double size = KEY_LETTER * m_letterSize;
    const double value = roundBelow(most / perUnit);
    const double length = value * perUnit;
    const double middle = down - size / 2;
    drawing.boxes.push_back({area.left, middle - THIN * m_pixel / 2, length, THIN * m_pixel, INK});
    for (const double end : {0.0, length}) {
        drawing.boxes.push_back(
            {area.left + end - THIN * m_pixel / 2, middle - BAR * m_pixel, THIN * m_pixel, 2 * BAR * m_pixel, INK});
    }
    const double left = area.left + length + m_letterSize;
    const std::string text = significantText(value) + (meaning.unit.empty() ? "" : " " + meaning.unit) + meaning.where;
    drawing.texts.push_back(
        {left, down, SceneLegend::fitting(text, area.right - left, size), size, INK, Drawing::Anchor::LEFT});
}

}  // namespace Veltrani::DisplayReport
