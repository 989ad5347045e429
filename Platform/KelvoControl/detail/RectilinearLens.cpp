#include "KelvoControl/detail/RectilinearLens.h"

namespace Veltrani::KelvoControlDetail {

RectilinearLens::RectilinearLens(const Viewport& viewport, const std::wstring& name) : LensModel(viewport, name, {}) {
    requireExtents(viewport, name);
}

bool RectilinearLens::rayOf(const Point<double, 2>& normalised, Point<double, 3>& ray) const {
    const Viewport& picture = viewport();
    ray = {picture.ox + picture.sx * normalised[0], 1.0, picture.oy + picture.sy * normalised[1]};
    return true;
}

bool RectilinearLens::pictureOf(const Point<double, 3>& ray, Point<double, 2>& normalised) const {
    if (!(ray[1] > 0)) {
        return false;
    }
    const Viewport& picture = viewport();
    normalised = {(ray[0] / ray[1] - picture.ox) / picture.sx, (ray[2] / ray[1] - picture.oy) / picture.sy};
    return true;
}

}  // namespace Veltrani::KelvoControlDetail
