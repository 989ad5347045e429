#include "KelvoScreen/SphericalScreen.h"

#include "Configuration/BaseConfig.h"
#include "Configuration/IScreenConfig.h"
#include "KelvoScreen/detail/ScreenSampling.h"
#include "KelvoScreen/detail/Sha1.h"
#include "KelvoScreen/detail/SphereSurface.h"
#include "KelvoScreen/detail/WideRays.h"

#include <typeinfo>

using namespace Veltrani::KelvoScreenDetail;

namespace {

SphereNumbers numbersOf(const IScreenConfig* screen) {
    SphereNumbers numbers;
    if (screen != nullptr) {
        numbers.centre = screen->getCentre();
        numbers.orientation = screen->getOrientation();
        numbers.radius = screen->getRadius();
        numbers.azimuthMin = screen->getAzimuthMin();
        numbers.azimuthMax = screen->getAzimuthMax();
        numbers.elevationMin = screen->getElevationMin();
        numbers.elevationMax = screen->getElevationMax();
    }
    return numbers;
}

std::array<unsigned char, 20> hashOf(const SphereNumbers& numbers) {
    Sha1 sha1;
    sha1.addText("Sphere");
    sha1.addPoint(numbers.centre);
    sha1.addPoint(numbers.orientation);
    sha1.addNumber(numbers.radius);
    sha1.addNumber(numbers.azimuthMin);
    sha1.addNumber(numbers.azimuthMax);
    sha1.addNumber(numbers.elevationMin);
    sha1.addNumber(numbers.elevationMax);
    return sha1.finish();
}

}  // namespace

SphericalScreen::SphericalScreen(const IScreenConfig* screen)
    : m_surface(std::make_shared<const SphereSurface>(numbersOf(screen))) {}

SphericalScreen::SphericalScreen(Point<double, 3> centre, double radius, double azimuthMin, double azimuthMax,
                                 double elevationMin, double elevationMax)
    : m_surface(std::make_shared<const SphereSurface>(
          SphereNumbers{centre, {}, radius, azimuthMin, azimuthMax, elevationMin, elevationMax})) {}

std::array<unsigned char, 20> SphericalScreen::calcUniqueDataHash(const IScreenConfig* screen) {
    return hashOf(numbersOf(screen));
}

bool SphericalScreen::isValid() const {
    return m_surface->isValid();
}

IntersectionSet SphericalScreen::intersect(const Point<double, 3>& from, const Point<double, 3>& to) const {
    return m_surface->intersect(from, to);
}

Point<double, 3> SphericalScreen::getScreenNormal(const Point<double, 3>& point) const {
    return m_surface->normal(point);
}

bool SphericalScreen::mapInto3D(const Point<double, 2>& st, Point<double, 3>& out, bool extrapolate) const {
    const double s = snapToEdge(st[0]);
    const double t = snapToEdge(st[1]);
    if (!isValid() || !(isWithinUnit(s, t) || (extrapolate && m_surface->continuesAt(t)))) {
        return false;
    }
    return storeIfFinite(m_surface->pointAt(s, t), out);
}

std::array<unsigned char, 20> SphericalScreen::getUniqueDataHash() const {
    return hashOf(m_surface->numbers());
}

void SphericalScreen::updateGeometry(const IScreenConfig* screen) {
    if (screen != nullptr && screen->getShape() == BaseConfig::SHAPE_SPHERE) {
        m_surface = std::make_shared<const SphereSurface>(numbersOf(screen));
    }
}

void SphericalScreen::sampleHorizontally(double y, double xMin, double xMax, int columns, int row, Grid& grid,
                                         bool extrapolate) const {
    sampleRow(*this, y, xMin, xMax, columns, row, grid, extrapolate);
}

IntersectionSet SphericalScreen::intersectExtrapolatedWithSpecifiedNormal(const Point<double, 3>& from,
                                                                          const Point<double, 3>& to, int sign) const {
    return keepSide(*this, m_surface->intersectWhole(from, to), to - from, sign);
}

std::vector<Point<double, 3>> SphericalScreen::intersectChannelBoundary(const std::vector<Ray>& boundary,
                                                                        const std::vector<Ray>& centre) const {
    return channelBoundary(*this, boundary, centre);
}

void SphericalScreen::intersectRays(std::span<const Ray> rays, std::span<SurfaceHit> hits) const {
    if (typeid(*this) == typeid(SphericalScreen) && rays.size() == hits.size()) {
        m_surface->nearestHits(rays, hits);
    } else {
        ScreenGeometry::intersectRays(rays, hits);
    }
}

std::size_t SphericalScreen::raysAtOnce() const {
    return typeid(*this) == typeid(SphericalScreen) ? FORMULA_RAYS_AT_ONCE : 0;
}

std::wstring SphericalScreen::faultOfShape() const {
    return m_surface->fault();
}
