#include "DisplayReport/coverage/SearchedLight.h"

#include "DisplayReport/basics/GeometryText.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

/// Dense enough that Newton's method starts near its end.
constexpr int LATTICE_COLUMNS = 49;
constexpr int LATTICE_ROWS = 31;
/// The step of the derivatives, as a part of the picture.
constexpr double STEP = 1.0 / 4096;
/// A part of the size of the screen: far above rounding, far below a pixel.
constexpr double SAME_PLACE = 1e-8;
/// All but this part of the neighbours in the lattice determine its spacing: the others may stand on two sides of a
/// jump, from one part of the screen to another.
constexpr double JUMPS = 0.05;
/// Spacings of the lattice between a lit point and the nearest point that landed; more than the half diagonal of a
/// cell, since cells at the edge of the screen have lost corners.
constexpr double REACH = 6.0;
/// A part of the reach, 16 times what the step of the derivatives usually moves: what moves more moves to another part
/// of the screen.
constexpr double STEADY = 1.0 / 32;
/// Newton's method needs three to five steps; more only where tables bend.
constexpr int MOST_STEPS = 12;
/// A place that is lit is approached by a whole step, or by a sixteenth at the edge of the screen; one in a shadow by
/// none.
constexpr int MOST_HALVINGS = 4;
/// What is left behind a step, at most, as a part of the step, where the screen goes on as a plane for as long. A point
/// behind another part of the screen, or before it, leaves more.
constexpr double MOST_REST = 0.125;
/// A part of the picture, a spacing of the lattice: a longer step is gone before it is believed.
constexpr double LONGEST_TRUSTED = 1.0 / (LATTICE_ROWS - 1);
/// Steps to the edge of the picture from where it does not matter any more how the next ones go.
constexpr double FAR_FROM_EDGE = 2.0;

/// True when so small a step leads to the same side of the edge of the picture wherever it ends exactly.
bool isDecided(const Point<double, 2>& picture, double step) {
    const double inside = std::min({picture[0], 1 - picture[0], picture[1], 1 - picture[1]});
    return step < LONGEST_TRUSTED && std::abs(inside) > FAR_FROM_EDGE * step;
}

/// The distance that all but a few do not exceed; none of no distances.
double usual(std::vector<double> distances) {
    if (distances.empty()) {
        return std::numeric_limits<double>::infinity();
    }
    const auto place =
        distances.begin() + static_cast<std::ptrdiff_t>((1 - JUMPS) * static_cast<double>(distances.size() - 1));
    std::nth_element(distances.begin(), place, distances.end());
    return *place;
}

}  // namespace

SearchedLight::SearchedLight(Way arrival, const ScreenGeometry& surface)
    : m_arrival(std::move(arrival)), m_samePlace(SAME_PLACE * norm(extentOf(surface).size())) {
    addLattice();
}

void SearchedLight::addLattice() {
    std::vector<std::optional<Point<double, 3>>> arrivals;
    std::vector<Point<double, 2>> pictures;
    std::vector<double> distances;
    for (std::size_t row = 0; row < LATTICE_ROWS; ++row) {
        for (std::size_t column = 0; column < LATTICE_COLUMNS; ++column) {
            pictures.emplace_back(static_cast<double>(column) / (LATTICE_COLUMNS - 1),
                                  static_cast<double>(row) / (LATTICE_ROWS - 1));
            const auto here = arrivals.emplace_back(m_arrival(pictures.back()));
            const auto left = column > 0 ? arrivals[arrivals.size() - 2] : std::nullopt;
            const auto below = row > 0 ? arrivals[arrivals.size() - 1 - LATTICE_COLUMNS] : std::nullopt;
            for (const auto& neighbour : {left, below}) {
                if (here && neighbour) {
                    distances.push_back(norm(*here - *neighbour));
                }
            }
        }
    }
    m_reach = REACH * usual(std::move(distances));
    std::vector<Point<double, 3>> places;
    for (const Point<double, 2>& picture : pictures) {
        if (const std::optional<Probe> found = probe(picture)) {
            m_lattice.push_back({picture, *found});
            places.push_back(found->place);
        }
    }
    m_places = std::make_unique<PointIndex>(std::move(places));
}

void SearchedLight::land(std::span<const Point<double, 2>> picture, std::span<Landing> landings) const {
    for (std::size_t i = 0; i < picture.size(); ++i) {
        const std::optional<Point<double, 3>> place = m_arrival(picture[i]);
        landings[i].hits = place.has_value();
        if (place) {
            landings[i].on = {*place, {}, false};
        }
    }
}

bool SearchedLight::lights(const SurfacePoint& point) const {
    const std::optional<Point<double, 2>> found = search(point.place, Aim::SIDE_OF_EDGE);
    return found && isInPicture(*found);
}

bool SearchedLight::findPicture(const SurfacePoint& point, Point<double, 2>& picture) const {
    const std::optional<Point<double, 2>> found = search(point.place, Aim::PICTURE_POINT);
    picture = found.value_or(picture);
    return found.has_value();
}

std::optional<Point<double, 2>> SearchedLight::search(const Point<double, 3>& place, Aim aim) const {
    const Node* const start = nearestOfLattice(place);
    if (start == nullptr) {
        return std::nullopt;
    }
    auto [picture, here] = *start;
    // The lattice alone is not believed: between its points may lie the edge of a shadow.
    double lastGap = 0;
    for (int count = 0; count < MOST_STEPS; ++count) {
        const Point<double, 3> gap = place - here.place;
        if (norm(gap) <= m_samePlace) {
            return picture;
        }
        const std::optional<Step> step = stepTo(gap, here);
        if (!step) {
            return std::nullopt;
        }
        const bool isSmooth = norm(gap) <= MOST_REST * lastGap && step->rest <= MOST_REST * norm(gap);
        if (aim == Aim::SIDE_OF_EDGE && isSmooth && isDecided(picture + step->inPicture, norm(step->inPicture))) {
            return picture + step->inPicture;
        }
        lastGap = norm(gap);
        if (!approach(place, step->inPicture, picture, here)) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

const SearchedLight::Node* SearchedLight::nearestOfLattice(const Point<double, 3>& place) const {
    const std::optional<std::size_t> nearest = m_places->nearest(place);
    return nearest && norm((*m_places)[*nearest] - place) < m_reach ? &m_lattice[*nearest] : nullptr;
}

std::optional<SearchedLight::Probe> SearchedLight::probe(const Point<double, 2>& picture) const {
    const std::optional<Point<double, 3>> here = m_arrival(picture);
    if (!here) {
        return std::nullopt;
    }
    const auto alongU = slope(picture, *here, {STEP, 0.0});
    const auto alongV = slope(picture, *here, {0.0, STEP});
    return alongU && alongV ? std::optional(Probe{*here, *alongU, *alongV}) : std::nullopt;
}

std::optional<Point<double, 3>> SearchedLight::slope(const Point<double, 2>& picture, const Point<double, 3>& place,
                                                     const Point<double, 2>& step) const {
    for (const double way : {1.0, -1.0}) {
        const std::optional<Point<double, 3>> there = m_arrival(picture + way * step);
        if (there && norm(*there - place) < STEADY * m_reach) {
            return (*there - place) * (way / STEP);
        }
    }
    return std::nullopt;
}

std::optional<SearchedLight::Step> SearchedLight::stepTo(const Point<double, 3>& gap, const Probe& here) {
    const double uu = dot(here.alongU, here.alongU);
    const double uv = dot(here.alongU, here.alongV);
    const double vv = dot(here.alongV, here.alongV);
    const double determinant = uu * vv - uv * uv;
    if (!(determinant > 0.0)) {
        return std::nullopt;
    }
    const double u = dot(here.alongU, gap);
    const double v = dot(here.alongV, gap);
    const Point<double, 2> step{(vv * u - uv * v) / determinant, (uu * v - uv * u) / determinant};
    return Step{step, norm(gap - here.alongU * step[0] - here.alongV * step[1])};
}

bool SearchedLight::approach(const Point<double, 3>& place, Point<double, 2> step, Point<double, 2>& picture,
                             Probe& here) const {
    const double gap = norm(place - here.place);
    for (int halving = 0; halving <= MOST_HALVINGS; ++halving) {
        const std::optional<Probe> there = probe(picture + step);
        if (there && norm(there->place - place) < gap) {
            picture += step;
            here = *there;
            return true;
        }
        step *= 0.5;
    }
    return false;
}

}  // namespace Veltrani::DisplayReport
