#include "ScreenManager/CustomPlanarTargetLocator.h"

#include "Common/VeltraniException.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/detail/OutlinePlaces.h"

#include <memory>

namespace {

/// Returns one less than a count of samples. The count leaves the range of an int only as a double.
double stepsBetween(int samples) {
    return static_cast<double>(samples) - 1.0;
}

}  // namespace

CustomPlanarTargetLocatorParams::CustomPlanarTargetLocatorParams(const Point<int, 2>& pixels,
                                                                 const std::wstring& mapFile)
    : resolution(pixels), filename(mapFile) {}

bool CustomPlanarTargetLocatorParams::equals(const TargetLocatorParams& other) const {
    const auto& record = static_cast<const CustomPlanarTargetLocatorParams&>(other);
    return resolution == record.resolution && filename == record.filename;
}

CustomPlanarTargetLocator::CustomPlanarTargetLocator(const CustomPlanarTargetLocatorParams& params)
    : m_transform(params.filename, std::shared_ptr<IScreenGeometry>()), m_params(params) {
    if (params.filename.empty()) {
        throw VeltraniParseException(L"Cannot use a blank filename");
    }
    if (params.resolution[0] < 1 || params.resolution[1] < 1) {
        throw VeltraniParseException(L"Must use positive values to define the resolution");
    }
}

void CustomPlanarTargetLocator::projectOnTargetLocationSurface(double uMin, double uMax, double vMin, double vMax,
                                                               int columns, int rows,
                                                               std::map<Point<int, 2>, Point<double, 3>>& grid) const {
    const double stepU = (uMax - uMin) / stepsBetween(columns);
    const double stepV = (vMax - vMin) / stepsBetween(rows);
    const std::shared_ptr<ScreenGeometry> screen = ScreenManager::getInstance()->getScreenGeometry();
    if (!screen) {
        return;
    }
    double v = vMin;
    for (int row = 0; row < rows; ++row) {
        double u = uMin;
        for (int column = 0; column < columns; ++column) {
            Point<double, 2> onScreen;
            Point<double, 3> target;
            if (m_transform.mapChannel2DToScreen2D({m_params.resolution[0] * u, m_params.resolution[1] * v},
                                                   onScreen) &&
                screen->mapInto3D(onScreen, target, false)) {
                grid[Point<int, 2>{column, row}] = target;
            }
            // Added up, not multiplied out: the two differ in the last bits.
            u += stepU;
        }
        v += stepV;
    }
}

const TargetLocatorParams& CustomPlanarTargetLocator::getTargetLocatorParams() const {
    return m_params;
}

std::vector<Point<double, 3>> CustomPlanarTargetLocator::projectBoundaryOnTargetLocationSurface(
    int samplesPerEdge) const {
    std::vector<Point<double, 3>> outline;
    const std::shared_ptr<ScreenGeometry> screen = ScreenManager::getInstance()->getScreenGeometry();
    if (!screen) {
        return outline;
    }
    for (const Point<double, 2>& pixel :
         Veltrani::ScreenManagerDetail::borderOfPixels(m_params.resolution, samplesPerEdge)) {
        Point<double, 2> onScreen;
        Point<double, 3> point;
        if (m_transform.mapChannel2DToScreen2D(pixel, onScreen) && screen->mapInto3D(onScreen, point, true)) {
            outline.push_back(point);
        }
    }
    return outline;
}
