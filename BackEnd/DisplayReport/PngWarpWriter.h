#pragma once

#include "DisplayReport/WarpWriter.h"

namespace Veltrani::DisplayReport {

/// A warp of pixels as a picture for people (PNG), upright as the channel shows it: red grows with u, green with v, the
/// place in the input; u = 0, v = 0 is black, u = 1, v = 1 yellow. Grey lines stand at every 0.05 of u and of v, white
/// ones at every quarter. Where nothing is mapped, the picture is a blue chequerboard.
class PngWarpWriter : public WarpWriter {
public:
    /// Throws `std::runtime_error` when the picture cannot be encoded.
    void write(const PictureWarp& warp, std::ostream& out) const override;
};

}  // namespace Veltrani::DisplayReport
