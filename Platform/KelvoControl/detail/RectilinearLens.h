#pragma once

#include "KelvoControl/detail/LensModel.h"

namespace Veltrani::KelvoControlDetail {

/// A lens without distortion: the picture point (u, v) is seen in the direction (ox + sx u, 1, oy + sy v).
class RectilinearLens : public LensModel {
public:
    /// Throws `VeltraniException` when the extents are not finite or span nothing.
    RectilinearLens(const Viewport& viewport, const std::wstring& name);

protected:
    bool rayOf(const Point<double, 2>& normalised, Point<double, 3>& ray) const override;
    bool pictureOf(const Point<double, 3>& ray, Point<double, 2>& normalised) const override;
};

}  // namespace Veltrani::KelvoControlDetail
