#pragma once

#include "DisplayReport/TargetWriter.h"

namespace Veltrani::DisplayReport {

/// Targets as one JSON object:
///
///     {"unit": "m", "columns": 16, "rows": 10, "boundarySamples": 16, "channels": [
///       {"name": "Left", "projector": "020000000001", "fault": "", "missed": {"grid": 0, "boundary": 0},
///        "grid": [{"column": 0, "row": 0, "u": 0.0, "v": 0.0, "point": [x, y, z]}, ...],
///        "boundary": [[x, y, z], ...]}, ...]}
class JsonTargetWriter : public TargetWriter {
public:
    void write(const TargetSurvey& survey, std::ostream& out) const override;
};

}  // namespace Veltrani::DisplayReport
