#include "DisplayFit/detail/MirrorModel.h"

#include "DisplayFit/detail/PointShape.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace Veltrani::DisplayFitDetail {

namespace {

using Vector = Point<double, 3>;

/// Half the difference that derivatives are taken over: radians and parts of the picture.
constexpr double DIFFERENCE = 1e-5;

constexpr int MOST_NEWTON_STEPS = 20;

}  // namespace

MirrorModel::MirrorModel(const FitPoints& points, const PictureView& view, const PictureModel::Held& held,
                         const CollimatedTargetLocatorParams& camera)
    : m_points(points),
      m_picture(points, view, held),
      m_camera(camera),
      m_extent(PointShape::of(points.world).extents[0]) {
    m_values.orientation = {camera.rotationZ, camera.rotationX, camera.rotationY};
    m_values.frustum = {camera.angleLeft, camera.angleRight, camera.angleBottom, camera.angleTop};
    layPlanes();
}

CollimatedTargetLocatorParams MirrorModel::cameraAt(const double* step) const {
    DisplayFit::ChannelValues values = m_values;
    m_picture.write(step, values);
    CollimatedTargetLocatorParams camera = m_camera;
    camera.rotationZ = values.orientation[0];
    camera.rotationX = values.orientation[1];
    camera.rotationY = values.orientation[2];
    camera.angleLeft = values.frustum.left;
    camera.angleRight = values.frustum.right;
    camera.angleBottom = values.frustum.bottom;
    camera.angleTop = values.frustum.top;
    return camera;
}

bool MirrorModel::rayOf(const CollimatedTargetLocator& locator, const Point<double, 2>& picture, Ray& ray) {
    return locator.reflect(locator.rayOf(picture), ray);
}

bool MirrorModel::missOf(const CollimatedTargetLocator& locator, std::size_t point, const Point<double, 2>& picture,
                         Point<double, 2>& miss) const {
    Ray ray;
    return m_planes[point] && rayOf(locator, picture, ray) &&
           m_planes[point]->meet(ray.first, ray.second - ray.first, miss);
}

void MirrorModel::layPlanes() {
    const std::vector<double> base(unknowns().size(), 0.0);
    m_base = std::make_unique<const CollimatedTargetLocator>(cameraAt(base.data()));
    m_planes.clear();
    for (std::size_t i = 0; i < m_points.size(); ++i) {
        m_points.pulseAt(i);
        Ray ray;
        m_planes.push_back(rayOf(*m_base, m_points.picture[i], ray)
                               ? std::optional(ScreenPlane::across(m_points.world[i], ray.second - ray.first))
                               : std::nullopt);
    }
}

void MirrorModel::evaluate(const double* step, std::size_t first, std::size_t count, double* residuals,
                           double* jacobian, bool* isMapped) const {
    const std::size_t columns = unknowns().size();
    const CollimatedTargetLocator middle(cameraAt(step));
    for (std::size_t i = 0; i < count; ++i) {
        Point<double, 2> miss;
        isMapped[i] = missOf(middle, first + i, m_points.picture[first + i], miss);
        residuals[2 * i] = isMapped[i] ? miss[0] : 0;
        residuals[2 * i + 1] = isMapped[i] ? miss[1] : 0;
    }
    for (std::size_t k = 0; jacobian != nullptr && k < columns; ++k) {
        std::vector<double> moved(step, step + columns);
        moved[k] = step[k] + DIFFERENCE;
        const CollimatedTargetLocator ahead(cameraAt(moved.data()));
        moved[k] = step[k] - DIFFERENCE;
        const CollimatedTargetLocator behind(cameraAt(moved.data()));
        for (std::size_t i = 0; i < count; ++i) {
            const Point<double, 2>& picture = m_points.picture[first + i];
            Point<double, 2> one;
            Point<double, 2> other;
            const bool isKnown =
                isMapped[i] && missOf(ahead, first + i, picture, one) && missOf(behind, first + i, picture, other);
            for (std::size_t r = 0; r < 2; ++r) {
                jacobian[(2 * i + r) * columns + k] = isKnown ? (one[r] - other[r]) / (2 * DIFFERENCE) : 0.0;
            }
        }
    }
}

bool MirrorModel::spreadOf(std::size_t point, Spread& spread) const {
    if (!m_planes[point]) {
        return false;
    }
    spread = {};
    if (!m_points.covariance.empty()) {
        const auto& covariance = m_points.covariance[point];
        const Vector& u = m_planes[point]->first();
        const Vector& v = m_planes[point]->second();
        spread = {dot(u, covariance * u), dot(u, covariance * v), dot(v, covariance * v)};
    }
    if (!m_points.pictureDeviation.empty()) {
        for (std::size_t k = 0; k < 2; ++k) {
            Point<double, 2> along;
            along[k] = DIFFERENCE;
            Point<double, 2> one;
            Point<double, 2> other;
            if (!missOf(*m_base, point, m_points.picture[point] + along, one) ||
                !missOf(*m_base, point, m_points.picture[point] - along, other)) {
                return false;
            }
            const Point<double, 2> moved = (one - other) * (m_points.pictureDeviation[point][k] / (2 * DIFFERENCE));
            spread += Spread{moved[0] * moved[0], moved[0] * moved[1], moved[1] * moved[1]};
        }
    }
    return true;
}

void MirrorModel::move(const double* step) {
    m_picture.write(step, m_values);
    m_picture.move(step);
    layPlanes();
}

bool MirrorModel::missInPicture(std::size_t point, Point<double, 2>& pixels) const {
    Point<double, 2> place = m_points.picture[point];
    for (int step = 0; step < MOST_NEWTON_STEPS; ++step) {
        Point<double, 2> miss;
        std::array<Point<double, 2>, 4> around;
        if (!missOf(*m_base, point, place, miss) ||
            !missOf(*m_base, point, place + Point<double, 2>{DIFFERENCE, 0}, around[0]) ||
            !missOf(*m_base, point, place - Point<double, 2>{DIFFERENCE, 0}, around[1]) ||
            !missOf(*m_base, point, place + Point<double, 2>{0, DIFFERENCE}, around[2]) ||
            !missOf(*m_base, point, place - Point<double, 2>{0, DIFFERENCE}, around[3])) {
            return false;
        }
        if (norm(miss) <= leastDeviation()) {
            const Point<double, 2> from = place - m_points.picture[point];
            pixels = {from[0] * m_picture.view().pixels[0], from[1] * m_picture.view().pixels[1]};
            return true;
        }
        const Point<double, 2> byU = (around[0] - around[1]) * (0.5 / DIFFERENCE);
        const Point<double, 2> byV = (around[2] - around[3]) * (0.5 / DIFFERENCE);
        const double determinant = byU[0] * byV[1] - byV[0] * byU[1];
        place -= Point<double, 2>{(byV[1] * miss[0] - byV[0] * miss[1]) / determinant,
                                  (byU[0] * miss[1] - byU[1] * miss[0]) / determinant};
    }
    return false;
}

bool MirrorModel::missOnScreen(std::size_t point, Vector& lengths) const {
    Ray ray;
    if (!rayOf(*m_base, m_points.picture[point], ray)) {
        return false;
    }
    const ScreenPlane plane = ScreenPlane::at(m_points.world[point], ray.first);
    Point<double, 2> along;
    if (!plane.meet(ray.first, ray.second - ray.first, along)) {
        return false;
    }
    lengths = plane.at(along) - m_points.world[point];
    return true;
}

bool MirrorModel::landing(std::size_t point, Vector& place) const {
    const Ray ray = m_base->rayOf(m_points.picture[point]);
    return m_base->intersectWithTargetLocationSurface(ray.first, ray.second, place).first;
}

}  // namespace Veltrani::DisplayFitDetail
