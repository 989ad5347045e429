#include "DisplayReport/PictureCoverage.h"

#include "DisplayReport/LightCutter.h"

#include <array>
#include <cmath>

namespace Veltrani::DisplayReport {

namespace {

constexpr std::size_t COLUMNS = 128;
/// Of the picture. The lattice is dense enough to see the light: no edge of it is as long as the coarse step. Borders
/// are taken for straight over the fine one.
constexpr LightSteps STEPS{2.0, 1.0 / 256};

double areaInPicture(const LitTriangle& piece) {
    const Point<double, 2> across = piece[1].picture - piece[0].picture;
    const Point<double, 2> upwards = piece[2].picture - piece[0].picture;
    return std::abs(across[0] * upwards[1] - across[1] * upwards[0]) / 2;
}

/// The picture of a channel; a point of it is lit by the channel itself when it lands on the screen.
class PictureDomain : public LitDomain {
public:
    PictureDomain(const PictureCoverage::Lights& lights, std::size_t channel) : m_lights(lights), m_channel(channel) {}

    [[nodiscard]] LitPoint between(const LitPoint& from, const LitPoint& to, double part) const override {
        const Point<double, 2> picture = from.picture + (to.picture - from.picture) * part;
        return litPoint(picture, m_lights[m_channel]->landingOf(picture));
    }

    [[nodiscard]] LightSteps stepsIn(const LitTriangle& /*triangle*/) const override { return STEPS; }

    [[nodiscard]] double distance(const LitPoint& a, const LitPoint& b) const override {
        return norm(a.picture - b.picture);
    }

    [[nodiscard]] std::vector<LitPoint> row(double v) const {
        std::vector<Point<double, 2>> picture;
        for (std::size_t column = 0; column <= COLUMNS; ++column) {
            picture.emplace_back(static_cast<double>(column) / COLUMNS, v);
        }
        std::vector<ChannelLight::Landing> landings(picture.size());
        m_lights[m_channel]->land(picture, landings);
        std::vector<LitPoint> points;
        for (std::size_t i = 0; i < picture.size(); ++i) {
            points.push_back(litPoint(picture[i], landings[i]));
        }
        return points;
    }

private:
    [[nodiscard]] LitPoint litPoint(const Point<double, 2>& picture, const ChannelLight::Landing& landing) const {
        LitPoint point{picture, landing.on, {}};
        for (std::size_t i = 0; landing.hits && i < m_lights.size(); ++i) {
            point.by[i] = i == m_channel || m_lights[i]->lights(landing.on);
        }
        return point;
    }

    const PictureCoverage::Lights& m_lights;
    std::size_t m_channel;
};

}  // namespace

PictureCoverage PictureCoverage::of(const Lights& lights, std::size_t channel, const std::function<void()>& progress) {
    PictureCoverage coverage;
    coverage.sharedWith.resize(lights.size());
    const PictureDomain domain(lights, channel);
    const LightCutter cutter(domain, [&](const LitTriangle& piece, const LitBy& by) {
        const double area = areaInPicture(piece);
        for (std::size_t i = 0; by.any() && i < lights.size(); ++i) {
            coverage.sharedWith[i] += by[i] ? area : 0.0;
        }
        for (const LitPoint& corner : piece) {
            if (corner.by[channel]) {
                coverage.extent.add(corner.on.place);
            }
        }
    });
    std::vector<LitPoint> below = domain.row(0.0);
    for (std::size_t i = 1; i <= ROWS; ++i) {
        std::vector<LitPoint> above = domain.row(static_cast<double>(i) / ROWS);
        for (std::size_t column = 0; column < COLUMNS; ++column) {
            cutter.cut({below[column], below[column + 1], above[column]});
            cutter.cut({above[column + 1], above[column], below[column + 1]});
        }
        below = std::move(above);
        if (progress) {
            progress();
        }
    }
    coverage.landed = coverage.sharedWith[channel];
    return coverage;
}

}  // namespace Veltrani::DisplayReport
