#include "DisplayReport/still/DrawingWriter.h"

#include "Common/LoadedModule.h"
#include "Common/VeltraniException.h"
#include "DisplayReport/basics/FormatList.h"
#include "DisplayReport/still/Drawing.h"
#include "DisplayReport/still/PaintedDrawing.h"
#include "DisplayReport/still/StillLibrary.h"

#include <cstddef>

namespace Veltrani::DisplayReport {

namespace {

using Format = StillLibrary::Format;

/// How much a file of pixels shows: as fine as a few pixels; more points than these would be a solid area.
constexpr SceneCollector::Limits PIXEL_LIMITS{60000, 8000, 40000, 20000};
/// Of a file of shapes: a few megabytes at the most, so that an editor of drawings still opens it.
constexpr SceneCollector::Limits SHAPE_LIMITS{3000, 1000, 10000, 10000};

/// What the drawing libraries take while they draw may end the process when they do not get it.
void requireMemory(const PaintedDrawing& painted) {
    constexpr std::size_t BYTES_OF_PIXEL = 4;
    constexpr std::size_t BYTES_OF_PLACE = 256;
    constexpr std::size_t ALWAYS = std::size_t{64} << 20U;
    std::size_t places = 0;
    for (const PaintedDrawing::Shape& shape : painted.shapes) {
        for (const PaintedDrawing::Places& part : shape.parts) {
            places += part.size();
        }
    }
    requireAddressSpace(ALWAYS + BYTES_OF_PLACE * places +
                        BYTES_OF_PIXEL * static_cast<std::size_t>(painted.width) *
                            static_cast<std::size_t>(painted.height));
}

template <Format FORMAT, const SceneCollector::Limits& LIMITS>
class FormatWriter : public DrawingWriter {
public:
    void write(const Drawing& drawing, std::ostream& out) const override {
        if (drawing.width <= 0 || drawing.height <= 0) {
            throw VeltraniException(L"The picture cannot be encoded: it has no pixels");
        }
        const StillLibrary& library = StillLibrary::get();
        const PaintedDrawing painted = PaintedDrawing::of(drawing);
        requireMemory(painted);
        library.write(painted, FORMAT, out);
    }

    [[nodiscard]] SceneCollector::Limits limits() const override { return LIMITS; }
};

constexpr FormatList<DrawingWriter, 3> FORMATS{
    {{{"png", makeWriter<DrawingWriter, FormatWriter<Format::PNG, PIXEL_LIMITS>>},
      {"svg", makeWriter<DrawingWriter, FormatWriter<Format::SVG, SHAPE_LIMITS>>},
      {"pdf", makeWriter<DrawingWriter, FormatWriter<Format::PDF, SHAPE_LIMITS>>}}}};

}  // namespace

std::vector<std::string> DrawingWriter::formats() {
    return FORMATS.names();
}

std::unique_ptr<DrawingWriter> DrawingWriter::ofFormat(const std::string& format) {
    return FORMATS.writerOf(format);
}

}  // namespace Veltrani::DisplayReport
