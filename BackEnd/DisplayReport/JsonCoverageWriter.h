#pragma once

#include <iosfwd>

namespace Veltrani::DisplayReport {

struct CoverageReport;

/// Writes a report as one JSON object, which is valid whatever the names and numbers are: numbers that were not
/// measured are null.
class JsonCoverageWriter {
public:
    JsonCoverageWriter() = delete;

    static void write(const CoverageReport& report, std::ostream& out);
};

}  // namespace Veltrani::DisplayReport
