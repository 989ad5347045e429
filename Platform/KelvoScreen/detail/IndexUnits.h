#pragma once

#include "Common/Point.h"

namespace KelvoScreenDetail {

/// How places and lengths are turned into those of a search structure in single precision: relative to the centre of
/// all triangles, in units of half the longest side of their box. No coordinate inside the box exceeds 1.
struct IndexUnits {
    /// Units by which rays start before their origin and reach past their end: the boxes are enlarged along the ray as
    /// well.
    static constexpr double RAY_MARGIN = 1e-5;

    Point<double, 3> centre;
    double perLength = 1;

    /// In this order nothing overflows: a position inside the box is a length like that of the box.
    [[nodiscard]] float reach(double t, double lengthPerT) const {
        return static_cast<float>(t * lengthPerT * perLength + 2 * RAY_MARGIN);
    }
};

}  // namespace KelvoScreenDetail
