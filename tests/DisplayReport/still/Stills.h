#pragma once

#include "DisplayReport/still/Drawing.h"
#include "DisplayReport/still/DrawingWriter.h"
#include "support/PngImage.h"

#include <sstream>
#include <string>

/// Files of drawings for the tests of stills.
namespace stills {

inline std::string fileOf(const Veltrani::DisplayReport::Drawing& drawing, const std::string& format) {
    std::ostringstream out;
    Veltrani::DisplayReport::DrawingWriter::ofFormat(format)->write(drawing, out);
    return out.str();
}

inline PngImage imageOf(const Veltrani::DisplayReport::Drawing& drawing) {
    return PngImage::read(fileOf(drawing, "png"));
}

}  // namespace stills
