#pragma once

#include "Common/Point.h"
#include "DisplayReport/basics/ChannelPalette.h"

#include <array>
#include <string>
#include <vector>

namespace Veltrani::DisplayReport {

/// A flat drawing of a scene, made of simple shapes: what every format of stills is written from.
///
/// Places are (to the right, down, nearness): pixels from the top left corner, and 1 / distance ahead of the camera.
/// Nearer shapes hide farther ones; boxes, discs on top, texts and boxes over texts are hidden by nothing and drawn
/// last, in this order.
struct Drawing {
    using Place = Point<double, 3>;

    struct Triangle {
        std::array<Place, 3> corners;
        Colour colour;
        double opacity = 1;  ///< what is not opaque hides nothing
    };
    struct Line {
        Place from;
        Place to;
        Colour colour;
        double width = 1;
        bool isDashed = false;
    };
    struct Disc {
        Place centre;
        Colour colour;
        double radius = 1;
    };
    struct Box {
        double left = 0;
        double top = 0;
        double width = 0;
        double height = 0;
        Colour colour;
    };
    enum class Anchor { LEFT, MIDDLE, RIGHT };
    struct Text {
        double right = 0;  ///< of the anchor
        double down = 0;   ///< of the line that the letters stand on
        std::string text;  ///< UTF-8
        double size = 0;   ///< height of a capital letter
        Colour colour;
        Anchor anchor = Anchor::LEFT;
        bool hasHalo = false;  ///< paper around its letters, for a text on a picture
    };

    int width = 0;  ///< pixels
    int height = 0;
    std::string title;  ///< UTF-8
    std::vector<Triangle> triangles;
    std::vector<Line> lines;
    std::vector<Disc> discs;
    std::vector<Box> boxes;  ///< on top, below discs and texts that are on top
    std::vector<Disc> discsOnTop;
    std::vector<Text> texts;
    std::vector<Box> boxesOverTexts;  ///< on top of everything

    /// Share by which lines and discs, and triangles that are not opaque, count as nearer than they are: they lie on
    /// surfaces, of which the triangles of a drawing are chords.
    static constexpr double LIFT = 0.006;
};

}  // namespace Veltrani::DisplayReport
