#pragma once

#include "DisplayReport/still/Drawing.h"

#include <vector>

namespace Veltrani::DisplayReport {

/// How near the opaque triangles of a drawing are at each pixel: shows which shapes are hidden, for what paints shapes
/// and has no depth of its own.
class NearnessMap {
public:
    explicit NearnessMap(const Drawing& drawing);

    /// False for a place that opaque triangles hide, all around it: what lies on a surface, or at the edge of one, is
    /// not hidden by it. True outside of the picture.
    [[nodiscard]] bool shows(const Drawing::Place& place) const;

private:
    void add(const Drawing::Triangle& triangle);

    int m_width;
    int m_height;
    std::vector<float> m_nearness;  ///< row by row from the top left pixel; 0 where there is nothing
};

}  // namespace Veltrani::DisplayReport
