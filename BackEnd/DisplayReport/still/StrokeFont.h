#pragma once

#include "Common/Point.h"

#include <string>
#include <vector>

namespace Veltrani::DisplayReport {

/// Letters made of straight strokes, for pictures that are drawn where no fonts are installed. The characters of ASCII;
/// every other character is a box.
class StrokeFont {
public:
    /// Corners of a line, to the right and upwards from the start of the text on the line that letters stand on; a
    /// single one is a dot.
    using Stroke = std::vector<Point<double, 2>>;

    StrokeFont() = delete;

    /// @param size height of a capital letter
    [[nodiscard]] static std::vector<Stroke> strokes(const std::string& utf8, double size);
    /// Width of the text.
    [[nodiscard]] static double width(const std::string& utf8, double size);
};

}  // namespace Veltrani::DisplayReport
