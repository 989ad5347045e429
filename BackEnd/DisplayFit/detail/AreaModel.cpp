#include "DisplayFit/detail/AreaModel.h"

#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/ScreenManager.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Veltrani::DisplayFitDetail {

namespace {

using Vector = Point<double, 3>;

/// What rounding leaves of a residual, as a part of the picture.
constexpr double ROUNDING = 1e-10;

}  // namespace

AreaModel::AreaModel(const FitPoints& points, const DisplayFit::AreaBounds& area, const Point<int, 2>& pixels)
    : m_points(points),
      m_bounds{area.left, area.right, area.bottom, area.top},
      m_given(m_bounds),
      m_pixels{std::max(pixels[0], 1), std::max(pixels[1], 1)} {
    for (const char* name : {"area left", "area right", "area bottom", "area top"}) {
        m_unknowns.push_back({Unknown::Role::AREA, name, DisplayFit::FittedValue::Quantity::NUMBER});
    }
    const auto screen = ScreenManager::getInstance()->getScreenGeometry();
    for (std::size_t i = 0; i < points.size(); ++i) {
        const Point<double, 2>& picture = points.picture[i];
        const Point<double, 2> expected{m_bounds[0] + (m_bounds[1] - m_bounds[0]) * picture[0],
                                        m_bounds[2] + (m_bounds[3] - m_bounds[2]) * picture[1]};
        m_places.push_back(screen ? SurfacePlace::nearest(*screen, points.world[i], expected) : std::nullopt);
    }
}

AreaModel::Bounds AreaModel::boundsAt(const double* step) const {
    Bounds bounds = m_bounds;
    for (std::size_t k = 0; k < bounds.size(); ++k) {
        bounds[k] += step[k];
    }
    return bounds;
}

void AreaModel::evaluate(const double* step, double* residuals, double* jacobian, bool* isMapped) const {
    constexpr std::size_t COLUMNS = 4;
    const Bounds bounds = boundsAt(step);
    for (std::size_t i = 0; i < m_points.size(); ++i) {
        isMapped[i] = m_places[i].has_value();
        for (std::size_t k = 0; k < 2; ++k) {
            double& residual = residuals[2 * i + k];
            double* const row = jacobian != nullptr ? jacobian + (2 * i + k) * COLUMNS : nullptr;
            if (row != nullptr) {
                std::fill(row, row + COLUMNS, 0.0);
            }
            residual = 0;
            if (!isMapped[i]) {
                continue;
            }
            const double start = bounds[2 * k];
            const double size = bounds[2 * k + 1] - start;
            const double part = (m_places[i]->parameters[k] - start) / size;
            residual = m_pixels[k] * (part - m_points.picture[i][k]);
            if (row != nullptr) {
                row[2 * k] = m_pixels[k] * (part - 1) / size;
                row[2 * k + 1] = -m_pixels[k] * part / size;
            }
        }
    }
}

bool AreaModel::spreadOf(std::size_t point, Spread& spread) const {
    if (!m_places[point]) {
        return false;
    }
    spread = {};
    if (!m_points.covariance.empty()) {
        // By what a move of the point changes the nearest place.
        const auto& [bySide, byHeight] = m_places[point]->tangents;
        const double a = dot(bySide, bySide);
        const double b = dot(bySide, byHeight);
        const double d = dot(byHeight, byHeight);
        const double determinant = a * d - b * b;
        const Vector u = (d * bySide - b * byHeight) * (m_pixels[0] / (determinant * (m_bounds[1] - m_bounds[0])));
        const Vector v = (a * byHeight - b * bySide) * (m_pixels[1] / (determinant * (m_bounds[3] - m_bounds[2])));
        const auto& covariance = m_points.covariance[point];
        spread = {dot(u, covariance * u), dot(u, covariance * v), dot(v, covariance * v)};
    }
    if (!m_points.pictureDeviation.empty()) {
        spread[0] += std::pow(m_points.pictureDeviation[point][0] * m_pixels[0], 2);
        spread[2] += std::pow(m_points.pictureDeviation[point][1] * m_pixels[1], 2);
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
    if (!m_places[point]) {
        return false;
    }
    for (std::size_t k = 0; k < 2; ++k) {
        const double part =
            (m_places[point]->parameters[k] - m_bounds[2 * k]) / (m_bounds[2 * k + 1] - m_bounds[2 * k]);
        pixels[k] = m_pixels[k] * (part - m_points.picture[point][k]);
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

double AreaModel::leastDeviation() const {
    return ROUNDING * std::max(m_pixels[0], m_pixels[1]);
}

Point<int, 2> AreaModel::isReversed() const {
    const auto isTurned = [this](std::size_t k) {
        return static_cast<int>((m_bounds[k + 1] - m_bounds[k]) * (m_given[k + 1] - m_given[k]) < 0);
    };
    return {isTurned(0), isTurned(2)};
}

}  // namespace Veltrani::DisplayFitDetail
