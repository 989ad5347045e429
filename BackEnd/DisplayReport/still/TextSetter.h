#pragma once

#include "DisplayReport/still/FontSet.h"

#include <cairo.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Veltrani::DisplayReport {

/// A line of text as it is drawn: its letters from left to right, whichever way it is read. Lengths are multiples of
/// the height of a capital letter.
struct SetLine {
    /// Letters of one font that stand together.
    struct Run {
        const Font* font = nullptr;
        bool isReadBackwards = false;
        bool isText = true;     ///< false for what no font has a letter for: boxes
        std::size_t begin = 0;  ///< bytes of the text that it stands for
        std::size_t end = 0;
        std::vector<cairo_glyph_t> letters;          ///< places to the right and down from the start of the line
        std::vector<cairo_text_cluster_t> clusters;  ///< in the order of the text
    };

    std::vector<Run> runs;
    double width = 0;
    std::vector<std::size_t> cuts;  ///< numbers of bytes after which the text may be cut, ascending
};

/// Sets texts of one line each, of any script, in the fonts that are installed with the product. Belongs to the module
/// of stills.
///
/// Scripts that are read from right to left stand in their order. A text begins at the side of its first letter; one
/// that begins with a digit at the left, so that numbers before names stand below each other.
class TextSetter {
public:
    /// Throws as `FontSet`.
    TextSetter() = default;

    /// @param text UTF-8 without control characters. Throws `std::runtime_error` when a font cannot be read,
    /// `std::bad_alloc` when memory runs out.
    [[nodiscard]] SetLine set(const std::string& text) const;

    /// Draws a line that begins at that place.
    /// @param size height of a capital letter
    static void show(cairo_t* pen, const SetLine& line, const std::string& text, double right, double down,
                     double size);
    /// Adds the outlines of its letters to the path of the pen.
    static void addOutlines(cairo_t* pen, const SetLine& line, double right, double down, double size);

private:
    FontSet m_fonts;
};

}  // namespace Veltrani::DisplayReport
