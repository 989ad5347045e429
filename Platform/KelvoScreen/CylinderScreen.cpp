#include "KelvoScreen/CylinderScreen.h"

#include "Configuration/BaseConfig.h"
#include "Configuration/IScreenConfig.h"
#include "KelvoScreen/detail/CylinderSurface.h"
#include "KelvoScreen/detail/ScreenSampling.h"
#include "KelvoScreen/detail/Sha1.h"
#include "KelvoScreen/detail/WideRays.h"

#include <typeinfo>

using namespace Veltrani::KelvoScreenDetail;

namespace {

CylinderNumbers numbersOf(const IScreenConfig* screen) {
    CylinderNumbers numbers;
    if (screen != nullptr) {
        numbers.centre = screen->getCentre();
        numbers.orientation = screen->getOrientation();
        numbers.radius = screen->getRadius();
        numbers.height = screen->getHeight();
        numbers.azimuthMin = screen->getAzimuthMin();
        numbers.azimuthMax = screen->getAzimuthMax();
    }
    return numbers;
}

std::array<unsigned char, 20> hashOf(const CylinderNumbers& numbers) {
    Sha1 sha1;
    sha1.addText("Cylinder");
    sha1.addPoint(numbers.centre);
    sha1.addPoint(numbers.orientation);
    sha1.addNumber(numbers.radius);
    sha1.addNumber(numbers.height);
    sha1.addNumber(numbers.azimuthMin);
    sha1.addNumber(numbers.azimuthMax);
    return sha1.finish();
}

}  // namespace

CylinderScreen::CylinderScreen(const IScreenConfig* screen)
    : m_surface(std::make_shared<const CylinderSurface>(numbersOf(screen))) {}

std::array<unsigned char, 20> CylinderScreen::calcUniqueDataHash(const IScreenConfig* screen) {
    return hashOf(numbersOf(screen));
}

bool CylinderScreen::isValid() const {
    return m_surface->isValid();
}

IntersectionSet CylinderScreen::intersect(const Point<double, 3>& from, const Point<double, 3>& to) const {
    return m_surface->intersect(from, to);
}

Point<double, 3> CylinderScreen::getScreenNormal(const Point<double, 3>& point) const {
    return m_surface->normal(point);
}

bool CylinderScreen::mapInto3D(const Point<double, 2>& st, Point<double, 3>& out, bool extrapolate) const {
    const double s = snapToEdge(st[0]);
    const double t = snapToEdge(st[1]);
    if (!isValid() || !(isWithinUnit(s, t) || extrapolate)) {
        return false;
    }
    return storeIfFinite(m_surface->pointAt(s, t), out);
}

std::array<unsigned char, 20> CylinderScreen::getUniqueDataHash() const {
    return hashOf(m_surface->numbers());
}

void CylinderScreen::updateGeometry(const IScreenConfig* screen) {
    if (screen != nullptr && screen->getShape() == BaseConfig::SHAPE_CYLINDER) {
        m_surface = std::make_shared<const CylinderSurface>(numbersOf(screen));
    }
}

void CylinderScreen::sampleHorizontally(double y, double xMin, double xMax, int columns, int row, Grid& grid,
                                        bool extrapolate) const {
    sampleRow(*this, y, xMin, xMax, columns, row, grid, extrapolate);
}

IntersectionSet CylinderScreen::intersectExtrapolatedWithSpecifiedNormal(const Point<double, 3>& from,
                                                                         const Point<double, 3>& to, int sign) const {
    return keepSide(*this, m_surface->intersectEndless(from, to), to - from, sign);
}

std::vector<Point<double, 3>> CylinderScreen::intersectChannelBoundary(const std::vector<Ray>& boundary,
                                                                       const std::vector<Ray>& centre) const {
    return channelBoundary(*this, boundary, centre);
}

void CylinderScreen::intersectRays(std::span<const Ray> rays, std::span<SurfaceHit> hits) const {
    if (typeid(*this) == typeid(CylinderScreen) && rays.size() == hits.size()) {
        m_surface->nearestHits(rays, hits);
    } else {
        ScreenGeometry::intersectRays(rays, hits);
    }
}

std::size_t CylinderScreen::raysAtOnce() const {
    return typeid(*this) == typeid(CylinderScreen) ? FORMULA_RAYS_AT_ONCE : 0;
}

std::wstring CylinderScreen::faultOfShape() const {
    return m_surface->fault();
}
