#pragma once

#include "DisplayReport/coverage/CoverageReport.h"

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

namespace Veltrani::DisplayReport {

/// Writes what was measured of a coverage in one format. A new format is a class and a line in `CoverageWriter.cpp`.
class CoverageWriter {
public:
    virtual ~CoverageWriter() = default;

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
};

}  // namespace Veltrani::DisplayReport
