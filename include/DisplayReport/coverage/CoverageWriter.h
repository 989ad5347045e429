#pragma once

#include "DisplayReport/coverage/CoverageReport.h"

#include "DisplayReport/basics/ReportHead.h"

#include <iosfwd>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Veltrani::DisplayReport {

/// Writes what was measured of a coverage in one format. A new format is a class and a line in `CoverageWriter.cpp`.
class CoverageWriter {
public:
    virtual ~CoverageWriter() = default;

    /// The files that the result was made from, for the formats that name them.
    void setSources(std::vector<SourceFile> files) { m_sources = std::move(files); }

    /// @param pieces of the surface, see `CoverageSurvey::keepPieces`; only the formats whose `showsPieces` is true
    /// need them
    virtual void write(const CoverageReport& report, const std::vector<CoveredPiece>& pieces,
                       std::ostream& out) const = 0;

    /// Whether the format is the surface, else the report.
    [[nodiscard]] virtual bool showsPieces() const { return false; }

    /// "text", "json", "ply".
    [[nodiscard]] static std::vector<std::string> formats();
    /// The writer of a format; null for an unknown one.
    [[nodiscard]] static std::unique_ptr<CoverageWriter> ofFormat(const std::string& format);

protected:
    [[nodiscard]] const std::vector<SourceFile>& sources() const { return m_sources; }

private:
    std::vector<SourceFile> m_sources;
};

}  // namespace Veltrani::DisplayReport
