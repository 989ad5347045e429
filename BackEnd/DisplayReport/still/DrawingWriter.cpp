#include "DisplayReport/still/DrawingWriter.h"

#include "Common/QuotedText.h"
#include "DisplayReport/basics/FormatList.h"
#include "DisplayReport/basics/NumberText.h"
#include "DisplayReport/still/Drawing.h"
#include "DisplayReport/still/DrawingRaster.h"

#include <algorithm>
#include <cmath>
#include <ostream>
#include <string>
#include <vector>

namespace Veltrani::DisplayReport {

namespace {

/// A drawing as pixels (PNG, 8 bits per colour).
class PngDrawingWriter : public DrawingWriter {
public:
    void write(const Drawing& drawing, std::ostream& out) const override;
    [[nodiscard]] SceneCollector::Limits limits() const override;
};

void PngDrawingWriter::write(const Drawing& drawing, std::ostream& out) const {
    rasterised(drawing).write(out);
}

SceneCollector::Limits PngDrawingWriter::limits() const {
    // As fine as a few pixels; more points than these would be a solid area.
    return {60000, 8000, 40000, 20000};
}

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
    for (const char c : onOneLine(text)) {
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

std::string textOf(const Drawing::Triangle& triangle) {
    const auto& [a, b, c] = triangle.corners;
    const std::string path =
        "<path d=\"M" + pairOf(a) + 'L' + pairOf(b) + 'L' + pairOf(c) + "Z\" fill=\"" + hexText(triangle.colour) + '"';
    if (triangle.opacity < 1) {
        return path + " fill-opacity=\"" + number(triangle.opacity) + "\"/>\n";
    }
    // A hair wider, so that no paper shines through between neighbours.
    return path + " stroke=\"" + hexText(triangle.colour) + "\" stroke-width=\"0.6\"/>\n";
}

std::string textOf(const Drawing::Line& line) {
    return "<path d=\"M" + pairOf(line.from) + 'L' + pairOf(line.to) + "\" stroke=\"" + hexText(line.colour) +
           "\" stroke-width=\"" + number(line.width) + "\" stroke-linecap=\"round\"/>\n";
}

std::string textOf(const Drawing::Disc& disc) {
    return "<circle cx=\"" + number(disc.centre[0]) + "\" cy=\"" + number(disc.centre[1]) + "\" r=\"" +
           number(disc.radius) + "\" fill=\"" + hexText(disc.colour) + "\"/>\n";
}

Drawing::Place middleOf(const Drawing::Triangle& triangle) {
    return (triangle.corners[0] + triangle.corners[1] + triangle.corners[2]) * (1.0 / 3);
}

Drawing::Place middleOf(const Drawing::Line& line) {
    return (line.from + line.to) * 0.5;
}

Drawing::Place middleOf(const Drawing::Disc& disc) {
    return disc.centre;
}

/// Those that opaque triangles do not hide, in their order.
template <class Shapes>
void writeShown(const Shapes& shapes, const NearnessMap& nearest, std::ostream& out) {
    for (const auto& shape : shapes) {
        if (nearest.shows(middleOf(shape))) {
            out << textOf(shape);
        }
    }
}

/// Opaque triangles, the farthest first, then what lies on them.
void writeScene(const Drawing& drawing, std::ostream& out) {
    std::vector<Drawing::Triangle> opaque;
    std::vector<Drawing::Triangle> others;
    for (const Drawing::Triangle& triangle : drawing.triangles) {
        (triangle.opacity < 1 ? others : opaque).push_back(triangle);
    }
    std::stable_sort(opaque.begin(), opaque.end(),
                     [](const auto& a, const auto& b) { return middleOf(a)[2] < middleOf(b)[2]; });
    for (const Drawing::Triangle& triangle : opaque) {
        out << textOf(triangle);
    }
    const NearnessMap nearest(drawing);
    writeShown(others, nearest, out);
    writeShown(drawing.lines, nearest, out);
    writeShown(drawing.discs, nearest, out);
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
        out << textOf(disc);
    }
    for (const Drawing::Text& text : drawing.texts) {
        out << "<text x=\"" << number(text.right) << "\" y=\"" << number(text.down) << "\" font-size=\""
            << number(text.size / CAPITAL_SHARE) << "\" fill=\"" << hexText(text.colour) << '"'
            << anchorText(text.anchor) << '>' << escaped(text.text) << "</text>\n";
    }
}

/// A drawing as shapes and text (SVG 1.1): sharp at any size. What is nearer is painted over what is farther, shape by
/// shape, so that shapes that pass through each other show one of them whole.
class SvgDrawingWriter : public DrawingWriter {
public:
    void write(const Drawing& drawing, std::ostream& out) const override;
    [[nodiscard]] SceneCollector::Limits limits() const override;
};

void SvgDrawingWriter::write(const Drawing& drawing, std::ostream& out) const {
    out << "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " << drawing.width << ' ' << drawing.height
        << "\" font-family=\"sans-serif\">\n<title>" << escaped(drawing.title) << "</title>\n<rect width=\""
        << drawing.width << "\" height=\"" << drawing.height << "\" fill=\"#ffffff\"/>\n";
    writeScene(drawing, out);
    writeOnTop(drawing, out);
    out << "</svg>\n";
}

SceneCollector::Limits SvgDrawingWriter::limits() const {
    // A few megabytes at the most: an editor of drawings still opens them.
    return {3000, 1000, 10000, 10000};
}

constexpr FormatList<DrawingWriter, 2> FORMATS{
    {{{"png", makeWriter<DrawingWriter, PngDrawingWriter>}, {"svg", makeWriter<DrawingWriter, SvgDrawingWriter>}}}};

}  // namespace

std::vector<std::string> DrawingWriter::formats() {
    return FORMATS.names();
}

std::unique_ptr<DrawingWriter> DrawingWriter::ofFormat(const std::string& format) {
    return FORMATS.writerOf(format);
}

}  // namespace Veltrani::DisplayReport
