#pragma once

#include "DisplayReport/DrawingWriter.h"

namespace Veltrani::DisplayReport {

/// A drawing as pixels (PNG, 8 bits per colour).
class PngDrawingWriter : public DrawingWriter {
public:
    void write(const Drawing& drawing, std::ostream& out) const override;
    [[nodiscard]] SceneCollector::Limits limits() const override;
};

}  // namespace Veltrani::DisplayReport
