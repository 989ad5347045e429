#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

namespace Veltrani::DisplayReport {

struct TargetSurvey;

/// Writes targets in one file format. A new format is a class and a line in `TargetWriter.cpp`.
class TargetWriter {
public:
    virtual ~TargetWriter() = default;

    virtual void write(const TargetSurvey& survey, std::ostream& out) const = 0;

    /// "csv", "json", "ply".
    [[nodiscard]] static std::vector<std::string> formats();
    /// The writer of a format; null for an unknown one.
    [[nodiscard]] static std::unique_ptr<TargetWriter> ofFormat(const std::string& format);
};

}  // namespace Veltrani::DisplayReport
