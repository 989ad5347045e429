#pragma once

#include "DisplayReport/CoverageReport.h"

#include <iosfwd>
#include <vector>

namespace Veltrani::DisplayReport {

/// The screen's surface as a PLY mesh (ascii 1.0), with a colour per number of projectors that light it: black for
/// none, blue for one, orange for two, yellow for three and more, which grow brighter in this order for colour-blind
/// eyes too. Besides x, y, z (double, native units) and the colour, each vertex has `projectors`, their number.
class PlyCoverageWriter {
public:
    PlyCoverageWriter() = delete;

    static void write(const CoverageReport& report, const std::vector<CoveredPiece>& pieces, std::ostream& out);
};

}  // namespace Veltrani::DisplayReport
