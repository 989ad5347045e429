#include "KelvoScreen/FlatScreen.h"

#include "Common/Matrix.h"
#include "Configuration/BaseConfig.h"
#include "Configuration/IScreenConfig.h"
#include "KelvoScreen/detail/RayAim.h"
#include "KelvoScreen/detail/RayProbe.h"
#include "KelvoScreen/detail/Rounding.h"
#include "KelvoScreen/detail/ScreenSampling.h"
#include "KelvoScreen/detail/Sha1.h"
#include "KelvoScreen/detail/ShapeFaults.h"
#include "KelvoScreen/detail/WideRays.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <typeinfo>

using namespace Veltrani::KelvoScreenDetail;

namespace {

/// How far a coordinate along a side of the rectangle is beyond its ends, in sides; below zero between them.
template <class Number>
[[nodiscard, gnu::always_inline]] inline Number beyondEnds(Number s) {
    return larger(-s, s - 1);
}

/// The least slope of a ray against the plane, and how far beside the rectangle it then meets the plane, in units of
/// the largest coordinate, for `isFarBeside`.
constexpr double LEAST_SLOPE = 0x1p-10;
constexpr double FAR_BESIDE = 0x1p-16;
/// The shortest side of the rectangle in the same unit, and the bounds of the unit: products of two lengths then stay
/// in the range of a double.
constexpr double LEAST_SIDE = 0x1p-10;
constexpr double SMALLEST_UNIT = 1e-90;
constexpr double LARGEST_UNIT = 1e90;

/// Returns true when a ray misses the rectangle by so much that no rounding makes it a hit: then it need not be
/// measured across the ray.
///
/// In units of the largest coordinate, with a rounding of 2^-53: the ray meets the plane within 2^12 of its start, for
/// its slope is 2^-10 at least. The slope is known to 2^-50, so to 2^-40 of itself, and the point in the plane to
/// 2^-26. It is 2^-16 beside the rectangle, so 2^-17 at least without rounding, and the ray passes the rectangle at
/// 2^-28 at least, its slope times that. As seen along the ray the corners are known to 2^-48, and the tolerance is
/// 2^-48: neither brings an edge so near. Nor is a triangle of corners of which sides of 2^-10 and the slope make an
/// area of 2^-31, known to 2^-45, seen around the ray: the signs of its edge functions are right.
///
/// @param beyond how far the point in the plane is from the rectangle: a length
/// @param approach how much nearer to the plane the ray comes per unit of its direction
/// @param unit the largest coordinate
/// @param largestUnit the largest one for which the sides are long enough
template <class Number>
[[nodiscard, gnu::always_inline]] inline Truth<Number> isFarBeside(Number beyond, Number approach, Number length2,
                                                                   Number unit, Number largestUnit) {
    const Truth<Number> isPlain = both(length2 >= RayAim::SMALLEST_SQUARE, length2 <= RayAim::LARGEST_SQUARE);
    const Truth<Number> isSteep = approach * approach >= LEAST_SLOPE * LEAST_SLOPE * length2;
    return both(both(isPlain, isSteep), both(unit <= largestUnit, beyond > FAR_BESIDE * unit));
}

}  // namespace

FlatScreen::Numbers::Numbers(const IScreenConfig* screen) {
    if (screen != nullptr) {
        centre = screen->getCentre();
        orientation = screen->getOrientation();
        width = screen->getWidth();
        height = screen->getHeight();
    }
}

FlatScreen::Numbers::Numbers(const Point<double, 3>& theCentre, double theWidth, double theHeight)
    : centre(theCentre), width(theWidth), height(theHeight) {}

FlatScreen::FlatScreen() : FlatScreen(Numbers({0.5, 0.0, 0.5}, 1.0, 1.0)) {}

FlatScreen::FlatScreen(const IScreenConfig* screen) : FlatScreen(Numbers(screen)) {}

FlatScreen::FlatScreen(const Numbers& numbers) : m_numbers(numbers) {
    set(numbers);
}

std::array<unsigned char, 20> FlatScreen::calcUniqueDataHash(const IScreenConfig* screen) {
    return hash(Numbers(screen));
}

std::array<unsigned char, 20> FlatScreen::hash(const Numbers& numbers) {
    Sha1 sha1;
    sha1.addText("Flat");
    sha1.addPoint(numbers.centre);
    sha1.addPoint(numbers.orientation);
    sha1.addNumber(numbers.width);
    sha1.addNumber(numbers.height);
    return sha1.finish();
}

void FlatScreen::set(const Numbers& numbers) {
    m_numbers = numbers;
    const Point<double, 3>& angles = numbers.orientation;
    const Matrix<double, 3> rotation = Veltrani::rotationZXY(angles[0], angles[1], angles[2]);
    m_across = rotation * Point<double, 3>{numbers.width, 0.0, 0.0};
    m_upward = rotation * Point<double, 3>{0.0, 0.0, numbers.height};
    m_corner = numbers.centre - rotation * Point<double, 3>{numbers.width / 2, 0.0, numbers.height / 2};
    m_normal = rotation * Point<double, 3>{0.0, 1.0, 0.0};
    m_extent = std::max({largestComponent(m_corner), largestComponent(m_corner + m_across),
                         largestComponent(m_corner + m_upward), largestComponent(m_corner + m_across + m_upward)});
    const double shortestSide = std::min(numbers.width, numbers.height);
    m_largestUnit = shortestSide > SMALLEST_UNIT ? std::min(shortestSide / LEAST_SIDE, LARGEST_UNIT) : 0.0;
    m_valid = fault().empty();
}

std::wstring FlatScreen::fault() const {
    const bool areCornersFinite =
        isFinite(m_corner) && isFinite(m_across) && isFinite(m_upward) && isFinite(m_corner + m_across + m_upward);
    // Without the squares of its sides it could not be decided what is inside the rectangle.
    return firstFault({faultOfSize(L"width", m_numbers.width), faultOfSize(L"height", m_numbers.height),
                       faultOfPlace(m_numbers.centre, m_numbers.orientation),
                       areCornersFinite ? L"" : L"its corners lie beyond all numbers: correct its Centre and Size"});
}

bool FlatScreen::isValid() const {
    return m_valid;
}

IntersectionSet FlatScreen::intersect(const Point<double, 3>& from, const Point<double, 3>& to) const {
    const IntersectionSet onPlane = intersectPlane(from, to);
    if (onPlane.empty()) {
        return {};
    }
    Intersection hit = onPlane.first();
    if (!limitToRectangle(from, to, hit)) {
        return {};
    }
    return {hit};
}

Point<double, 3> FlatScreen::getScreenNormal(const Point<double, 3>& /*point*/) const {
    return m_valid ? m_normal : Point<double, 3>{};
}

bool FlatScreen::mapInto3D(const Point<double, 2>& st, Point<double, 3>& out, bool extrapolate) const {
    const double s = snapToEdge(st[0]);
    const double t = snapToEdge(st[1]);
    const bool inside = s >= 0 && s <= 1 && t >= 0 && t <= 1;
    if (!m_valid || !(inside || extrapolate)) {
        return false;
    }
    const Point<double, 3> point = pointAt(s, t);
    if (!isFinite(point)) {
        return false;
    }
    out = point;
    return true;
}

std::array<unsigned char, 20> FlatScreen::getUniqueDataHash() const {
    return hash(m_numbers);
}

void FlatScreen::updateGeometry(const IScreenConfig* screen) {
    if (screen != nullptr && screen->getShape() == BaseConfig::SHAPE_FLAT) {
        set(Numbers(screen));
    }
}

void FlatScreen::sampleHorizontally(double y, double xMin, double xMax, int columns, int row, Grid& grid,
                                    bool extrapolate) const {
    sampleRow(*this, y, xMin, xMax, columns, row, grid, extrapolate);
}

IntersectionSet FlatScreen::intersectExtrapolatedWithSpecifiedNormal(const Point<double, 3>& from,
                                                                     const Point<double, 3>& to, int sign) const {
    return sideOfSurface(to - from, m_normal) == sign ? intersectPlane(from, to) : IntersectionSet{};
}

std::vector<Point<double, 3>> FlatScreen::intersectChannelBoundary(const std::vector<Ray>& boundary,
                                                                   const std::vector<Ray>& centre) const {
    return channelBoundary(*this, boundary, centre);
}

void FlatScreen::intersectRays(std::span<const Ray> rays, std::span<SurfaceHit> hits) const {
    if (typeid(*this) == typeid(FlatScreen) && rays.size() == hits.size()) {
        nearestHits(rays, hits);
    } else {
        ScreenGeometry::intersectRays(rays, hits);
    }
}

std::size_t FlatScreen::raysAtOnce() const {
    return typeid(*this) == typeid(FlatScreen) ? FORMULA_RAYS_AT_ONCE : 0;
}

/// What casting four rays needs of the rectangle. It is read once for all rays: as members of the screen these numbers
/// could be changed by every hit that is written, for all that the compiler knows.
struct FlatScreen::WideNumbers {
    explicit WideNumbers(const FlatScreen& screen)
        : corner(wide(screen.m_corner)),
          across(wide(screen.m_across)),
          upward(wide(screen.m_upward)),
          normal(wide(screen.m_normal)),
          across2(all(dot(screen.m_across, screen.m_across))),
          upward2(all(dot(screen.m_upward, screen.m_upward))),
          perWidth(all(1 / norm(screen.m_across))),
          perHeight(all(1 / norm(screen.m_upward))),
          extent(all(screen.m_extent)),
          largestUnit(all(screen.m_largestUnit)) {}

    Triple<Wide> corner, across, upward, normal;
    Wide across2, upward2;  ///< the squares of the lengths of the sides
    Wide perWidth, perHeight;
    Wide extent;
    Wide largestUnit;
};

/// Four rays on their way to the rectangle; each step below fills some of it.
struct FlatScreen::WideCrossing {
    [[gnu::always_inline]] void start(const WideNumbers& wall, const Ray* rays) {
        const WideRays four(rays);
        from = four.from;
        direction = difference(four.to, four.from);
        approach = productOf(direction, wall.normal);
        distance = dotOf(difference(wall.corner, four.from), wall.normal);
        const Wide largest = largestOf(four.from);
        unit = larger(largest, wall.extent);
        noise = ROUNDING * larger(largest, largestOf(four.to));
    }

    [[gnu::always_inline]] void reachPlane() {
        const Wide onLine = distance / approach;
        const WideMask isOnPlane = (onLine < 0) & (absolute(onLine * approach) <= ROUNDING * unit);
        t = isOnPlane ? Wide{} : onLine;
        meetsPlane = (absolute(approach) > noise) & (t >= 0);
    }

    [[gnu::always_inline]] void place(const WideNumbers& wall) {
        const Triple<Wide> nearPlane = placeOnRay(from, direction, t);
        point = difference(nearPlane, scaled(wall.normal, dotOf(difference(nearPlane, wall.corner), wall.normal)));
        const Triple<Wide> inPlane = difference(point, wall.corner);
        across = productOf(inPlane, wall.across);
        upward = productOf(inPlane, wall.upward);
    }

    /// Writes the hits and returns a bit for each ray that is left to `nearestHit`.
    [[gnu::always_inline]] LaneMask finish(const WideNumbers& wall, SurfaceHit* hits) const {
        WideHits found{};
        found.t = t;
        found.point = point;
        found.normal = wall.normal;
        // A part of a side is not above 1 where the product is not above the square of the side: a division less. A
        // point that is not finite is not between the ends.
        found.isHit = meetsPlane & (across >= 0) & (across <= wall.across2) & (upward >= 0) & (upward <= wall.upward2);
        const Wide beyond = larger(larger(-across, across - wall.across2) * wall.perWidth,
                                   larger(-upward, upward - wall.upward2) * wall.perHeight);
        const WideMask isBeside =
            isFarBeside(beyond, approach, productOf(direction, direction), unit, wall.largestUnit);
        found.storeTo(hits, approach);
        return WIDE_BITS & ~bitsOf(~meetsPlane | found.isHit | isBeside);
    }

    Triple<Wide> from, direction;
    Wide approach;  ///< how much nearer to the plane a ray comes per unit of its direction
    Wide distance;  ///< of its start from the plane
    Wide unit;      ///< the largest coordinate
    Wide noise;     ///< what the approach has to exceed
    Wide t;
    WideMask meetsPlane;
    Triple<Wide> point;
    Wide across, upward;  ///< of the point, in lengths times the length of the side
};

KELVO_SCREEN_WIDE_VECTORS void FlatScreen::nearestHits(std::span<const Ray> rays, std::span<SurfaceHit> hits) const {
    const WideNumbers wall(*this);
    const std::size_t whole = m_valid ? rays.size() - rays.size() % WIDTH : 0;
    // Step by step for some rays each: the steps of one ray wait for each other, those of different rays do not.
    std::array<WideCrossing, 8> crossings;
    for (std::size_t first = 0; first < whole; first += WIDTH * crossings.size()) {
        const std::size_t count = std::min(crossings.size(), (whole - first) / WIDTH);
        for (std::size_t k = 0; k < count; ++k) {
            crossings[k].start(wall, &rays[first + k * WIDTH]);
        }
        for (std::size_t k = 0; k < count; ++k) {
            crossings[k].reachPlane();
        }
        for (std::size_t k = 0; k < count; ++k) {
            crossings[k].place(wall);
        }
        for (std::size_t k = 0; k < count; ++k) {
            const std::size_t i = first + k * WIDTH;
            const LaneMask left = crossings[k].finish(wall, &hits[i]);
            forEachLane(left, [&](std::size_t lane) { hits[i + lane] = nearestHit(rays[i + lane]); });
        }
    }
    for (std::size_t i = whole; i < rays.size(); ++i) {
        hits[i] = nearestHit(rays[i]);
    }
}

SurfaceHit FlatScreen::nearestHit(const Ray& ray) const {
    const IntersectionSet found = FlatScreen::intersect(ray.first, ray.second);
    return found.empty() ? SurfaceHit{}
                         : SurfaceHit{found.first().point, m_normal, found.first().t,
                                      sideOfSurface(ray.second - ray.first, m_normal), true};
}

std::wstring FlatScreen::faultOfShape() const {
    return fault();
}

Point<double, 3> FlatScreen::pointAt(double s, double t) const {
    return m_corner + s * m_across + t * m_upward;
}

IntersectionSet FlatScreen::intersectPlane(const Point<double, 3>& from, const Point<double, 3>& to) const {
    const Point<double, 3> direction = to - from;
    const double approach = dot(direction, m_normal);
    // Below this the direction itself is known too inaccurately to decide whether the ray comes nearer to the plane at
    // all.
    const double noise = ROUNDING * std::max(largestComponent(from), largestComponent(to));
    if (!m_valid || !(std::abs(approach) > noise)) {
        return {};
    }
    double t = dot(m_corner - from, m_normal) / approach;
    if (t < 0 && std::abs(t * approach) <= ROUNDING * largestCoordinate(from)) {
        t = 0;
    }
    const Point<double, 3> nearPlane = from + t * direction;
    const Point<double, 3> point = nearPlane - dot(nearPlane - m_corner, m_normal) * m_normal;
    if (!(t >= 0) || !isFinite(point)) {
        return {};
    }
    return {Intersection{point, t}};
}

bool FlatScreen::limitToRectangle(const Point<double, 3>& from, const Point<double, 3>& to, Intersection& hit) const {
    const Point<double, 3> inPlane = hit.point - m_corner;
    const double s = dot(inPlane, m_across) / dot(m_across, m_across);
    const double t = dot(inPlane, m_upward) / dot(m_upward, m_upward);
    if (s >= 0 && s <= 1 && t >= 0 && t <= 1) {
        return true;
    }
    const Point<double, 3> direction = to - from;
    const double beyond = std::max(beyondEnds(s) * norm(m_across), beyondEnds(t) * norm(m_upward));
    const double unit = largestCoordinate(from);
    if (isFarBeside(beyond, dot(direction, m_normal), dot(direction, direction), unit, m_largestUnit)) {
        return false;
    }
    // Measured across the ray: along it, a grazing hit is uncertain by far more than the ray itself.
    const RayProbe probe(from, direction, ROUNDING * unit, norm(m_across + m_upward));
    const Corners lower{pointAt(0, 0), pointAt(1, 0), pointAt(1, 1)};
    const Corners upper{pointAt(0, 0), pointAt(1, 1), pointAt(0, 1)};
    for (const Corners& half : {lower, upper}) {
        Meeting meeting;
        if (probe.meets(half[0], half[1], half[2], meeting)) {
            hit = {pointWithWeights(half, meeting.weights), std::max(0.0, meeting.t)};
            return true;
        }
    }
    return false;
}

double FlatScreen::largestCoordinate(const Point<double, 3>& from) const {
    return std::max(largestComponent(from), m_extent);
}
