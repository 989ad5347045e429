#pragma once

#include "Common/Point.h"
#include "DisplayReport/basics/ChannelPalette.h"

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

namespace Veltrani::DisplayReport {
struct Drawing;
}

namespace Veltrani::ExportFiles {

/// What the projector of one channel is given to show, to see by eye that it is the right one, that it stands upright
/// and that each pixel of the picture is one of the projector.
///
/// On black: a frame of one pixel along the very edge; a line at every tenth of u and of v, white at the half, with the
/// number beside it; the number of the channel, its name, its id and the size of its picture; an arrow to the upper
/// edge; and a cross on each target, whose middle is the pixel that the target lies in.
struct TestPicture {
    std::size_t number = 0;                 ///< of the channel, from 1
    std::string name;                       ///< UTF-8
    std::string projectorId;                ///< UTF-8
    Point<int, 2> pixels;                   ///< width and height
    DisplayReport::Colour colour;           ///< of the number, the name and the arrow
    std::vector<Point<double, 2>> targets;  ///< places in the picture, (0, 0) bottom left

    /// Shapes of whole pixels; texts are cut where they do not fit. Throws what `StillLibrary::get` throws.
    [[nodiscard]] DisplayReport::Drawing draw() const;
    /// The same as PNG.
    void write(std::ostream& out) const;
};

}  // namespace Veltrani::ExportFiles
