#pragma once

namespace Veltrani::DisplayReport {

/// How densely targets are placed on every channel.
struct TargetPlan {
    int columns = 16;          ///< grid columns, from the left edge of the picture to its right edge
    int rows = 10;             ///< grid rows, from the top edge of the picture to its bottom edge
    int boundarySamples = 16;  ///< samples per edge of the outline
};

}  // namespace Veltrani::DisplayReport
