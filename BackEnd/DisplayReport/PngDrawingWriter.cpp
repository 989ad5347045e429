#include "DisplayReport/PngDrawingWriter.h"

#include "DisplayReport/DrawingRaster.h"

namespace Veltrani::DisplayReport {

void PngDrawingWriter::write(const Drawing& drawing, std::ostream& out) const {
    rasterised(drawing).write(out);
}

SceneCollector::Limits PngDrawingWriter::limits() const {
    // As fine as a few pixels; more points than these would be a solid area.
    return {60000, 8000, 40000, 20000};
}

}  // namespace Veltrani::DisplayReport
