#include "KelvoControl/Viewport.h"

#include "Common/VeltraniException.h"
#include "Configuration/ProjectorConfig.h"
#include "KelvoControl/detail/LensKinds.h"
#include "KelvoControl/detail/LensModel.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <ostream>

namespace {

using Veltrani::KelvoControlDetail::LensName;

/// The tangents of right angles and more would mirror the picture.
void requireEdgeAhead(const wchar_t* edge, double angle, const std::wstring& modelName) {
    if (!(std::abs(angle) < std::numbers::pi / 2)) {
        throw VeltraniException(__FILE__, __LINE__,
                                L"Projection model " + modelName + L": the " + edge + L" edge of the frustum is at " +
                                    std::to_wstring(std::lround(angle * 180 / std::numbers::pi)) +
                                    L" degrees, expected less than 90 to either side");
    }
}

/// Returns false for an unknown name: the code that makes the model reports it.
bool picturesTheFrustum(const std::wstring& modelName) {
    const LensName name = LensName::of(modelName, L"");
    const auto& kinds = Veltrani::KelvoControlDetail::lensKinds();
    return std::any_of(kinds.begin(), kinds.end(),
                       [&](const auto& kind) { return kind.name == name.kind && !kind.needsFile; });
}

}  // namespace

Viewport Viewport::fromFrustumAngles(double left, double right, double bottom, double top) {
    Viewport viewport;
    viewport.ox = std::tan(left);
    viewport.oy = std::tan(bottom);
    viewport.sx = std::tan(right) - viewport.ox;
    viewport.sy = std::tan(top) - viewport.oy;
    return viewport;
}

Viewport Viewport::of(const ProjectorConfig& projector, const std::wstring& modelName) {
    const Point<double, 3> orientation{projector.getOrientationZ(), projector.getOrientationX(),
                                       projector.getOrientationY()};
    const double top = projector.getFrustumTop();
    const double bottom = projector.getFrustumBottom();
    const double left = projector.getFrustumLeft();
    const double right = projector.getFrustumRight();
    Viewport viewport = fromFrustumAngles(left, right, bottom, top);
    viewport.orientation = orientation;
    viewport.position = projector.getPosition();
    if (picturesTheFrustum(modelName)) {
        requireEdgeAhead(L"left", left, modelName);
        requireEdgeAhead(L"right", right, modelName);
        requireEdgeAhead(L"bottom", bottom, modelName);
        requireEdgeAhead(L"top", top, modelName);
    }
    return viewport;
}

std::ostream& operator<<(std::ostream& out, const Viewport& viewport) {
    const Point<double, 4> extents{viewport.ox, viewport.sx, viewport.oy, viewport.sy};
    return out << "extents " << extents << ", position " << viewport.position << ", orientation "
               << viewport.orientation << ", " << viewport.width << " x " << viewport.height << " pixels";
}
