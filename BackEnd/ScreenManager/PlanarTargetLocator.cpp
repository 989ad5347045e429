#include "ScreenManager/PlanarTargetLocator.h"

#include "Common/VeltraniException.h"
#include "Common/VeltraniLogging.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/ScreenManager.h"

#include <array>
#include <cstddef>
#include <memory>

log4cxx::LoggerPtr PlanarTargetLocator::log = log4cxx::Logger::getLogger(L"Dravix.ScreenManager.PlanarTargetLocator");

namespace {

/// Evaluated in this order, so that results match to the last bit.
double between(double start, double end, double normalised) {
    return start + (end - start) * normalised;
}

/// Lifts the samples of one edge, its end excluded, onto the screen.
void sampleEdge(const ScreenGeometry& screen, const Point<double, 2>& start, const Point<double, 2>& end, int samples,
                std::vector<Point<double, 3>>& outline) {
    for (int i = 0; i < samples; ++i) {
        const double t = static_cast<double>(i) / static_cast<double>(samples);
        Point<double, 3> point;
        if (screen.mapInto3D((1 - t) * start + t * end, point, true)) {
            outline.push_back(point);
        }
    }
}

}  // namespace

PlanarTargetLocatorParams::PlanarTargetLocatorParams(double left, double right, double bottom, double top)
    : screenLeft(left), screenRight(right), screenBottom(bottom), screenTop(top) {}

bool PlanarTargetLocatorParams::equals(const TargetLocatorParams& other) const {
    const auto& record = static_cast<const PlanarTargetLocatorParams&>(other);
    return screenLeft == record.screenLeft && screenRight == record.screenRight &&
           screenBottom == record.screenBottom && screenTop == record.screenTop;
}

PlanarTargetLocator::PlanarTargetLocator(const PlanarTargetLocatorParams& params) : m_params(params) {}

void PlanarTargetLocator::projectOnTargetLocationSurface(double uMin, double uMax, double vMin, double vMax,
                                                         int columns, int rows,
                                                         std::map<Point<int, 2>, Point<double, 3>>& grid) const {
    const double xMin = between(m_params.screenLeft, m_params.screenRight, uMin);
    const double xMax = between(m_params.screenLeft, m_params.screenRight, uMax);
    const double yMin = between(m_params.screenTop, m_params.screenBottom, vMin);
    const double yMax = between(m_params.screenTop, m_params.screenBottom, vMax);
    try {
        ScreenManager::getInstance()->getScreenMatrix(xMin, xMax, yMin, yMax, columns, rows, grid, false);
    } catch (const VeltraniException&) {
        VELTRANI_LOG(log, Warn,
                     L"Attempt to call ScreenManager::getScreenMatrix() with no parameterization in "
                     L"projectOnTargetLocationSurface");
    }
}

const TargetLocatorParams& PlanarTargetLocator::getTargetLocatorParams() const {
    return m_params;
}

std::vector<Point<double, 3>> PlanarTargetLocator::projectBoundaryOnTargetLocationSurface(int samplesPerEdge) const {
    std::vector<Point<double, 3>> outline;
    const std::array<Point<double, 2>, 4> corners{Point<double, 2>{m_params.screenLeft, m_params.screenTop},
                                                  Point<double, 2>{m_params.screenRight, m_params.screenTop},
                                                  Point<double, 2>{m_params.screenRight, m_params.screenBottom},
                                                  Point<double, 2>{m_params.screenLeft, m_params.screenBottom}};
    const std::shared_ptr<ScreenGeometry> screen = ScreenManager::getInstance()->getScreenGeometry();
    if (!screen) {
        return outline;
    }
    try {
        for (std::size_t edge = 0; edge < corners.size(); ++edge) {
            sampleEdge(*screen, corners[edge], corners[(edge + 1) % corners.size()], samplesPerEdge, outline);
        }
    } catch (const VeltraniException&) {
        VELTRANI_LOG(log, Warn,
                     L"Attempt to call ScreenGeometry::mapInto3D() with no parameterization in "
                     L"projectBoundaryOnTargetLocationSurface");
    }
    return outline;
}
