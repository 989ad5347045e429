#pragma once

#include "DisplayReport/TargetWriter.h"

namespace Veltrani::DisplayReport {

/// Targets as comma-separated values (RFC 4180 quoting, line feeds, UTF-8): one header line, then one line per target.
///
/// Columns: channel, projector, kind ("grid" or "boundary"), column, row (of the grid; a boundary sample has its number
/// in `column` and no row), u, v (place in the picture; grid only), x, y, z (world frame, native units).
class CsvTargetWriter : public TargetWriter {
public:
    void write(const TargetSurvey& survey, std::ostream& out) const override;
};

}  // namespace Veltrani::DisplayReport
