#pragma once

#include <iosfwd>

namespace Veltrani::DisplayReport {

struct DisplayDescription;

/// Prints a description for people: the facts, the table of channels, then the faults with their causes or "No faults."
void print(const DisplayDescription& description, std::ostream& out);

}  // namespace Veltrani::DisplayReport
