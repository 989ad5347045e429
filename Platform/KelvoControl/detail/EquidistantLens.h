#pragma once

#include "KelvoControl/detail/LensModel.h"

namespace Veltrani::KelvoControlDetail {

/// A lens of equal angles: yaw = L + (R - L) u, pitch = B + (T - B) v, with L, R, B, T the angles of the viewport's
/// edges, seen in the direction (sin yaw cos pitch, cos yaw cos pitch, sin pitch). Yaw and pitch stay within a right
/// angle of straight ahead.
class EquidistantLens : public LensModel {
public:
    /// Throws `VeltraniException` when the extents are not finite or span nothing.
    EquidistantLens(const Viewport& viewport, const std::wstring& name);

protected:
    bool rayOf(const Point<double, 2>& normalised, Point<double, 3>& ray) const override;
    bool pictureOf(const Point<double, 3>& ray, Point<double, 2>& normalised) const override;

private:
    Point<double, 2> m_first;  ///< yaw of u = 0 and pitch of v = 0, radians
    Point<double, 2> m_span;   ///< from there to u = 1 and v = 1
};

}  // namespace Veltrani::KelvoControlDetail
