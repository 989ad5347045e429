#include "DisplayFit/detail/ConfiguredLight.h"

#include "DisplayFit/detail/Median.h"
#include "DisplayFit/detail/PointChecks.h"
#include "DisplayFit/detail/PointShape.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <utility>

namespace Veltrani::DisplayFitDetail {

namespace {

using Vector = Point<double, 3>;

/// So many points stand for all.
constexpr std::size_t MOST_COMPARED = 48;

/// The width of an evenly filled picture of 16 by 10, in median distances of its points from the middle.
constexpr double WIDTHS = 2.6;

/// A channel whose middle lies further than this many widths from the points is not theirs.
constexpr double ELSEWHERE = 1;

std::vector<Vector> metOf(const ConfiguredLight::Places& landings) {
    std::vector<Vector> met;
    for (const std::optional<Vector>& landing : landings) {
        if (landing) {
            met.push_back(*landing);
        }
    }
    return met;
}

}  // namespace

ConfiguredLight::ConfiguredLight(const ChannelSetup& setup, const FitPoints& points)
    : m_setup(setup), m_points(points.someOf(MOST_COMPARED)), m_landings(landingsOf(setup, m_points)) {
    const std::vector<Vector> met = metOf(m_landings);
    if (2 * met.size() > m_points.size()) {
        m_width = WIDTHS * sizeOf(met);
        m_centre = PointShape::of(met).centre;
    }
}

ConfiguredLight::Places ConfiguredLight::landingsOf(const ChannelSetup& setup, const FitPoints& points) const {
    Places landings(points.size());
    if (setup.refusal()) {
        return landings;
    }
    const auto model = setup.make(points, {setup.groups(), false, false});
    for (std::size_t i = 0; i < points.size(); ++i) {
        Vector place;
        if (model->landing(i, place)) {
            landings[i] = place;
        }
    }
    return landings;
}

double ConfiguredLight::missTo(const Places& landings) const {
    std::vector<double> distances;
    for (std::size_t i = 0; i < m_points.size(); ++i) {
        distances.push_back(landings[i] ? norm(*landings[i] - m_points.world[i])
                                        : std::numeric_limits<double>::infinity());
    }
    return isKnown() ? medianOf(std::move(distances)) / m_width : std::numeric_limits<double>::infinity();
}

double ConfiguredLight::miss() const {
    return missTo(m_landings);
}

double ConfiguredLight::missWith(PictureChange change) const {
    FitPoints changed = m_points;
    std::transform(changed.picture.begin(), changed.picture.end(), changed.picture.begin(), change);
    return missTo(landingsOf(m_setup, changed));
}

double ConfiguredLight::missWith(const Matrix<double, 3>& display_from_table) const {
    std::vector<double> distances;
    for (std::size_t i = 0; i < m_points.size(); ++i) {
        distances.push_back(m_landings[i] ? norm(*m_landings[i] - display_from_table * m_points.world[i])
                                          : std::numeric_limits<double>::infinity());
    }
    return isKnown() ? medianOf(std::move(distances)) / m_width : std::numeric_limits<double>::infinity();
}

double ConfiguredLight::missAs(const ConfiguredLight& other) const {
    const Vector middle = PointShape::of(m_points.world).centre;
    if (!isKnown() || !other.isKnown() || norm(middle - other.m_centre) > ELSEWHERE * other.m_width) {
        return std::numeric_limits<double>::infinity();
    }
    return missTo(landingsOf(other.m_setup, m_points));
}

}  // namespace Veltrani::DisplayFitDetail
