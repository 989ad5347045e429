#pragma once

#include "DisplayReport/TargetWriter.h"

namespace Veltrani::DisplayReport {

/// Targets as a PLY point cloud (ascii 1.0) for any viewer of point clouds: one colour per channel, outlines darker
/// than grids. Besides x, y, z (double, native units) and the colour, each point has `channel` (its place in the
/// configuration), `kind` (0 grid, 1 boundary), `column` and `row` (a boundary sample has its number in `column` and
/// row 0).
class PlyTargetWriter : public TargetWriter {
public:
    void write(const TargetSurvey& survey, std::ostream& out) const override;
};

}  // namespace Veltrani::DisplayReport
