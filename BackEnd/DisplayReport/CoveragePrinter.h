#pragma once

#include <iosfwd>

namespace Veltrani::DisplayReport {

struct CoverageReport;

/// Prints a report for people: a table of the channels, what part of the screen is lit by how many of them, the pairs
/// that overlap, and what is wrong.
void print(const CoverageReport& report, std::ostream& out);

}  // namespace Veltrani::DisplayReport
