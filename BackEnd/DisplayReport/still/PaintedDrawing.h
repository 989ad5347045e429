#pragma once

#include "Common/Point.h"
#include "DisplayReport/basics/ChannelPalette.h"
#include "DisplayReport/still/Drawing.h"

#include <string>
#include <vector>

namespace Veltrani::DisplayReport {

/// What is seen of a drawing, in the order in which it is painted: every format of stills is written from this, by what
/// knows no depth.
struct PaintedDrawing {
    using Place = Point<double, 2>;  ///< pixels to the right and down from the top left corner
    using Places = std::vector<Place>;

    /// Shapes of one kind that look alike, painted at once.
    struct Shape {
        enum class Kind { AREA, LINE, DISC };
        Kind kind = Kind::AREA;
        Colour colour;
        double opacity = 1;  ///< of all together: where they overlap, too
        double width = 0;    ///< of the lines, of the hair around an area, or the radius of the discs; pixels
        /// The corners of each area, all in one direction of turning; of each line, at least two; or the middles of all
        /// discs, in one part.
        std::vector<Places> parts;
        bool isDashed = false;  ///< lines
    };

    /// Paints opaque triangles from the farthest to the nearest, then what is not opaque, lines and discs as far as
    /// opaque triangles do not hide them, piece by piece, then what is on top. What lies outside of the picture is left
    /// out. Texts become drawable: without control characters, and UTF-8 whatever they were.
    [[nodiscard]] static PaintedDrawing of(const Drawing& drawing);

    int width = 0;  ///< pixels
    int height = 0;
    std::string title;
    std::vector<Shape> shapes;
    std::vector<Drawing::Text> texts;    ///< on top of the shapes
    std::vector<Shape> shapesOverTexts;  ///< on top of everything
};

/// A text as drawings can hold it; UTF-8 without control characters.
[[nodiscard]] std::string drawableText(const std::string& text);

}  // namespace Veltrani::DisplayReport
