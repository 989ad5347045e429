#include "KelvoScreen/RuledSurfaceScreen.h"

#include "Configuration/BaseConfig.h"
#include "Configuration/IScreenConfig.h"
#include "KelvoScreen/detail/RuledSurface.h"
#include "KelvoScreen/detail/ScreenSampling.h"
#include "KelvoScreen/detail/Sha1.h"
#include "KelvoScreen/detail/WideRays.h"

#include <typeinfo>

using namespace Veltrani::KelvoScreenDetail;

namespace {

RuledNumbers numbersOf(const IScreenConfig* screen) {
    RuledNumbers numbers;
    if (screen != nullptr) {
        numbers.lower = screen->getLowerRail();
        numbers.upper = screen->getUpperRail();
    }
    return numbers;
}

std::array<unsigned char, 20> hashOf(const RuledNumbers& numbers) {
    Sha1 sha1;
    sha1.addText("Ruled");
    for (const auto* rail : {&numbers.lower, &numbers.upper}) {
        sha1.addCount(rail->size());
        for (const Point<double, 3>& point : *rail) {
            sha1.addPoint(point);
        }
    }
    return sha1.finish();
}

}  // namespace

RuledSurfaceScreen::RuledSurfaceScreen(const IScreenConfig* screen)
    : m_surface(std::make_shared<const RuledSurface>(numbersOf(screen))) {}

std::array<unsigned char, 20> RuledSurfaceScreen::calcUniqueDataHash(const IScreenConfig* screen) {
    return hashOf(numbersOf(screen));
}

bool RuledSurfaceScreen::isValid() const {
    return m_surface->isValid();
}

IntersectionSet RuledSurfaceScreen::intersect(const Point<double, 3>& from, const Point<double, 3>& to) const {
    return m_surface->intersect(from, to);
}

Point<double, 3> RuledSurfaceScreen::getScreenNormal(const Point<double, 3>& point) const {
    return m_surface->normal(point);
}

bool RuledSurfaceScreen::mapInto3D(const Point<double, 2>& st, Point<double, 3>& out, bool extrapolate) const {
    const double s = snapToEdge(st[0]);
    const double t = snapToEdge(st[1]);
    if (!isValid() || !(isWithinUnit(s, t) || extrapolate)) {
        return false;
    }
    return m_surface->pointAt(s, t, out);
}

std::array<unsigned char, 20> RuledSurfaceScreen::getUniqueDataHash() const {
    return hashOf(m_surface->numbers());
}

void RuledSurfaceScreen::updateGeometry(const IScreenConfig* screen) {
    if (screen != nullptr && screen->getShape() == BaseConfig::SHAPE_RULED) {
        m_surface = std::make_shared<const RuledSurface>(numbersOf(screen));
    }
}

void RuledSurfaceScreen::sampleHorizontally(double y, double xMin, double xMax, int columns, int row, Grid& grid,
                                            bool extrapolate) const {
    sampleRow(*this, y, xMin, xMax, columns, row, grid, extrapolate);
}

IntersectionSet RuledSurfaceScreen::intersectExtrapolatedWithSpecifiedNormal(const Point<double, 3>& from,
                                                                             const Point<double, 3>& to,
                                                                             int sign) const {
    return m_surface->intersectContinued(from, to, sign);
}

std::vector<Point<double, 3>> RuledSurfaceScreen::intersectChannelBoundary(const std::vector<Ray>& boundary,
                                                                           const std::vector<Ray>& centre) const {
    return channelBoundary(*this, boundary, centre);
}

void RuledSurfaceScreen::intersectRays(std::span<const Ray> rays, std::span<SurfaceHit> hits) const {
    if (typeid(*this) == typeid(RuledSurfaceScreen) && rays.size() == hits.size()) {
        m_surface->nearestHits(rays, hits);
    } else {
        ScreenGeometry::intersectRays(rays, hits);
    }
}

std::size_t RuledSurfaceScreen::raysAtOnce() const {
    return typeid(*this) == typeid(RuledSurfaceScreen) ? FORMULA_RAYS_AT_ONCE : 0;
}

std::wstring RuledSurfaceScreen::faultOfShape() const {
    return m_surface->fault();
}
