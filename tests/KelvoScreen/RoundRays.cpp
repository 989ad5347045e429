#include "KelvoScreen/RoundRays.h"

#include "Configuration/BaseConfig.h"

#include <gtest/gtest.h>

#include <cmath>

namespace roundrays {

namespace {

using oracle::Random;
using oracle::RoundOracle;
using Vector = Point<double, 3>;

Vector rounded(const oracle::Exact& p) {
    return {static_cast<double>(p[0]), static_cast<double>(p[1]), static_cast<double>(p[2])};
}

Vector anywhereOn(const RoundOracle& shape, Random& random) {
    return rounded(shape.mapped(random.uniform(0, 1), random.uniform(0, 1)));
}

Vector unit(Random& random) {
    const Vector v = random.inCube();
    return v * (1 / norm(v));
}

/// Outward at a point of the surface.
Vector outward(const ScreenConfigDouble& config, const Vector& point) {
    oracle::Exact own = oracle::turnedBack(config.orientation, oracle::exact(point) - oracle::exact(config.centre));
    own[2] = config.shape == BaseConfig::SHAPE_SPHERE ? own[2] : 0;
    return rounded(oracle::turned(config.orientation, own * (1 / norm(own))));
}

/// From somewhere along a direction through an aim, past which the second point lies anywhere.
Ray through(const Vector& aim, const Vector& direction, double distance, Random& random) {
    const Vector from = aim - distance * direction;
    return {from, from + random.uniform(0.1, 3) * distance * direction};
}

/// At an aim under a given cosine with the normal there.
Ray slanted(const ScreenConfigDouble& config, const Vector& aim, double cosine, double distance, Random& random) {
    const Vector normal = outward(config, aim);
    Vector across = cross(normal, unit(random));
    across *= 1 / norm(across);
    return through(aim, cosine * normal + std::sqrt(1 - cosine * cosine) * across, distance, random);
}

std::vector<Situation> makeSituations() {
    std::vector<Situation> all;
    const auto add = [&all](const std::string& name, auto ray) { all.push_back({name, ray}); };
    add("from inside", [](const ScreenConfigDouble& c, const RoundOracle& shape, Random& random) {
        const Vector from = c.centre + 0.5 * c.radius * random.inCube();
        return Ray{from, from + random.uniform(0.1, 3) * (anywhereOn(shape, random) - from)};
    });
    add("from outside", [](const ScreenConfigDouble& c, const RoundOracle& shape, Random& random) {
        return through(anywhereOn(shape, random), unit(random), random.uniform(0.5, 20) * c.radius, random);
    });
    add("from a million units", [](const ScreenConfigDouble&, const RoundOracle& shape, Random& random) {
        return through(anywhereOn(shape, random), unit(random), 1e6, random);
    });
    add("to a point a million units away", [](const ScreenConfigDouble& c, const RoundOracle& shape, Random& random) {
        const Vector aim = anywhereOn(shape, random);
        const Vector direction = unit(random);
        return Ray{aim - c.radius * direction, aim + 1e6 * direction};
    });
    for (const double cosine : {1e-2, 1e-4, 1e-6, 1e-8, 1e-10, -1e-3, -1e-7}) {
        add("grazing", [cosine](const ScreenConfigDouble& c, const RoundOracle& shape, Random& random) {
            return slanted(c, anywhereOn(shape, random), cosine, random.uniform(0.1, 10) * c.radius, random);
        });
    }
    add("touching", [](const ScreenConfigDouble& c, const RoundOracle& shape, Random& random) {
        return slanted(c, anywhereOn(shape, random), 0, random.uniform(0.1, 10) * c.radius, random);
    });
    add("touching from far away", [](const ScreenConfigDouble& c, const RoundOracle& shape, Random& random) {
        return slanted(c, anywhereOn(shape, random), 0, 1e6, random);
    });
    add("from the surface", [](const ScreenConfigDouble& c, const RoundOracle& shape, Random& random) {
        const Vector from = anywhereOn(shape, random);
        return Ray{from, from + c.radius * random.inCube()};
    });
    add("at the edge", [](const ScreenConfigDouble& c, const RoundOracle& shape, Random& random) {
        const double along = random.uniform(0, 1);
        const Vector aim =
            rounded(random.below(2) == 0 ? shape.mapped(random.below(2), along) : shape.mapped(along, random.below(2)));
        return through(aim, unit(random), random.uniform(0.5, 20) * c.radius, random);
    });
    return all;
}

}  // namespace

const std::vector<Situation>& situations() {
    static const std::vector<Situation> ALL = makeSituations();
    return ALL;
}

ScreenConfigDouble scaled(ScreenConfigDouble config, double factor) {
    config.centre = factor * config.centre;
    config.radius *= factor;
    config.height *= factor;
    return config;
}

void expectAgreement(const ScreenGeometry& screen, const ScreenConfigDouble& config, int count) {
    const RoundOracle shape(config);
    constexpr std::uint64_t SEED = 20;
    Random random(SEED);
    for (const Situation& situation : situations()) {
        int hitting = 0;
        for (int i = 0; i < count; ++i) {
            const auto [from, to] = situation.ray(config, shape, random);
            const IntersectionSet hits = screen.intersect(from, to);
            hitting += hits.empty() ? 0 : 1;
            const std::string fault = shape.faultOf(hits, from, to, false);
            ASSERT_EQ(fault, "") << situation.name << ", ray " << i << " of seed " << SEED;
            IntersectionSet fromEverySide;
            for (const int sign : {-1, 0, 1}) {
                const IntersectionSet whole = screen.intersectExtrapolatedWithSpecifiedNormal(from, to, sign);
                for (std::size_t j = 0; j < whole.size(); ++j) {
                    fromEverySide.add(whole[j]);
                    ASSERT_EQ(sideOfSurface(to - from, screen.getScreenNormal(whole[j].point)), sign);
                }
            }
            ASSERT_EQ(shape.faultOf(fromEverySide, from, to, true), "")
                << "continued, " << situation.name << ", ray " << i << " of seed " << SEED;
        }
        EXPECT_GT(hitting, count / 4) << situation.name;
    }
}

}  // namespace roundrays
