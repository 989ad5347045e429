#include "KelvoScreen/RuledSurfaces.h"

#include "Configuration/BaseConfig.h"

#include <cmath>
#include <numbers>

namespace ruled {

namespace {

using Vector = Point<double, 3>;

ScreenConfigDouble between(std::vector<Vector> lower, std::vector<Vector> upper) {
    ScreenConfigDouble config;
    config.shape = BaseConfig::SHAPE_RULED;
    config.lowerRail = std::move(lower);
    config.upperRail = std::move(upper);
    return config;
}

}  // namespace

ScreenConfigDouble cockpit() {
    std::vector<Vector> lower;
    std::vector<Vector> upper;
    for (int i = 0; i <= 7; ++i) {
        // Unevenly measured on purpose.
        const double azimuth = -1.6 + 0.4 * i + 0.05 * std::sin(5.0 * i);
        lower.push_back({2.0 * std::sin(azimuth), 2.0 * std::cos(azimuth), -0.8 + 0.1 * std::cos(3.0 * i)});
        upper.push_back({2.6 * std::sin(azimuth + 0.1), 0.3 + 2.6 * std::cos(azimuth + 0.1), 1.1});
    }
    return between(lower, upper);
}

ScreenConfigDouble saddle() {
    return between({{-1.0, -1.0, 0.5}, {1.0, -1.0, -0.5}}, {{-1.0, 1.0, -0.5}, {1.0, 1.0, 0.5}});
}

ScreenConfigDouble trapezoid() {
    return between({{-2.0, 4.0, 0.0}, {2.0, 5.0, 0.0}}, {{-1.0, 4.25, 2.0}, {1.5, 4.875, 2.5}});
}

ScreenConfigDouble rectangle() {
    return between({{-2.0, 5.0, 0.0}, {2.0, 5.0, 0.0}}, {{-2.0, 5.0, 2.0}, {2.0, 5.0, 2.0}});
}

ScreenConfigDouble cone() {
    std::vector<Vector> lower;
    for (int i = 0; i <= 5; ++i) {
        lower.push_back({2.0 * std::sin(0.3 * i - 0.7), 2.0 * std::cos(0.3 * i - 0.7), -1.0});
    }
    return between(lower, std::vector<Vector>(lower.size(), Vector{0.2, 0.1, 1.5}));
}

ScreenConfigDouble sail() {
    return between({{-2.0, 3.0, 0.0}, {0.0, 4.0, -1.0}, {2.0, 3.0, 0.3}},
                   {{-2.0, 3.0, 0.0}, {0.0, 4.5, 1.0}, {2.0, 3.0, 0.3}});
}

ScreenConfigDouble ring() {
    std::vector<Vector> lower;
    std::vector<Vector> upper;
    for (int i = 0; i < 8; ++i) {
        const double azimuth = std::numbers::pi * (i / 4.0 - 1);
        lower.push_back({2.0 * std::sin(azimuth), 2.0 * std::cos(azimuth), -1.0});
        upper.push_back({3.0 * std::sin(azimuth + 0.2), 3.0 * std::cos(azimuth + 0.2), 1.0});
    }
    lower.push_back(lower.front());
    upper.push_back(upper.front());
    return between(lower, upper);
}

std::vector<std::pair<std::string, ScreenConfigDouble>> surfaces() {
    return {{"cockpit", cockpit()},
            {"saddle", saddle()},
            {"trapezoid", trapezoid()},
            {"rectangle", rectangle()},
            {"cone", cone()},
            {"sail", sail()},
            {"ring", ring()}};
}

ScreenConfigDouble scaled(ScreenConfigDouble config, double factor) {
    for (auto* rail : {&config.lowerRail, &config.upperRail}) {
        for (Vector& point : *rail) {
            point *= factor;
        }
    }
    return config;
}

std::vector<double> seams(const ScreenConfigDouble& config) {
    std::vector<double> ends{0.0};
    for (std::size_t i = 1; i < config.lowerRail.size(); ++i) {
        ends.push_back(ends.back() + norm(config.lowerRail[i] - config.lowerRail[i - 1]) +
                       norm(config.upperRail[i] - config.upperRail[i - 1]));
    }
    const double length = ends.back();
    for (double& end : ends) {
        end /= length;
    }
    return ends;
}

}  // namespace ruled
