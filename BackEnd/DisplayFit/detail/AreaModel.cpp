#include "DisplayFit/detail/AreaModel.h"

#include "DisplayFit/detail/PointShape.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/ScreenManager.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Veltrani::DisplayFitDetail {

namespace {

using Vector = Point<double, 3>;

/// A parameter that moves along the surface by less than this part of what the other one does has no meaning there.
constexpr double POLE = 1e-6;

/// Where it moves by less than this part of what it does elsewhere, a pole is so near that s says little of where a
/// point is: one that is beside the pole by noise lies in any direction from it.
constexpr double NEAR_POLE = 0.05;

}  // namespace

AreaModel::AreaModel(const FitPoints& points, const DisplayFit::AreaBounds& area, const Point<int, 2>& pixels)
    : m_points(points),
      m_bounds{area.left, area.right, area.bottom, area.top},
      m_given(m_bounds),
      m_pixels{std::max(pixels[0], 1), std::max(pixels[1], 1)},
      m_extent(PointShape::of(points.world).extents[0]) {
    for (const char* name : {"area left", "area right", "area bottom", "area top"}) {
        m_unknowns.push_back({Unknown::Role::AREA, name, DisplayFit::FittedValue::Quantity::NUMBER});
    }
    const auto screen = ScreenManager::getInstance()->getScreenGeometry();
    m_patches.resize(points.size());
    if (!screen) {
        return;
    }
    const SurfaceSearch search(*screen);
    for (std::size_t i = 0; i < points.size(); ++i) {
        points.pulseAt(i);
        const Point<double, 2>& picture = points.picture[i];
        const Point<double, 2> expected{m_bounds[0] + (m_bounds[1] - m_bounds[0]) * picture[0],
                                        m_bounds[2] + (m_bounds[3] - m_bounds[2]) * picture[1]};
        if (const auto place = search.nearest(points.world[i], expected)) {
            m_patches[i] = patchOf(*place);
        }
    }
    findPoles();
}

void AreaModel::findPoles() {
    double widest = 0;
    for (const std::optional<Patch>& patch : m_patches) {
        widest = patch ? std::max(widest, patch->ss) : widest;
    }
    for (std::optional<Patch>& patch : m_patches) {
        if (patch) {
            patch->isAtPole = patch->ss < NEAR_POLE * widest;
        }
    }
}

AreaModel::Patch AreaModel::patchOf(const SurfacePlace& place) {
    const auto& [bySide, byHeight] = place.tangents;
    Patch patch;
    patch.parameters = place.parameters;
    patch.point = place.point;
    patch.ss = norm(bySide);
    const double height = norm(byHeight);
    if (patch.ss > POLE * height) {
        patch.first = bySide * (1 / patch.ss);
    } else {
        // At a pole s has no direction; any across t serves.
        patch.ss = 0;
        patch.first = cross(byHeight, std::abs(byHeight[2]) < height / 2 ? Vector{0, 0, 1} : Vector{1, 0, 0});
        patch.first *= 1 / norm(patch.first);
    }
    patch.st = dot(patch.first, byHeight);
    const Vector across = byHeight - patch.first * patch.st;
    patch.tt = norm(across);
    patch.second = patch.tt > POLE * patch.ss ? across * (1 / patch.tt) : Vector{};
    return patch;
}

AreaModel::Bounds AreaModel::boundsAt(const double* step) const {
    Bounds bounds = m_bounds;
    for (std::size_t k = 0; k < bounds.size(); ++k) {
        bounds[k] += step[k];
    }
    return bounds;
}

AreaModel::Deviation AreaModel::deviationAt(const Point<double, 2>& parameters, const Patch& patch,
                                            const ScreenGeometry* screen) {
    SurfacePlace there;
    if (patch.isAtPole && screen != nullptr && SurfacePlace::at(*screen, parameters, there)) {
        // From one place to the other: a small circle around the pole is no measure of how far they are apart.
        const auto along = [&patch](const Vector& way) {
            return Point<double, 2>{dot(patch.first, way), dot(patch.second, way)};
        };
        return {along(there.point - patch.point), along(there.tangents[0]), along(there.tangents[1])};
    }
    const double s = parameters[0] - patch.parameters[0];
    const double t = parameters[1] - patch.parameters[1];
    return {{patch.ss * s + patch.st * t, patch.tt * t}, {patch.ss, 0}, {patch.st, patch.tt}};
}

void AreaModel::evaluate(const double* step, std::size_t first, std::size_t count, double* residuals, double* jacobian,
                         bool* isMapped) const {
    constexpr std::size_t COLUMNS = 4;
    const Bounds bounds = boundsAt(step);
    const auto screen = ScreenManager::getInstance()->getScreenGeometry();
    for (std::size_t i = 0; i < count; ++i) {
        const Patch patch = m_patches[first + i].value_or(Patch{});
        const Point<double, 2>& picture = m_points.picture[first + i];
        isMapped[i] = m_patches[first + i].has_value();
        const Deviation deviation = deviationAt(
            {bounds[0] + (bounds[1] - bounds[0]) * picture[0], bounds[2] + (bounds[3] - bounds[2]) * picture[1]}, patch,
            screen.get());
        for (std::size_t r = 0; r < 2; ++r) {
            residuals[2 * i + r] = deviation.size[r];
            if (jacobian != nullptr) {
                const std::array<double, COLUMNS> row{
                    deviation.byS[r] * (1 - picture[0]), deviation.byS[r] * picture[0],
                    deviation.byT[r] * (1 - picture[1]), deviation.byT[r] * picture[1]};
                std::copy(row.begin(), row.end(), jacobian + (2 * i + r) * COLUMNS);
            }
        }
    }
}

bool AreaModel::spreadOf(std::size_t point, Spread& spread) const {
    if (!m_patches[point]) {
        return false;
    }
    const Patch& patch = *m_patches[point];
    spread = {};
    if (!m_points.covariance.empty()) {
        const auto& covariance = m_points.covariance[point];
        spread = {dot(patch.first, covariance * patch.first), dot(patch.first, covariance * patch.second),
                  dot(patch.second, covariance * patch.second)};
    }
    if (!m_points.pictureDeviation.empty()) {
        const double s = m_points.pictureDeviation[point][0] * (m_bounds[1] - m_bounds[0]);
        const double t = m_points.pictureDeviation[point][1] * (m_bounds[3] - m_bounds[2]);
        spread += Spread{std::pow(patch.ss * s, 2) + std::pow(patch.st * t, 2), patch.st * patch.tt * t * t,
                         std::pow(patch.tt * t, 2)};
    }
    return true;
}

void AreaModel::move(const double* step) {
    m_bounds = boundsAt(step);
}

void AreaModel::write(const double* step, DisplayFit::ChannelValues& values) const {
    const Bounds bounds = boundsAt(step);
    values.area = {bounds[0], bounds[1], bounds[2], bounds[3]};
}

bool AreaModel::missInPicture(std::size_t point, Point<double, 2>& pixels) const {
    if (!m_patches[point]) {
        return false;
    }
    for (std::size_t k = 0; k < 2; ++k) {
        const double part =
            (m_patches[point]->parameters[k] - m_bounds[2 * k]) / (m_bounds[2 * k + 1] - m_bounds[2 * k]);
        pixels[k] = m_pixels[k] * (part - m_points.picture[point][k]);
    }
    if (m_patches[point]->isAtPole) {
        pixels[0] = 0;
    }
    return true;
}

bool AreaModel::missOnScreen(std::size_t point, Vector& lengths) const {
    Vector there;
    if (!landing(point, there)) {
        return false;
    }
    lengths = there - m_points.world[point];
    return true;
}

bool AreaModel::landing(std::size_t point, Vector& place) const {
    const auto screen = ScreenManager::getInstance()->getScreenGeometry();
    const Point<double, 2>& picture = m_points.picture[point];
    return screen && screen->mapInto3D({m_bounds[0] + (m_bounds[1] - m_bounds[0]) * picture[0],
                                        m_bounds[2] + (m_bounds[3] - m_bounds[2]) * picture[1]},
                                       place, true);
}

bool AreaModel::rowsAt(const Point<double, 2>& picture, double /*distance*/, double* rows) const {
    constexpr std::size_t COLUMNS = 4;
    std::fill(rows, rows + 2 * COLUMNS, 0.0);
    for (std::size_t k = 0; k < 2; ++k) {
        const double perPart = m_pixels[k] / (m_bounds[2 * k + 1] - m_bounds[2 * k]);
        rows[k * COLUMNS + 2 * k] = -(1 - picture[k]) * perPart;
        rows[k * COLUMNS + 2 * k + 1] = -picture[k] * perPart;
    }
    return true;
}

Point<int, 2> AreaModel::isReversed() const {
    const auto isTurned = [this](std::size_t k) {
        return static_cast<int>((m_bounds[k + 1] - m_bounds[k]) * (m_given[k + 1] - m_given[k]) < 0);
    };
    return {isTurned(0), isTurned(2)};
}

}  // namespace Veltrani::DisplayFitDetail
