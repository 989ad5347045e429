#include "KelvoControl/detail/LensModel.h"

#include "Common/Finite.h"
#include "Common/VeltraniException.h"

#include <cmath>
#include <limits>
#include <utility>

namespace Veltrani::KelvoControlDetail {

namespace {

bool roundToPixel(double position, int& pixel) {
    const double rounded = std::floor(position + 0.5);
    if (!(rounded >= std::numeric_limits<int>::min() && rounded <= std::numeric_limits<int>::max())) {
        return false;
    }
    pixel = static_cast<int>(rounded);
    return true;
}

}  // namespace

LensName LensName::of(const std::wstring& first, const std::wstring& second) {
    const std::size_t colon = first.find(L':');
    if (!second.empty() || colon == std::wstring::npos) {
        return {first, second};
    }
    return {first.substr(0, colon), first.substr(colon + 1)};
}

LensModel::LensModel(const Viewport& viewport, std::wstring name, std::wstring file)
    : m_viewport(viewport), m_name(std::move(name)), m_file(std::move(file)) {
    if (!isFinite(viewport.position) || !isFinite(viewport.orientation)) {
        throw VeltraniException(__FILE__, __LINE__,
                                L"Projection model " + m_name + L": position and orientation must be finite");
    }
    if (viewport.width < 1 || viewport.height < 1) {
        throw VeltraniException(__FILE__, __LINE__,
                                L"Projection model " + m_name + L": a picture of " + std::to_wstring(viewport.width) +
                                    L" x " + std::to_wstring(viewport.height) + L" pixels, expected at least 1 x 1");
    }
    const auto& angles = viewport.orientation;
    m_world_from_projector = Veltrani::rotationZXY(angles[0], angles[1], angles[2]);
    m_projector_from_world = transpose(m_world_from_projector);
}

bool LensModel::unproject(const Point<double, 2>& normalised, Point<double, 3>& direction) const {
    Point<double, 3> ray;
    if (!isFinite(normalised) || !rayOf(normalised, ray) || !isFinite(ray)) {
        return false;
    }
    direction = m_world_from_projector * ray;
    return true;
}

bool LensModel::unprojectPixel(const Point<double, 2>& pixel, Point<double, 3>& direction) const {
    return unproject({pixel[0] / m_viewport.width, pixel[1] / m_viewport.height}, direction);
}

bool LensModel::projectNormalised(const Point<double, 3>& layoutPoint, Point<double, 2>& normalised) const {
    const Point<double, 3> ray = m_projector_from_world * (layoutPoint - m_viewport.position);
    Point<double, 2> found;
    if (!isFinite(ray) || !pictureOf(ray, found) || !isFinite(found)) {
        return false;
    }
    normalised = found;
    return true;
}

bool LensModel::project(const Point<double, 3>& layoutPoint, Point<int, 2>& pixel) const {
    Point<double, 2> normalised;
    Point<int, 2> rounded;
    if (!projectNormalised(layoutPoint, normalised) || !roundToPixel(normalised[0] * m_viewport.width, rounded[0]) ||
        !roundToPixel(normalised[1] * m_viewport.height, rounded[1])) {
        return false;
    }
    pixel = rounded;
    return true;
}

void requireExtents(const Viewport& viewport, const std::wstring& name) {
    if (!isFinite(Point<double, 2>{viewport.ox, viewport.oy}) ||
        !isFinite(Point<double, 2>{viewport.sx, viewport.sy})) {
        throw VeltraniException(__FILE__, __LINE__,
                                L"Projection model " + name + L": the extents of the viewport must be finite");
    }
    if (viewport.sx == 0 || viewport.sy == 0) {
        throw VeltraniException(__FILE__, __LINE__,
                                L"Projection model " + name + L": the frustum spans nothing; check its four angles");
    }
}

}  // namespace Veltrani::KelvoControlDetail
