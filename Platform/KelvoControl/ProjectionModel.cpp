#include "KelvoControl/ProjectionModel.h"

ProjectionModel::~ProjectionModel() = default;

bool ProjectionModel::projectNormalised(const Point<double, 3>& layoutPoint, Point<double, 2>& normalised) const {
    Point<int, 2> pixel;
    if (!project(layoutPoint, pixel)) {
        return false;
    }
    const Viewport& picture = viewport();
    normalised = {static_cast<double>(pixel[0]) / picture.width, static_cast<double>(pixel[1]) / picture.height};
    return true;
}
