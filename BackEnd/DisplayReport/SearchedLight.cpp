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

/// Dense enough that Newton's method starts near its end, few enough to be gone through for every point.
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
constexpr int MOST_STEPS = 24;
/// Down to a thousandth of a step.
constexpr int MOST_HALVINGS = 10;

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
    for (const auto& [index, place] : grid) {
        // Rows run downwards.
        m_lattice.push_back({{static_cast<double>(index[0]) / (LATTICE_COLUMNS - 1),
                              1 - static_cast<double>(index[1]) / (LATTICE_ROWS - 1)},
                             place});
        for (const Point<double, 3>* next : {at(grid, index[0] + 1, index[1]), at(grid, index[0], index[1] + 1)}) {
            spacing = next != nullptr ? std::max(spacing, norm(*next - place)) : spacing;
        }
    }
    m_reach = spacing > 0 ? REACH * spacing : std::numeric_limits<double>::infinity();
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
    const Node* const start = nearestNode(point.place);
    if (start == nullptr) {
        return false;
    }
    Point<double, 2> picture = start->picture;
    std::optional<Probe> here = probe(picture);
    for (int step = 0; here && step < MOST_STEPS; ++step) {
        if (norm(here->place - point.place) <= m_samePlace) {
            return isInPicture(picture);
        }
        if (!approach(point.place, picture, *here)) {
            return false;
        }
    }
    return false;
}

const SearchedLight::Node* SearchedLight::nearestNode(const Point<double, 3>& place) const {
    const Node* nearest = nullptr;
    double least = m_reach * m_reach;
    for (const Node& node : m_lattice) {
        const Point<double, 3> offset = node.place - place;
        const double squared = dot(offset, offset);
        if (squared < least) {
            least = squared;
            nearest = &node;
        }
    }
    return nearest;
}

std::optional<SearchedLight::Probe> SearchedLight::probe(const Point<double, 2>& picture) const {
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

bool SearchedLight::approach(const Point<double, 3>& place, Point<double, 2>& picture, Probe& here) const {
    const Point<double, 3> gap = place - here.place;
    const double uu = dot(here.alongU, here.alongU);
    const double uv = dot(here.alongU, here.alongV);
    const double vv = dot(here.alongV, here.alongV);
    const double determinant = uu * vv - uv * uv;
    if (!(determinant > 0.0)) {
        return false;
    }
    const double u = dot(here.alongU, gap);
    const double v = dot(here.alongV, gap);
    Point<double, 2> step{(vv * u - uv * v) / determinant, (uu * v - uv * u) / determinant};
    for (int halving = 0; halving <= MOST_HALVINGS; ++halving) {
        const std::optional<Probe> there = probe(picture + step);
        if (there && norm(there->place - place) < norm(gap)) {
            picture += step;
            here = *there;
            return true;
        }
        step *= 0.5;
    }
    return false;
}

}  // namespace Veltrani::DisplayReport
