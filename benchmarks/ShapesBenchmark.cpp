#include "Configuration/BaseConfig.h"
#include "Configuration/IScreenConfig.h"
#include "KelvoScreen/CylinderScreen.h"
#include "KelvoScreen/SphericalScreen.h"
#include "Ratio.h"

#include <cmath>
#include <cstdint>
#include <memory>
#include <numbers>
#include <random>
#include <vector>

/// Rays at spheres and cylinders through the abstract class, against the textbook formula behind one virtual call.

namespace {

using Vector = Point<double, 3>;

constexpr double PI = std::numbers::pi;
constexpr double RADIUS = 5;  // metres: a dome
constexpr double HEIGHT = 4;
constexpr double AZIMUTH = 2;  // to either side
constexpr double LOWEST_ELEVATION = -0.35;
constexpr int RAY_COUNT = 10000;
/// What is accepted; the aim is 1.5.
constexpr double LIMIT = 2.5;

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
    [[nodiscard]] double getAzimuthMin() const override { return -m_azimuth; }
    [[nodiscard]] double getAzimuthMax() const override { return m_azimuth; }

private:
    std::wstring m_shape;
    double m_azimuth;
};

/// The least that a caller with several kinds of screens can do: one virtual call, then the formula.
class BareShape {
public:
    virtual ~BareShape() = default;
    virtual bool intersect(const Vector& from, const Vector& to, Vector& point) const = 0;
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

class BareSphere : public BareShape {
public:
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

class BareDome : public BareShape {
public:
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

class BareCylinder : public BareShape {
public:
    explicit BareCylinder(double azimuth)
        : m_sine(std::sin(azimuth)), m_cosine(std::cos(azimuth)), m_isWhole(azimuth >= PI) {}

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

void addPair(const std::string& name, std::shared_ptr<const ScreenGeometry> screen,
             std::shared_ptr<const BareShape> bare, const std::vector<Ray>& all) {
    ratio::pair(
        name, [screen, &all](benchmark::State& state) { castAll(state, *screen, all); },
        [bare, &all](benchmark::State& state) { castAll(state, *bare, all); }, LIMIT);
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
    return ratio::run(argc, argv);
}
