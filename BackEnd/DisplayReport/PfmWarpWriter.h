#pragma once

#include "DisplayReport/WarpWriter.h"

namespace Veltrani::DisplayReport {

/// A warp of pixels as a portable float map in colour ("PF", little-endian, 32-bit numbers, rows from the bottom up):
/// red is u, green is v, the place in the input that the middle of the pixel shows, (0, 0) bottom left. Blue is 1 where
/// there is one; where nothing is mapped blue is 0, red and green are -1.
class PfmWarpWriter : public WarpWriter {
public:
    void write(const PictureWarp& warp, std::ostream& out) const override;
};

}  // namespace Veltrani::DisplayReport
