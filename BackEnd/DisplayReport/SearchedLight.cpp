#include "DisplayReport/SearchedLight.h"

#include "DisplayReport/GeometryText.h"
#include "ScreenManager/TargetLocator.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

using Grid = std::map<Point<int, 2>, Point<double, 3>>;

/// Dense enough that Newton's method starts near its end.
constexpr int LATTICE_COLUMNS = 49;
constexpr int LATTICE_ROWS = 31;
/// Of the picture: the step of the derivatives.
constexpr double STEP = 1.0 / 4096;
/// Of the size of the screen: far above rounding, far below a pixel.
constexpr double SAME_PLACE = 1e-8;
/// Spacings of the lattice between a lit point and the nearest point that landed; more than the half diagonal of a
/// cell, since cells at the edge of the screen have lost corners.
constexpr double REACH = 3.0;
/// Newton's method needs three to five steps; more only where tables bend.
constexpr int MOST_STEPS = 12;
/// From a point of the lattice a whole step or a half comes nearer, or none does: the place lies in a shadow.
constexpr int MOST_HALVINGS = 4;

/// Of a step: what is left behind it, at most, where the screen goes on as a plane for as long. A point behind another
/// part of the screen, or before it, leaves more.
constexpr double MOST_REST = 0.125;
/// Of the picture, a spacing of the lattice: a longer step is gone before it is believed.
constexpr double LONGEST_TRUSTED = 1.0 / (LATTICE_ROWS - 1);
/// Steps to the edge of the picture from where it does not matter any more how the next ones go.
constexpr double FAR_FROM_EDGE = 2.0;

/// True when so small a step leads to the same side of the edge of the picture wherever it ends exactly.
bool isDecided(const Point<double, 2>& picture, double step) {
    const double inside = std::min({picture[0], 1 - picture[0], picture[1], 1 - picture[1]});
    return step < LONGEST_TRUSTED && std::abs(inside) > FAR_FROM_EDGE * step;
}

const Point<double, 3>* at(const Grid& grid, int column, int row) {
    const auto found = grid.find({column, row});
    return found == grid.end() ? nullptr : &found->second;
}

/// How a place moves per unit of the picture, from the neighbours that there are; false when there is none.
bool derivative(const Point<double, 3>& middle, const Point<double, 3>* before, const Point<double, 3>* behind,
                Point<double, 3>& slope) {
    if (before == nullptr && behind == nullptr) {
        return false;
    }
    const double width = before != nullptr && behind != nullptr ? 2 * STEP : STEP;
    slope = ((behind != nullptr ? *behind : middle) - (before != nullptr ? *before : middle)) * (1 / width);
    return true;
}

}  // namespace

SearchedLight::SearchedLight(std::shared_ptr<const TargetLocator> locator, const ScreenGeometry& surface)
    : m_locator(std::move(locator)), m_samePlace(SAME_PLACE * norm(extentOf(surface).size())) {
    addLattice();
}

void SearchedLight::addLattice() {
    Grid grid;
    m_locator->projectOnTargetLocationSurface(0.0, 1.0, 0.0, 1.0, LATTICE_COLUMNS, LATTICE_ROWS, grid);
    double spacing = 0;
    std::vector<Point<double, 3>> places;
    for (const auto& [index, place] : grid) {
        // Rows run downwards.
        const Point<double, 2> picture{static_cast<double>(index[0]) / (LATTICE_COLUMNS - 1),
                                       1 - static_cast<double>(index[1]) / (LATTICE_ROWS - 1)};
        if (const std::optional<Probe> found = probe(picture)) {
            m_lattice.push_back({picture, *found});
            places.push_back(place);
        }
        for (const Point<double, 3>* next : {at(grid, index[0] + 1, index[1]), at(grid, index[0], index[1] + 1)}) {
            spacing = next != nullptr ? std::max(spacing, norm(*next - place)) : spacing;
        }
    }
    m_reach = spacing > 0 ? REACH * spacing : std::numeric_limits<double>::infinity();
    m_places = std::make_unique<PointIndex>(std::move(places));
}

void SearchedLight::land(std::span<const Point<double, 2>> picture, std::span<Landing> landings) const {
    for (std::size_t i = 0; i < picture.size(); ++i) {
        // The locator has no single points; of two by two the one at the left bottom is that which was asked for.
        Grid grid;
        const double u = picture[i][0];
        const double v = picture[i][1];
        m_locator->projectOnTargetLocationSurface(u, u + STEP, v, v + STEP, 2, 2, grid);
        const Point<double, 3>* const place = at(grid, 0, 1);
        landings[i].hits = place != nullptr;
        if (place != nullptr) {
            landings[i].on = {*place, {}, false};
        }
    }
}

bool SearchedLight::lights(const SurfacePoint& point) const {
    const Node* const start = nearestOfLattice(point.place);
    if (start == nullptr) {
        return false;
    }
    auto [picture, here] = *start;
    // The lattice alone is not believed: between its points may lie the edge of a shadow.
    double lastGap = 0;
    for (int count = 0; count < MOST_STEPS; ++count) {
        const Point<double, 3> gap = point.place - here.place;
        if (norm(gap) <= m_samePlace) {
            return isInPicture(picture);
        }
        const std::optional<Step> step = stepTo(gap, here);
        if (!step) {
            return false;
        }
        const bool isSmooth = norm(gap) <= MOST_REST * lastGap && step->rest <= MOST_REST * norm(gap);
        if (isSmooth && isDecided(picture + step->inPicture, norm(step->inPicture))) {
            return isInPicture(picture + step->inPicture);
        }
        lastGap = norm(gap);
        if (!approach(point.place, step->inPicture, picture, here)) {
            return false;
        }
    }
    return false;
}

const SearchedLight::Node* SearchedLight::nearestOfLattice(const Point<double, 3>& place) const {
    const std::optional<std::size_t> nearest = m_places->nearest(place);
    return nearest && norm((*m_places)[*nearest] - place) < m_reach ? &m_lattice[*nearest] : nullptr;
}

std::optional<SearchedLight::Probe> SearchedLight::probe(const Point<double, 2>& picture) const {
    Grid grid;
    m_locator->projectOnTargetLocationSurface(picture[0], picture[0] + STEP, picture[1], picture[1] + STEP, 2, 2, grid);
    const Point<double, 3>* const here = at(grid, 0, 1);
    const Point<double, 3>* const right = at(grid, 1, 1);
    const Point<double, 3>* const above = at(grid, 0, 0);
    if (here == nullptr || right == nullptr || above == nullptr) {
        return probeAround(picture);
    }
    return Probe{*here, (*right - *here) * (1 / STEP), (*above - *here) * (1 / STEP)};
}

std::optional<SearchedLight::Probe> SearchedLight::probeAround(const Point<double, 2>& picture) const {
    Grid grid;
    m_locator->projectOnTargetLocationSurface(picture[0] - STEP, picture[0] + STEP, picture[1] - STEP,
                                              picture[1] + STEP, 3, 3, grid);
    const Point<double, 3>* const middle = at(grid, 1, 1);
    Probe found;
    if (middle == nullptr || !derivative(*middle, at(grid, 0, 1), at(grid, 2, 1), found.alongU) ||
        !derivative(*middle, at(grid, 1, 2), at(grid, 1, 0), found.alongV)) {
        return std::nullopt;
    }
    found.place = *middle;
    return found;
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
