#pragma once

#include "DisplayReport/basics/ReportHead.h"

#include <iosfwd>

namespace Veltrani::DisplayReport {

struct DisplayDescription;

/// Prints a description for programs, as one JSON object on a line: all facts, also those that are empty for all
/// channels.
/// @param head how it begins; the name of the report, the unit and the frame are filled in
void printJson(const DisplayDescription& description, ReportHead head, std::ostream& out);

}  // namespace Veltrani::DisplayReport
