#pragma once

#include "DisplayReport/scene/SceneCollector.h"

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

namespace Veltrani::DisplayReport {

struct Drawing;

/// Writes drawings in one file format. A new format is a class and a line in `DrawingWriter.cpp`.
class DrawingWriter {
public:
    virtual ~DrawingWriter() = default;

    /// Throws `std::runtime_error` when the drawing cannot be encoded.
    virtual void write(const Drawing& drawing, std::ostream& out) const = 0;

    /// How much a file of this format should show.
    [[nodiscard]] virtual SceneCollector::Limits limits() const = 0;

    /// "png", "svg", "pdf".
    [[nodiscard]] static std::vector<std::string> formats();
    /// The writer of a format; null for an unknown one.
    [[nodiscard]] static std::unique_ptr<DrawingWriter> ofFormat(const std::string& format);
};

}  // namespace Veltrani::DisplayReport
