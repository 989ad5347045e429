#include "DisplayFit/detail/SurfacePlace.h"

#include "KelvoScreen/ScreenGeometry.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Veltrani::DisplayFitDetail {

namespace {

using Vector = Point<double, 3>;

/// Derivatives are differences over twice this part of the surface.
constexpr double DIFFERENCE = 1e-6;

/// Screens take what lies no further beyond their edge for the edge itself.
constexpr double EDGE = 1e-9;

/// A step that is shorter than this, in parameters, is the last.
constexpr double ARRIVED = 1e-15;

/// No step is longer than this, in parameters.
constexpr double LONGEST_STEP = 0.25;

constexpr int MOST_STEPS = 60;
constexpr int MOST_HALVINGS = 12;

/// Places at which a search over the surface starts, along each parameter, and how far beyond its edges.
constexpr int STARTS = 17;
constexpr double BEYOND = 0.25;

/// Where s moves along the surface by less than this part of what t does, no step leads away in another direction.
constexpr double DIRECTIONLESS = 1e-6;

bool isAtPole(const SurfacePlace& place) {
    return !(norm(place.tangents[0]) > DIRECTIONLESS * norm(place.tangents[1]));
}

/// Steps to the nearest point around a place; the distance is then that of `place`.
void approach(const ScreenGeometry& screen, const Vector& point, SurfacePlace& place) {
    double distance = norm(point - place.point);
    for (int step = 0; step < MOST_STEPS; ++step) {
        const auto& [bySide, byHeight] = place.tangents;
        const Vector miss = point - place.point;
        const double a = dot(bySide, bySide);
        const double b = dot(bySide, byHeight);
        const double d = dot(byHeight, byHeight);
        const double determinant = a * d - b * b;
        const double along = dot(bySide, miss);
        const double up = dot(byHeight, miss);
        Point<double, 2> move{(d * along - b * up) / determinant, (a * up - b * along) / determinant};
        if (!(norm(move) > ARRIVED)) {
            return;
        }
        // Near a pole the tangents lead far beyond the surface, and around it.
        move *= std::min(1.0, LONGEST_STEP / norm(move));
        bool isNearer = false;
        for (int halving = 0; halving < MOST_HALVINGS && !isNearer; ++halving, move *= 0.5) {
            SurfacePlace there;
            if (SurfacePlace::at(screen, place.parameters + move, there) && norm(point - there.point) < distance) {
                place = there;
                distance = norm(point - there.point);
                isNearer = true;
            }
        }
        if (!isNearer) {
            return;
        }
    }
}

}  // namespace

bool SurfacePlace::at(const ScreenGeometry& screen, const Point<double, 2>& parameters, SurfacePlace& place) {
    Vector middle;
    if (!screen.mapInto3D(parameters, middle, true)) {
        return false;
    }
    for (std::size_t k = 0; k < 2; ++k) {
        Point<double, 2> step;
        step[k] = DIFFERENCE;
        Vector ahead = middle;
        Vector behind = middle;
        const double width = DIFFERENCE * static_cast<double>(screen.mapInto3D(parameters + step, ahead, true)) +
                             DIFFERENCE * static_cast<double>(screen.mapInto3D(parameters - step, behind, true));
        place.tangents[k] = (ahead - behind) * (1 / width);
    }
    place.parameters = parameters;
    place.point = middle;
    return true;
}

SurfaceSearch::SurfaceSearch(const ScreenGeometry& screen) : m_screen(screen) {
    const auto spread = [](int k) { return -BEYOND + (1 + 2 * BEYOND) * k / (STARTS - 1); };
    for (int i = 0; i < STARTS * STARTS; ++i) {
        Sample sample;
        sample.parameters = {spread(i % STARTS), spread(i / STARTS)};
        if (screen.mapInto3D(sample.parameters, sample.point, true)) {
            m_samples.push_back(sample);
        }
    }
}

std::optional<SurfacePlace> SurfaceSearch::nearest(const Vector& point, const Point<double, 2>& expected) const {
    SurfacePlace found;
    bool isFound = SurfacePlace::at(m_screen, expected, found);
    if (isFound) {
        approach(m_screen, point, found);
    }
    const auto best = std::min_element(m_samples.begin(), m_samples.end(), [&](const Sample& a, const Sample& b) {
        return norm(a.point - point) < norm(b.point - point);
    });
    SurfacePlace other;
    if (best != m_samples.end() &&
        (!isFound || isAtPole(found) || norm(best->point - point) < norm(found.point - point)) &&
        SurfacePlace::at(m_screen, best->parameters, other)) {
        approach(m_screen, point, other);
        found = isFound && norm(found.point - point) <= norm(other.point - point) ? found : other;
        isFound = true;
    }
    for (std::size_t k = 0; isFound && k < 2; ++k) {
        const double edge = std::clamp(found.parameters[k], 0.0, 1.0);
        if (std::abs(found.parameters[k] - edge) <= EDGE) {
            found.parameters[k] = edge;
        }
    }
    return isFound ? std::optional(found) : std::nullopt;
}

}  // namespace Veltrani::DisplayFitDetail
