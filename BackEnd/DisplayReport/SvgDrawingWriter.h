#pragma once

#include "DisplayReport/DrawingWriter.h"

namespace Veltrani::DisplayReport {

/// A drawing as shapes and text (SVG 1.1): sharp at any size. What is nearer is painted over what is farther, shape by
/// shape, so that shapes that pass through each other show one of them whole.
class SvgDrawingWriter : public DrawingWriter {
public:
    void write(const Drawing& drawing, std::ostream& out) const override;
    [[nodiscard]] SceneCollector::Limits limits() const override;
};

}  // namespace Veltrani::DisplayReport
