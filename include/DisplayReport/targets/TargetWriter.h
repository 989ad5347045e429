#pragma once

#include "DisplayReport/basics/ReportHead.h"

#include <iosfwd>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Veltrani::DisplayReport {

struct TargetSurvey;

/// Writes targets in one file format. A new format is a class and a line in `TargetWriter.cpp`.
class TargetWriter {
public:
    virtual ~TargetWriter() = default;

    /// The files that the result was made from, for the formats that name them.
    void setSources(std::vector<SourceFile> files) { m_sources = std::move(files); }

    virtual void write(const TargetSurvey& survey, std::ostream& out) const = 0;

    /// "csv", "json", "ply".
    [[nodiscard]] static std::vector<std::string> formats();
    /// The writer of a format; null for an unknown one.
    [[nodiscard]] static std::unique_ptr<TargetWriter> ofFormat(const std::string& format);

protected:
    [[nodiscard]] const std::vector<SourceFile>& sources() const { return m_sources; }

private:
    std::vector<SourceFile> m_sources;
};

}  // namespace Veltrani::DisplayReport
