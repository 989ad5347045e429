#include "DisplayReport/DrawingWriter.h"

#include "DisplayReport/PngDrawingWriter.h"
#include "DisplayReport/SvgDrawingWriter.h"

namespace Veltrani::DisplayReport {

std::vector<std::string> DrawingWriter::formats() {
    return {"png", "svg"};
}

std::unique_ptr<DrawingWriter> DrawingWriter::ofFormat(const std::string& format) {
    if (format == "png") {
        return std::make_unique<PngDrawingWriter>();
    }
    return format == "svg" ? std::make_unique<SvgDrawingWriter>() : nullptr;
}

}  // namespace Veltrani::DisplayReport
