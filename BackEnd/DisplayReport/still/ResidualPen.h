#pragma once

#include "Common/Point.h"
#include "DisplayReport/basics/ChannelPalette.h"
#include "DisplayReport/still/Drawing.h"
#include "DisplayReport/still/TakenAreas.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace Veltrani::DisplayReport {

/// Draws residual vectors, over everything else of a drawing: each from a dot, that of an outlier dashed and from a
/// cross with its line of the table beside it, so that they differ without colours. A vector that was cut ends in two
/// bars; a point without a vector is its dot or cross alone.
class ResidualPen {
public:
    using Place = Point<double, 2>;  ///< pixels to the right and down from the top left corner

    struct Vector {
        Place from;
        std::optional<Place> to;
        Colour colour;
        bool isOutlier = false;
        bool isCut = false;
        std::size_t line = 0;  ///< of the table; 0 where it is not known
    };

    /// What vectors stand for.
    struct Meaning {
        std::string text;          ///< "from measured to fitted place"
        double factor = 1;         ///< vectors are drawn so many times as long
        double pixelsPerUnit = 0;  ///< of the drawing, without the factor
        std::string unit;          ///< of the length beside the scale bar; may be empty
        std::string where;         ///< behind it: " in the middle"; may be empty
    };

    /// @param pixel what counts as a pixel of a picture of usual size
    /// @param letterSize height of a capital letter of the key; pixels
    ResidualPen(double pixel, double letterSize) : m_pixel(pixel), m_letterSize(letterSize) {}

    void add(Drawing& drawing, const Vector& vector) const;
    /// The lines of the table beside the outliers, as far as there is room.
    void addLabels(Drawing& drawing, const std::vector<Vector>& vectors) const;
    /// What the marks mean, with a scale bar of a round length.
    /// @param area its paper; not higher than `keyHeight` needs to be
    void addKey(Drawing& drawing, const PaperArea& area, const Meaning& meaning) const;

    /// @param letterSize height of a capital letter of the key
    [[nodiscard]] static double keyHeight(double letterSize);

private:
    void addLine(Drawing& drawing, const Place& from, const Place& to, const Colour& colour, double width,
                 bool isDashed) const;
    void addBars(Drawing& drawing, const Vector& vector) const;
    void addScaleBar(Drawing& drawing, const PaperArea& area, double down, const Meaning& meaning) const;

    double m_pixel;
    double m_letterSize;
};

}  // namespace Veltrani::DisplayReport
