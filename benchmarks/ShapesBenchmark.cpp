#include "Configuration/BaseConfig.h"
#include "Configuration/IScreenConfig.h"
#include "KelvoScreen/CylinderScreen.h"
#include "KelvoScreen/FlatScreen.h"
#include "KelvoScreen/RuledSurfaceScreen.h"
#include "KelvoScreen/SphericalScreen.h"
#include "Ratio.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <numbers>
#include <random>
#include <span>
#include <string>
#include <vector>

/// Rays at spheres, cylinders, a flat screen and a ruled one through the abstract class, one by one and many at once,
/// against the textbook formula behind one virtual call for each ray.

namespace {

using Vector = Point<double, 3>;

constexpr double PI = std::numbers::pi;
constexpr double RADIUS = 5;  // metres: a dome
constexpr double HEIGHT = 4;
constexpr double AZIMUTH = 2;  // to either side
constexpr double LOWEST_ELEVATION = -0.35;
constexpr int RAY_COUNT = 10000;
constexpr std::size_t BATCH = 128;
/// What is accepted of single rays; the aim is 1.5.
constexpr double LIMIT = 2.0;
/// What is accepted of rays at once; the aim is 1.
constexpr double BATCH_LIMIT = 1.5;
/// The flat screen is in front.
constexpr double DISTANCE = 4;

/// The numbers of the shapes, as a configuration hands them over.
class Description : public IScreenConfig {
public:
    Description(const std::wstring& shape, double azimuth) : m_shape(shape), m_azimuth(azimuth) {}

    [[nodiscard]] std::wstring getShape() const override { return m_shape; }
    [[nodiscard]] std::wstring getContentMeshFile(int /*index*/) const override { return {}; }
    [[nodiscard]] std::wstring getMeasuredMeshFile(int /*index*/) const override { return {}; }
    [[nodiscard]] std::wstring getModelPcdFile(int /*index*/) const override { return {}; }
    [[nodiscard]] std::wstring getImportOrientationParam1() const override { return {}; }
    [[nodiscard]] std::wstring getImportOrientationParam2() const override { return {}; }
    [[nodiscard]] std::wstring getUnitName() const override { return {}; }
    [[nodiscard]] double getScale() const override { return 1; }
    [[nodiscard]] Point<double, 3> getEyePoint() const override { return {}; }
    [[nodiscard]] double getRadius() const override { return RADIUS; }
    [[nodiscard]] double getHeight() const override { return HEIGHT; }
    [[nodiscard]] double getWidth() const override { return 2 * HEIGHT; }
    [[nodiscard]] Point<double, 3> getCentre() const override {
        return {0.0, m_shape == BaseConfig::SHAPE_FLAT ? DISTANCE : 0.0, 0.0};
    }
    [[nodiscard]] double getAzimuthMin() const override { return -m_azimuth; }
    [[nodiscard]] double getAzimuthMax() const override { return m_azimuth; }
    [[nodiscard]] std::vector<Vector> getLowerRail() const override { return rail(1.0, -HEIGHT / 2); }
    [[nodiscard]] std::vector<Vector> getUpperRail() const override { return rail(1.2, HEIGHT / 2); }

private:
    /// A cockpit of seven patches that leans outwards.
    [[nodiscard]] std::vector<Vector> rail(double widening, double height) const {
        constexpr int PATCHES = 7;
        std::vector<Vector> points;
        for (int i = 0; i <= PATCHES; ++i) {
            const double azimuth = m_azimuth * (2.0 * i / PATCHES - 1) + 0.1 * (widening - 1);
            points.push_back({widening * RADIUS * std::sin(azimuth), widening * RADIUS * std::cos(azimuth), height});
        }
        return points;
    }

    std::wstring m_shape;
    double m_azimuth;
};

/// The least that a caller with several kinds of screens can do: one virtual call, then the formula.
class BareShape {
public:
    virtual ~BareShape() = default;
    virtual bool intersect(const Vector& from, const Vector& to, Vector& point) const = 0;
    /// The same, with the normal.
    virtual bool hit(const Vector& from, const Vector& to, Vector& point, Vector& normal) const = 0;
};

/// The nearest root t >= 0 of a t^2 + 2 b t + c whose point is accepted.
template <class Accept>
bool nearestRoot(double a, double b, double c, const Vector& from, const Vector& direction, const Accept& accept,
                 Vector& point) {
    const double discriminant = b * b - a * c;
    if (discriminant < 0) {
        return false;
    }
    const double root = std::sqrt(discriminant);
    for (const double t : {(-b - root) / a, (-b + root) / a}) {
        if (t >= 0) {
            point = from + t * direction;
            if (accept(point)) {
                return true;
            }
        }
    }
    return false;
}

class BareSphere final : public BareShape {
public:
    bool hit(const Vector& from, const Vector& to, Vector& point, Vector& normal) const override {
        const bool isHit = BareSphere::intersect(from, to, point);
        normal = (1 / RADIUS) * point;
        return isHit;
    }
    bool intersect(const Vector& from, const Vector& to, Vector& point) const override {
        const Vector direction = to - from;
        return nearestRoot(
            dot(direction, direction), dot(from, direction), dot(from, from) - RADIUS * RADIUS, from, direction,
            [](const Vector&) { return true; }, point);
    }
};

/// True up to an azimuth, given by its sine and cosine, to either side: a plane for each, no angles.
bool isWithin(const Vector& p, double sine, double cosine) {
    return sine * p[1] - cosine * std::abs(p[0]) >= 0;
}

class BareDome final : public BareShape {
public:
    bool hit(const Vector& from, const Vector& to, Vector& point, Vector& normal) const override {
        const bool isHit = BareDome::intersect(from, to, point);
        normal = (1 / RADIUS) * point;
        return isHit;
    }
    bool intersect(const Vector& from, const Vector& to, Vector& point) const override {
        const Vector direction = to - from;
        return nearestRoot(
            dot(direction, direction), dot(from, direction), dot(from, from) - RADIUS * RADIUS, from, direction,
            [this](const Vector& p) { return p[2] >= m_lowest && isWithin(p, m_sine, m_cosine); }, point);
    }

private:
    double m_lowest = RADIUS * std::sin(LOWEST_ELEVATION);
    double m_sine = std::sin(AZIMUTH);
    double m_cosine = std::cos(AZIMUTH);
};

class BareCylinder final : public BareShape {
public:
    explicit BareCylinder(double azimuth)
        : m_sine(std::sin(azimuth)), m_cosine(std::cos(azimuth)), m_isWhole(azimuth >= PI) {}

    bool hit(const Vector& from, const Vector& to, Vector& point, Vector& normal) const override {
        const bool isHit = BareCylinder::intersect(from, to, point);
        normal = {(1 / RADIUS) * point[0], (1 / RADIUS) * point[1], 0.0};
        return isHit;
    }

    bool intersect(const Vector& from, const Vector& to, Vector& point) const override {
        const Vector d = to - from;
        return nearestRoot(
            d[0] * d[0] + d[1] * d[1], from[0] * d[0] + from[1] * d[1],
            from[0] * from[0] + from[1] * from[1] - RADIUS * RADIUS, from, d,
            [this](const Vector& p) {
                return std::abs(p[2]) <= HEIGHT / 2 && (m_isWhole || isWithin(p, m_sine, m_cosine));
            },
            point);
    }

private:
    double m_sine;
    double m_cosine;
    bool m_isWhole;
};

class BareFlat final : public BareShape {
public:
    bool hit(const Vector& from, const Vector& to, Vector& point, Vector& normal) const override {
        normal = {0.0, 1.0, 0.0};
        return BareFlat::intersect(from, to, point);
    }
    bool intersect(const Vector& from, const Vector& to, Vector& point) const override {
        const Vector direction = to - from;
        const double t = (DISTANCE - from[1]) / direction[1];
        point = from + t * direction;
        return t >= 0 && std::abs(point[0]) <= HEIGHT && std::abs(point[2]) <= HEIGHT / 2;
    }
};

/// For each patch the rulings that the line meets: a quadratic equation, as the volume that both span vanishes.
class BareRuled final : public BareShape {
public:
    BareRuled(const std::vector<Vector>& lower, const std::vector<Vector>& upper) {
        for (std::size_t i = 0; i + 1 < lower.size(); ++i) {
            const Vector ruling = upper[i] - lower[i];
            const Vector edge = lower[i + 1] - lower[i];
            m_patches.push_back({lower[i], edge, ruling, upper[i + 1] - lower[i + 1] - ruling});
        }
    }

    bool intersect(const Vector& from, const Vector& to, Vector& point) const override {
        Vector normal;
        return BareRuled::hit(from, to, point, normal);
    }
    bool hit(const Vector& from, const Vector& to, Vector& point, Vector& normal) const override {
        const Vector direction = to - from;
        double nearest = std::numeric_limits<double>::infinity();
        Vector across;
        for (const Patch& patch : m_patches) {
            hitPatch(patch, from, direction, nearest, across);
        }
        if (!std::isfinite(nearest)) {
            return false;
        }
        point = from + nearest * direction;
        normal = (1 / norm(across)) * across;
        return true;
    }

private:
    struct Patch {
        Vector corner, edge, ruling, twist;
    };

    static void hitPatch(const Patch& patch, const Vector& from, const Vector& direction, double& nearest,
                         Vector& across) {
        const Vector offset = patch.corner - from;
        const Vector byRuling = cross(direction, patch.ruling);
        const Vector byTwist = cross(direction, patch.twist);
        const double c = dot(offset, byRuling);
        const double b = dot(offset, byTwist) + dot(patch.edge, byRuling);
        const double a = dot(patch.edge, byTwist);
        const double discriminant = b * b - 4 * a * c;
        if (discriminant < 0) {
            return;
        }
        const double sum = -(b + std::copysign(std::sqrt(discriminant), b)) / 2;
        for (const double u : {c / sum, sum / a}) {
            if (!(u >= 0 && u <= 1)) {
                continue;
            }
            const Vector ruling = patch.ruling + u * patch.twist;
            const Vector start = offset + u * patch.edge;
            const Vector aside = cross(direction, ruling);
            const double perAside = 1 / dot(aside, aside);
            const double v = dot(cross(start, direction), aside) * perAside;
            const double t = dot(cross(start, ruling), aside) * perAside;
            if (v >= 0 && v <= 1 && t >= 0 && t < nearest) {
                nearest = t;
                across = cross(ruling, patch.edge + v * patch.twist);
            }
        }
    }

    std::vector<Patch> m_patches;
};

/// From anywhere within `reach` of the middle to anywhere.
std::vector<Ray> rays(double reach) {
    std::mt19937_64 generator(1);
    std::uniform_real_distribution<double> uniform(-1, 1);
    const auto random = [&] { return Vector{uniform(generator), uniform(generator), uniform(generator)}; };
    std::vector<Ray> result;
    for (int i = 0; i < RAY_COUNT; ++i) {
        result.emplace_back(reach * random(), reach * random());
    }
    return result;
}

bool ask(const ScreenGeometry& screen, const Ray& ray, Vector& point) {
    const IntersectionSet hits = screen.intersect(ray.first, ray.second);
    if (hits.empty()) {
        return false;
    }
    point = hits.first().point;
    return true;
}

bool ask(const BareShape& shape, const Ray& ray, Vector& point) {
    return shape.intersect(ray.first, ray.second, point);
}

template <class Shape>
void castAll(benchmark::State& state, const Shape& shape, const std::vector<Ray>& all) {
    double sum = 0;
    for (auto _ : state) {
        for (const Ray& ray : all) {
            Vector point;
            if (ask(shape, ray, point)) {
                sum += point[0] + point[1] + point[2];
            }
        }
    }
    benchmark::DoNotOptimize(sum);
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(all.size()));
}

void castBatches(benchmark::State& state, const ScreenGeometry& screen, const std::vector<Ray>& all) {
    double sum = 0;
    std::vector<SurfaceHit> hits(BATCH);
    for (auto _ : state) {
        for (std::size_t first = 0; first < all.size(); first += BATCH) {
            const std::span<const Ray> rays(&all[first], std::min(BATCH, all.size() - first));
            screen.intersectRays(rays, std::span(hits).first(rays.size()));
            for (std::size_t i = 0; i < rays.size(); ++i) {
                if (hits[i].hit) {
                    sum += dot(hits[i].point, hits[i].normal);
                }
            }
        }
    }
    benchmark::DoNotOptimize(sum);
}

void castEach(benchmark::State& state, const BareShape& shape, const std::vector<Ray>& all) {
    double sum = 0;
    for (auto _ : state) {
        for (const Ray& ray : all) {
            Vector point;
            Vector normal;
            if (shape.hit(ray.first, ray.second, point, normal)) {
                sum += dot(point, normal);
            }
        }
    }
    benchmark::DoNotOptimize(sum);
}

void addBatchPair(const std::string& name, std::shared_ptr<const ScreenGeometry> screen,
                  std::shared_ptr<const BareShape> bare, const std::vector<Ray>& all) {
    ratio::pair(
        name + "_at_once", [screen, &all](benchmark::State& state) { castBatches(state, *screen, all); },
        [bare, &all](benchmark::State& state) { castEach(state, *bare, all); }, BATCH_LIMIT);
}

void addPair(const std::string& name, std::shared_ptr<const ScreenGeometry> screen,
             std::shared_ptr<const BareShape> bare, const std::vector<Ray>& all) {
    ratio::pair(
        name, [screen, &all](benchmark::State& state) { castAll(state, *screen, all); },
        [bare, &all](benchmark::State& state) { castAll(state, *bare, all); }, LIMIT);
    addBatchPair(name, screen, bare, all);
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<Ray> inside = rays(0.5 * RADIUS);
    const std::vector<Ray> outside = rays(3 * RADIUS);
    const Description ringNumbers(BaseConfig::SHAPE_CYLINDER, PI);
    const Description wallNumbers(BaseConfig::SHAPE_CYLINDER, AZIMUTH);
    const auto sphere = std::make_shared<SphericalScreen>(Vector{}, RADIUS, -PI, PI, -PI / 2, PI / 2);
    const auto dome = std::make_shared<SphericalScreen>(Vector{}, RADIUS, -AZIMUTH, AZIMUTH, LOWEST_ELEVATION, PI / 2);
    addPair("sphere_inside", sphere, std::make_shared<BareSphere>(), inside);
    addPair("sphere_outside", sphere, std::make_shared<BareSphere>(), outside);
    addPair("dome_inside", dome, std::make_shared<BareDome>(), inside);
    addPair("dome_outside", dome, std::make_shared<BareDome>(), outside);
    addPair("ring_inside", std::make_shared<CylinderScreen>(&ringNumbers), std::make_shared<BareCylinder>(PI), inside);
    addPair("wall_inside", std::make_shared<CylinderScreen>(&wallNumbers), std::make_shared<BareCylinder>(AZIMUTH),
            inside);
    addPair("wall_outside", std::make_shared<CylinderScreen>(&wallNumbers), std::make_shared<BareCylinder>(AZIMUTH),
            outside);
    const Description flatNumbers(BaseConfig::SHAPE_FLAT, 0);
    addBatchPair("flat_inside", std::make_shared<FlatScreen>(&flatNumbers), std::make_shared<BareFlat>(), inside);
    addBatchPair("flat_outside", std::make_shared<FlatScreen>(&flatNumbers), std::make_shared<BareFlat>(), outside);
    const Description ruledNumbers(BaseConfig::SHAPE_RULED, 1.4);
    const auto ruled = std::make_shared<RuledSurfaceScreen>(&ruledNumbers);
    const auto bareRuled = std::make_shared<BareRuled>(ruledNumbers.getLowerRail(), ruledNumbers.getUpperRail());
    addBatchPair("ruled_inside", ruled, bareRuled, inside);
    addBatchPair("ruled_outside", ruled, bareRuled, outside);
    return ratio::run(argc, argv, ratio::MANY_AND_SHORT);
}
