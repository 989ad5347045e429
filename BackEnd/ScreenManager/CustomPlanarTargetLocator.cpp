#include "ScreenManager/CustomPlanarTargetLocator.h"

#include "Common/VeltraniException.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/ScreenManager.h"

#include <cstdint>
#include <memory>

namespace {

/// One less than a count of samples. The count leaves the range of an int only as a double.
double stepsBetween(int samples) {
    return static_cast<double>(samples) - 1.0;
}

/// The border of a pixel space, edge by edge. The walk is in wide integers: a step past the last pixel may leave the
/// range of an int.
std::vector<Point<double, 2>> borderOf(const Point<int, 2>& resolution, int samplesPerEdge) {
    const std::int64_t width = resolution[0];
    const std::int64_t height = resolution[1];
    const std::int64_t stepX = samplesPerEdge > 1 ? width / (std::int64_t{samplesPerEdge} - 1) : 0;
    const std::int64_t stepY = samplesPerEdge > 1 ? height / (std::int64_t{samplesPerEdge} - 1) : 0;
    std::vector<Point<double, 2>> border;
    if (stepX < 1 || stepY < 1) {
        return border;  // an edge that makes no step would never end
    }
    for (std::int64_t x = 0; x < width; x += stepX) {
        border.emplace_back(x, 0);
    }
    for (std::int64_t y = 0; y < height; y += stepY) {
        border.emplace_back(width - 1, y);
    }
    for (std::int64_t x = width - 1; x >= 0; x -= stepX) {
        border.emplace_back(x, height - 1);
    }
    for (std::int64_t y = height - 1; y >= 0; y -= stepY) {
        border.emplace_back(0, y);
    }
    return border;
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
    for (const Point<double, 2>& pixel : borderOf(m_params.resolution, samplesPerEdge)) {
        Point<double, 2> onScreen;
        Point<double, 3> point;
        if (m_transform.mapChannel2DToScreen2D(pixel, onScreen) && screen->mapInto3D(onScreen, point, true)) {
            outline.push_back(point);
        }
    }
    return outline;
}
