#pragma once

#include <iosfwd>

namespace Veltrani::DisplayReport {

struct TargetSurvey;

/// Prints a summary for people: per channel the targets placed and missed and their extent on the screen, the totals,
/// and why a channel has none.
void printSummary(const TargetSurvey& survey, std::ostream& out);

}  // namespace Veltrani::DisplayReport
