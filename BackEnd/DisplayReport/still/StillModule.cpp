// The module that is opened with the first still: every call to Cairo.
#include "DisplayReport/still/PaintedDrawing.h"
#include "DisplayReport/still/StillLibrary.h"
#include "DisplayReport/still/TextSetter.h"

#include <cairo-pdf.h>
#include <cairo-svg.h>
#include <cairo.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <memory>
#include <new>
#include <numbers>
#include <ostream>
#include <stdexcept>
#include <vector>

namespace Veltrani::DisplayReport {

namespace {

using Place = PaintedDrawing::Place;
using Shape = PaintedDrawing::Shape;

using Surface = std::unique_ptr<cairo_surface_t, Release<cairo_surface_destroy>>;
using Pen = std::unique_ptr<cairo_t, Release<cairo_destroy>>;

/// Width of the paper around letters on a picture, as a share of the height of a capital one.
constexpr double HALO = 0.45;
constexpr double HALO_OPACITY = 0.8;
/// Of dashed lines, in widths of the line, which its round ends add to the dashes.
constexpr double DASH = 4;
constexpr double GAP = 5;
/// Points of a printed page, of which a pixel of a screen of 96 to the inch has that many.
constexpr double POINTS = 0.75;

void require(cairo_status_t status) {
    if (status == CAIRO_STATUS_NO_MEMORY) {
        throw std::bad_alloc();
    }
    if (status != CAIRO_STATUS_SUCCESS) {
        throw std::runtime_error(std::string("The picture cannot be encoded: ") + cairo_status_to_string(status));
    }
}

/// The left end of a text of that width.
double leftOf(const Drawing::Text& text, double width) {
    switch (text.anchor) {
        case Drawing::Anchor::LEFT:
            return text.right;
        case Drawing::Anchor::MIDDLE:
            return text.right - width / 2;
        case Drawing::Anchor::RIGHT:
            return text.right - width;
    }
    return text.right;
}

/// Draws on a surface.
class Painter {
public:
    Painter(const TextSetter& setter, cairo_surface_t* surface) : m_setter(setter), m_pen(cairo_create(surface)) {
        // Letters stand and look the same on every surface, and at every size.
        const std::unique_ptr<cairo_font_options_t, Release<cairo_font_options_destroy>> options(
            cairo_font_options_create());
        cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
        cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
        cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
        cairo_set_font_options(m_pen.get(), options.get());
    }

    void paint(const PaintedDrawing& drawing) {
        setColour({255, 255, 255}, 1);
        cairo_rectangle(m_pen.get(), 0, 0, drawing.width, drawing.height);
        cairo_fill(m_pen.get());
        cairo_set_line_join(m_pen.get(), CAIRO_LINE_JOIN_ROUND);
        cairo_set_line_cap(m_pen.get(), CAIRO_LINE_CAP_ROUND);
        for (const Shape& shape : drawing.shapes) {
            paint(shape);
        }
        for (const Drawing::Text& text : drawing.texts) {
            paint(text);
        }
        for (const Shape& shape : drawing.shapesOverTexts) {
            paint(shape);
        }
        require(cairo_status(m_pen.get()));
    }

private:
    void setColour(const Colour& colour, double opacity) {
        constexpr double MOST = 255;
        cairo_set_source_rgba(m_pen.get(), colour.red / MOST, colour.green / MOST, colour.blue / MOST, opacity);
    }

    void paint(const Shape& shape) {
        setColour(shape.colour, shape.opacity);
        for (const PaintedDrawing::Places& part : shape.parts) {
            if (shape.kind == Shape::Kind::DISC) {
                addDiscs(part, shape.width);
            } else {
                addCorners(part, shape.kind == Shape::Kind::AREA);
            }
        }
        cairo_set_line_width(m_pen.get(), shape.width);
        if (shape.kind == Shape::Kind::LINE) {
            const std::array<double, 2> dashes{DASH * shape.width, GAP * shape.width};
            cairo_set_dash(m_pen.get(), dashes.data(), shape.isDashed ? static_cast<int>(dashes.size()) : 0, 0);
            cairo_stroke(m_pen.get());
            cairo_set_dash(m_pen.get(), nullptr, 0, 0);
        } else if (shape.kind == Shape::Kind::AREA && shape.width > 0) {
            cairo_fill_preserve(m_pen.get());
            cairo_stroke(m_pen.get());
        } else {
            cairo_fill(m_pen.get());
        }
    }

    void addCorners(const PaintedDrawing::Places& corners, bool isClosed) {
        cairo_new_sub_path(m_pen.get());
        for (const Place& corner : corners) {
            cairo_line_to(m_pen.get(), corner[0], corner[1]);
        }
        if (isClosed) {
            cairo_close_path(m_pen.get());
        }
    }

    void addDiscs(const PaintedDrawing::Places& middles, double radius) {
        for (const Place& middle : middles) {
            cairo_new_sub_path(m_pen.get());
            cairo_arc(m_pen.get(), middle[0], middle[1], radius, 0, 2 * std::numbers::pi);
            cairo_close_path(m_pen.get());
        }
    }

    void paint(const Drawing::Text& text) {
        const SetLine line = m_setter.set(text.text);
        const double left = leftOf(text, text.size * line.width);
        cairo_new_path(m_pen.get());
        if (text.hasHalo) {
            TextSetter::addOutlines(m_pen.get(), line, left, text.down, text.size);
            setColour({255, 255, 255}, HALO_OPACITY);
            cairo_set_line_width(m_pen.get(), HALO * text.size);
            cairo_stroke(m_pen.get());
        }
        setColour(text.colour, 1);
        TextSetter::show(m_pen.get(), line, text.text, left, text.down, text.size);
    }

    const TextSetter& m_setter;
    Pen m_pen;
};

cairo_status_t writeTo(void* stream, const unsigned char* bytes, unsigned int count) {
    auto& out = *static_cast<std::ostream*>(stream);
    out.write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(count));
    return out ? CAIRO_STATUS_SUCCESS : CAIRO_STATUS_WRITE_ERROR;
}

cairo_status_t appendTo(void* text, const unsigned char* bytes, unsigned int count) {
    try {
        static_cast<std::string*>(text)->append(reinterpret_cast<const char*>(bytes), count);
        return CAIRO_STATUS_SUCCESS;
    } catch (const std::bad_alloc&) {
        return CAIRO_STATUS_NO_MEMORY;
    }
}

void writePng(const TextSetter& setter, const PaintedDrawing& drawing, std::ostream& out) {
    const Surface surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, drawing.width, drawing.height));
    require(cairo_surface_status(surface.get()));
    Painter(setter, surface.get()).paint(drawing);
    cairo_surface_flush(surface.get());
    const cairo_status_t status = cairo_surface_write_to_png_stream(surface.get(), writeTo, &out);
    // The caller reports a stream that takes no more.
    if (out) {
        require(status);
    }
}

/// Takes the bytes of a document when it is finished.
void finish(const Surface& surface) {
    cairo_surface_finish(surface.get());
    require(cairo_surface_status(surface.get()));
}

/// A hundredth of a pixel is enough.
std::string number(double value) {
    constexpr double PARTS = 100;
    std::array<char, 400> buffer{};
    const auto end =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), std::round(value * PARTS) / PARTS + 0.0).ptr;
    return {buffer.data(), end};
}

std::string escaped(const std::string& text) {
    std::string xml;
    for (const char c : text) {
        xml += c == '<' ? "&lt;" : c == '>' ? "&gt;" : c == '&' ? "&amp;" : std::string(1, c);
    }
    return xml;
}

/// Texts without ink over their letters, which are outlines: for searching, copying and reading aloud.
std::string textLayer(const TextSetter& setter, const PaintedDrawing& drawing) {
    std::string layer = "<g fill-opacity=\"0\" font-family=\"" + std::string(FontSet::FAMILY) + ", sans-serif\">\n";
    for (const Drawing::Text& text : drawing.texts) {
        const double width = text.size * setter.set(text.text).width;
        layer += "<text x=\"" + number(leftOf(text, width)) + "\" y=\"" + number(text.down) + "\" font-size=\"" +
                 number(text.size / FontSet::CAPITAL_SHARE) + "\" textLength=\"" + number(width) + "\">" +
                 escaped(text.text) + "</text>\n";
    }
    return layer + "</g>\n";
}

void writeSvg(const TextSetter& setter, const PaintedDrawing& drawing, std::ostream& out) {
    std::string document;
    const Surface surface(cairo_svg_surface_create_for_stream(appendTo, &document, drawing.width, drawing.height));
    require(cairo_surface_status(surface.get()));
    cairo_svg_surface_restrict_to_version(surface.get(), CAIRO_SVG_VERSION_1_1);
    cairo_svg_surface_set_document_unit(surface.get(), CAIRO_SVG_UNIT_PX);
    Painter(setter, surface.get()).paint(drawing);
    finish(surface);
    // The surface numbers its drawing by how many surfaces the process has had.
    if (const std::size_t id = document.find("<g id=\"surface"); id != std::string::npos) {
        document.erase(id + 2, document.find('"', id + 7) + 1 - (id + 2));
    }
    const std::size_t root = document.find('>', document.find("<svg")) + 1;
    const std::size_t end = document.rfind("</svg>");
    out << document.substr(0, root) << "\n<title>" << escaped(drawing.title) << "</title>"
        << document.substr(root, end - root) << textLayer(setter, drawing) << document.substr(end);
}

/// Blanks of the same length, since the document counts its bytes.
void removeDate(std::string& document) {
    const std::size_t begin = document.rfind("/CreationDate");
    if (begin != std::string::npos) {
        const std::size_t end = document.find(')', begin);
        std::fill(document.begin() + static_cast<std::ptrdiff_t>(begin),
                  document.begin() + static_cast<std::ptrdiff_t>(end) + 1, ' ');
    }
}

void writePdf(const TextSetter& setter, const PaintedDrawing& drawing, std::ostream& out) {
    std::string document;
    const Surface surface(
        cairo_pdf_surface_create_for_stream(appendTo, &document, drawing.width * POINTS, drawing.height * POINTS));
    require(cairo_surface_status(surface.get()));
    cairo_pdf_surface_restrict_to_version(surface.get(), CAIRO_PDF_VERSION_1_5);
    cairo_pdf_surface_set_metadata(surface.get(), CAIRO_PDF_METADATA_TITLE, drawing.title.c_str());
    cairo_surface_set_device_scale(surface.get(), POINTS, POINTS);
    Painter(setter, surface.get()).paint(drawing);
    finish(surface);
    removeDate(document);
    out << document;
}

class Module : public StillLibrary {
public:
    [[nodiscard]] double width(const std::string& utf8, double size) const override {
        return size * m_setter.set(utf8).width;
    }

    [[nodiscard]] std::string fitting(const std::string& utf8, double size, double room) const override {
        const SetLine line = m_setter.set(utf8);
        if (size * line.width <= room) {
            return utf8;
        }
        static const std::string REST = "...";
        const auto tooLong = std::partition_point(line.cuts.begin(), line.cuts.end(), [&](std::size_t cut) {
            return width(utf8.substr(0, cut) + REST, size) <= room;
        });
        return tooLong == line.cuts.begin() ? REST : utf8.substr(0, *(tooLong - 1)) + REST;
    }

    void write(const PaintedDrawing& drawing, Format format, std::ostream& out) const override {
        switch (format) {
            case Format::PNG:
                writePng(m_setter, drawing, out);
                break;
            case Format::SVG:
                writeSvg(m_setter, drawing, out);
                break;
            case Format::PDF:
                writePdf(m_setter, drawing, out);
                break;
        }
    }

private:
    TextSetter m_setter;
};

}  // namespace

}  // namespace Veltrani::DisplayReport

extern "C" const Veltrani::DisplayReport::StillLibrary* SM_STILL_MODULE_FUNCTION();

/// Returns the entry of the module; its name carries the version.
extern "C" const Veltrani::DisplayReport::StillLibrary* SM_STILL_MODULE_FUNCTION() {
    static const Veltrani::DisplayReport::Module module;
    return &module;
}
