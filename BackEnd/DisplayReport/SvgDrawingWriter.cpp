#include "DisplayReport/SvgDrawingWriter.h"

#include "DisplayReport/Drawing.h"
#include "DisplayReport/NumberText.h"
#include "DisplayReport/TextTable.h"

#include <algorithm>
#include <cmath>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace Veltrani::DisplayReport {

namespace {

/// Height of a capital letter as a share of the size of usual fonts.
constexpr double CAPITAL_SHARE = 0.72;

/// A hundredth of a pixel is enough.
std::string number(double value) {
    constexpr double PARTS = 100;
    return exactText(std::round(value * PARTS) / PARTS + 0.0);
}

std::string pairOf(const Drawing::Place& place) {
    return number(place[0]) + ' ' + number(place[1]);
}

std::string escaped(const std::string& text) {
    std::string xml;
    for (const char c : printable(text)) {
        switch (c) {
            case '<':
                xml += "&lt;";
                break;
            case '>':
                xml += "&gt;";
                break;
            case '&':
                xml += "&amp;";
                break;
            default:
                xml += c;
        }
    }
    return xml;
}

/// A shape with how near it is.
using Element = std::pair<double, std::string>;

Element elementOf(const Drawing::Triangle& triangle) {
    const auto& [a, b, c] = triangle.corners;
    const std::string path =
        "<path d=\"M" + pairOf(a) + 'L' + pairOf(b) + 'L' + pairOf(c) + "Z\" fill=\"" + hexText(triangle.colour) + '"';
    const double nearness = (a[2] + b[2] + c[2]) / 3;
    if (triangle.opacity < 1) {
        return {nearness * (1 + Drawing::LIFT), path + " fill-opacity=\"" + number(triangle.opacity) + "\"/>\n"};
    }
    // A hair wider, so that no paper shines through between neighbours.
    return {nearness, path + " stroke=\"" + hexText(triangle.colour) + "\" stroke-width=\"0.6\"/>\n"};
}

Element elementOf(const Drawing::Line& line) {
    // Twice lifted: a line on the picture of a channel lies on the screen too.
    return {(line.from[2] + line.to[2]) / 2 * (1 + 2 * Drawing::LIFT),
            "<path d=\"M" + pairOf(line.from) + 'L' + pairOf(line.to) + "\" stroke=\"" + hexText(line.colour) +
                "\" stroke-width=\"" + number(line.width) + "\" stroke-linecap=\"round\"/>\n"};
}

std::string circle(const Drawing::Disc& disc) {
    return "<circle cx=\"" + number(disc.centre[0]) + "\" cy=\"" + number(disc.centre[1]) + "\" r=\"" +
           number(disc.radius) + "\" fill=\"" + hexText(disc.colour) + "\"/>\n";
}

Element elementOf(const Drawing::Disc& disc) {
    return {disc.centre[2] * (1 + 2 * Drawing::LIFT), circle(disc)};
}

template <class Shapes>
void add(const Shapes& shapes, std::vector<Element>& elements) {
    for (const auto& shape : shapes) {
        elements.push_back(elementOf(shape));
    }
}

std::string anchorText(Drawing::Anchor anchor) {
    switch (anchor) {
        case Drawing::Anchor::LEFT:
            break;
        case Drawing::Anchor::MIDDLE:
            return " text-anchor=\"middle\"";
        case Drawing::Anchor::RIGHT:
            return " text-anchor=\"end\"";
    }
    return {};
}

void writeOnTop(const Drawing& drawing, std::ostream& out) {
    for (const Drawing::Box& box : drawing.boxes) {
        out << "<rect x=\"" << number(box.left) << "\" y=\"" << number(box.top) << "\" width=\"" << number(box.width)
            << "\" height=\"" << number(box.height) << "\" fill=\"" << hexText(box.colour) << "\"/>\n";
    }
    for (const Drawing::Disc& disc : drawing.discsOnTop) {
        out << circle(disc);
    }
    for (const Drawing::Text& text : drawing.texts) {
        out << "<text x=\"" << number(text.right) << "\" y=\"" << number(text.down) << "\" font-size=\""
            << number(text.size / CAPITAL_SHARE) << "\" fill=\"" << hexText(text.colour) << '"'
            << anchorText(text.anchor) << '>' << escaped(text.text) << "</text>\n";
    }
}

}  // namespace

void SvgDrawingWriter::write(const Drawing& drawing, std::ostream& out) const {
    std::vector<Element> elements;
    add(drawing.triangles, elements);
    add(drawing.lines, elements);
    add(drawing.discs, elements);
    std::stable_sort(elements.begin(), elements.end(),
                     [](const Element& a, const Element& b) { return a.first < b.first; });
    out << "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " << drawing.width << ' ' << drawing.height
        << "\" font-family=\"sans-serif\">\n<title>" << escaped(drawing.title) << "</title>\n<rect width=\""
        << drawing.width << "\" height=\"" << drawing.height << "\" fill=\"#ffffff\"/>\n";
    for (const auto& [nearness, text] : elements) {
        out << text;
    }
    writeOnTop(drawing, out);
    out << "</svg>\n";
}

SceneCollector::Limits SvgDrawingWriter::limits() const {
    // A few hundred kilobytes: an editor of drawings still opens them.
    return {3000, 1000};
}

}  // namespace Veltrani::DisplayReport
