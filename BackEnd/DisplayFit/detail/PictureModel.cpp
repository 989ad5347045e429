#include "DisplayFit/detail/PictureModel.h"

#include "Common/Finite.h"
#include "DisplayFit/detail/Rotations.h"
#include "DisplayFit/detail/ScreenPlane.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/ScreenManager.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Veltrani::DisplayFitDetail {

namespace {

using DisplayFit::ChannelValues;
using DisplayFit::FittedValue;
using Vector = Point<double, 3>;
using Role = Unknown::Role;
using Quantity = FittedValue::Quantity;

/// v^T m.
Vector times(const Vector& v, const Matrix<double, 3>& m) {
    return {v[0] * m(0, 0) + v[1] * m(1, 0) + v[2] * m(2, 0), v[0] * m(0, 1) + v[1] * m(1, 1) + v[2] * m(2, 1),
            v[0] * m(0, 2) + v[1] * m(1, 2) + v[2] * m(2, 2)};
}

const char* nameOfCoefficient(LensFormula::Kind kind, std::size_t i) {
    static constexpr std::array BROWN{"k1", "k2", "p1", "p2", "k3", "k4", "k5", "k6"};
    static constexpr std::array FISHEYE{"k1", "k2", "k3", "k4"};
    return kind == LensFormula::Kind::FISHEYE ? FISHEYE[i] : BROWN[i];
}

}  // namespace

PictureModel::PictureModel(const FitPoints& points, const PictureView& view, const Held& held)
    : m_points(points),
      m_view(view),
      m_held(held),
      m_givenFactor(view.factor),
      m_places(points.world),
      m_offsets(points.size()) {
    m_column.fill(-1);
    listUnknowns();
    setView(view);
}

void PictureModel::add(int slot, Unknown unknown) {
    m_column[static_cast<std::size_t>(slot)] = static_cast<int>(m_unknowns.size());
    m_unknowns.push_back(std::move(unknown));
}

void PictureModel::listUnknowns() {
    const auto& solved = m_held.solved;
    if (solved.orientation) {
        add(TURN, {Role::TILT, "tilt", Quantity::ANGLE});
        add(TURN + 1, {Role::ROLL, "roll", Quantity::ANGLE});
        add(TURN + 2, {Role::HEADING, "heading", Quantity::ANGLE});
    }
    if (solved.position) {
        add(SHIFT, {Role::ACROSS, "position across the axis", Quantity::LENGTH});
        add(SHIFT + 1, {Role::ALONG, "position along the axis", Quantity::LENGTH});
        add(SHIFT + 2, {Role::UPWARDS, "height of the position", Quantity::LENGTH});
    }
    if (solved.frustum) {
        if (m_held.squarePixels) {
            add(WIDTH, {Role::WIDTH, "frustum size", Quantity::NUMBER});
        } else {
            add(WIDTH, {Role::WIDTH, "frustum width", Quantity::NUMBER});
            add(HEIGHT, {Role::HEIGHT, "frustum height", Quantity::NUMBER});
        }
        if (!m_held.horizontalShift) {
            add(AXIS_U, {Role::SHIFT_U, "horizontal shift", Quantity::NUMBER});
        }
        add(AXIS_V, {Role::SHIFT_V, "vertical shift", Quantity::NUMBER});
    }
    for (std::size_t i = 0; solved.distortion && i < m_view.lens.coefficients(); ++i) {
        add(COEFFICIENTS + static_cast<int>(i),
            {Role::LENS, nameOfCoefficient(m_view.lens.kind(), i), Quantity::NUMBER});
    }
}

void PictureModel::setView(const PictureView& view) {
    m_view = view;
    if (m_held.squarePixels && m_held.solved.frustum) {
        // The mean of both, in pixels.
        const Point<double, 2> focal{m_view.factor[0] * m_view.pixels[0], m_view.factor[1] * m_view.pixels[1]};
        const double mean = std::sqrt(std::abs(focal[0] * focal[1]));
        m_view.factor = {std::copysign(mean, focal[0]) / m_view.pixels[0],
                         std::copysign(mean, focal[1]) / m_view.pixels[1]};
    }
    const Matrix<double, 3> projector_from_world = transpose(m_view.world_from_projector);
    m_fromProjector.clear();
    for (const Vector& world : m_places) {
        m_fromProjector.push_back(projector_from_world * (world - m_view.position));
    }
}

double PictureModel::stepOf(const double* step, int slot) const {
    const int column = m_column[static_cast<std::size_t>(slot)];
    return column < 0 ? 0.0 : step[column];
}

double PictureModel::heightOfStep(double wider) const {
    return std::copysign(wider * m_view.pixels[0] / m_view.pixels[1], wider * m_view.factor[0] * m_view.factor[1]);
}

PictureView PictureModel::viewAt(const double* step) const {
    PictureView view = m_view;
    const Vector turn{stepOf(step, TURN), stepOf(step, TURN + 1), stepOf(step, TURN + 2)};
    const Vector shift{stepOf(step, SHIFT), stepOf(step, SHIFT + 1), stepOf(step, SHIFT + 2)};
    view.position += m_view.world_from_projector * shift;
    view.world_from_projector = m_view.world_from_projector * rotationOf(turn);
    const double wider = stepOf(step, WIDTH);
    const double higher = m_held.squarePixels ? heightOfStep(wider) : stepOf(step, HEIGHT);
    view.factor += Point<double, 2>{wider, higher};
    view.shift += Point<double, 2>{stepOf(step, AXIS_U), stepOf(step, AXIS_V)};
    for (std::size_t i = 0; i < view.lens.coefficients(); ++i) {
        view.lens.setCoefficient(i, view.lens.coefficient(i) + stepOf(step, COEFFICIENTS + static_cast<int>(i)));
    }
    return view;
}

/// What the rows of one evaluation have in common.
struct PictureModel::Moved {
    PictureView view;
    Vector shift;
    Matrix<double, 3> back;    ///< from the projector's frame at the base to that at the step
    Matrix<double, 3> byTurn;  ///< the turn that a change of the step's turn makes, before the sign
    double square = 0;         ///< pixels by which b grows with the width, where pixels are square
};

void PictureModel::fillRow(const Moved& moved, const Vector& ray, const LensFormula::Place& place, bool isU,
                           double* row) const {
    const std::size_t k = isU ? 0 : 1;
    const double pixels = moved.view.pixels[k];
    const double scale = moved.view.factor[k] * pixels;
    const double along = isU ? place.a : place.b;
    const auto& byRay = isU ? place.aByRay : place.bByRay;
    const auto& byCoefficient = isU ? place.aByCoefficient : place.bByCoefficient;
    const Vector gradient = Vector{byRay[0], byRay[1], byRay[2]} * scale;
    const Vector turned = times(cross(gradient, ray), moved.byTurn);
    const Vector shifted = times(gradient, moved.back);
    const auto put = [&](std::size_t slot, double value) {
        if (m_column[slot] >= 0) {
            row[m_column[slot]] = value;
        }
    };
    for (std::size_t i = 0; i < 3; ++i) {
        put(TURN + i, turned[i]);
        put(SHIFT + i, -shifted[i]);
    }
    put(WIDTH, isU ? pixels * along : moved.square * along);
    put(HEIGHT, isU ? 0.0 : pixels * along);
    put(AXIS_U, isU ? pixels : 0.0);
    put(AXIS_V, isU ? 0.0 : pixels);
    for (std::size_t i = 0; i < moved.view.lens.coefficients(); ++i) {
        put(COEFFICIENTS + i, scale * byCoefficient[i]);
    }
}

void PictureModel::evaluate(const double* step, std::size_t first, std::size_t count, double* residuals,
                            double* jacobian, bool* isMapped) const {
    const Vector turn{stepOf(step, TURN), stepOf(step, TURN + 1), stepOf(step, TURN + 2)};
    const Vector shift{stepOf(step, SHIFT), stepOf(step, SHIFT + 1), stepOf(step, SHIFT + 2)};
    const Moved moved{viewAt(step), shift, rotationOf(-turn), turnBefore(-turn),
                      m_held.squarePixels ? heightOfStep(m_view.pixels[1]) : 0.0};
    const PictureView& view = moved.view;
    const std::size_t columns = m_unknowns.size();
    LensFormula::Place place;
    for (std::size_t i = 0; i < count; ++i) {
        double* const residual = residuals + 2 * i;
        double* const rows = jacobian != nullptr ? jacobian + 2 * i * columns : nullptr;
        const Vector ray = moved.back * (m_fromProjector[first + i] - shift);
        isMapped[i] = view.lens.place(ray, place, rows != nullptr);
        if (isMapped[i]) {
            const Point<double, 2>& stated = m_points.picture[first + i];
            const Point<double, 2>& offset = m_offsets[first + i];
            residual[0] = view.pixels[0] * (view.factor[0] * place.a + view.shift[0] - stated[0]) + offset[0];
            residual[1] = view.pixels[1] * (view.factor[1] * place.b + view.shift[1] - stated[1]) + offset[1];
            if (rows != nullptr) {
                fillRow(moved, ray, place, true, rows);
                fillRow(moved, ray, place, false, rows + columns);
            }
            continue;
        }
        std::fill(residual, residual + 2, 0.0);
        if (rows != nullptr) {
            std::fill(rows, rows + 2 * columns, 0.0);
        }
    }
}

bool PictureModel::gradients(const Vector& world, Point<double, 2>& picture, std::array<Vector, 2>& byWorld) const {
    const Vector ray = transpose(m_view.world_from_projector) * (world - m_view.position);
    LensFormula::Place place;
    if (!m_view.lens.place(ray, place)) {
        return false;
    }
    const auto inWorld = [&](const std::array<double, 3>& byRay, double scale) {
        return m_view.world_from_projector * (Vector{byRay[0], byRay[1], byRay[2]} * scale);
    };
    picture = {m_view.factor[0] * place.a + m_view.shift[0], m_view.factor[1] * place.b + m_view.shift[1]};
    byWorld = {inWorld(place.aByRay, m_view.factor[0] * m_view.pixels[0]),
               inWorld(place.bByRay, m_view.factor[1] * m_view.pixels[1])};
    return true;
}

bool PictureModel::spreadOf(std::size_t point, Spread& spread) const {
    Point<double, 2> picture;
    std::array<Vector, 2> byWorld;
    if (!gradients(m_places[point], picture, byWorld)) {
        return false;
    }
    spread = {};
    if (!m_points.covariance.empty()) {
        const Vector u = m_points.covariance[point] * byWorld[0];
        const Vector v = m_points.covariance[point] * byWorld[1];
        spread = {dot(byWorld[0], u), dot(byWorld[1], u), dot(byWorld[1], v)};
    }
    if (!m_points.pictureDeviation.empty()) {
        const Point<double, 2>& stated = m_points.pictureDeviation[point];
        spread[0] += std::pow(stated[0] * m_view.pixels[0], 2);
        spread[2] += std::pow(stated[1] * m_view.pixels[1], 2);
    }
    return true;
}

void PictureModel::move(const double* step) {
    setView(viewAt(step));
}

void PictureModel::settle() {
    if (m_points.covariance.empty()) {
        return;
    }
    for (std::size_t i = 0; i < m_points.size(); ++i) {
        m_points.pulseAt(i);
        Point<double, 2> picture;
        std::array<Vector, 2> byWorld;
        Spread spread;
        const Vector& measured = m_points.world[i];
        if (!gradients(m_places[i], picture, byWorld) || !spreadOf(i, spread)) {
            continue;
        }
        const Vector back = measured - m_places[i];
        const Point<double, 2> miss{m_view.pixels[0] * (picture[0] - m_points.picture[i][0]) + dot(byWorld[0], back),
                                    m_view.pixels[1] * (picture[1] - m_points.picture[i][1]) + dot(byWorld[1], back)};
        const double determinant = spread[0] * spread[2] - spread[1] * spread[1];
        const Vector pull = byWorld[0] * ((spread[2] * miss[0] - spread[1] * miss[1]) / determinant) +
                            byWorld[1] * ((spread[0] * miss[1] - spread[1] * miss[0]) / determinant);
        const Vector settled = measured - m_points.covariance[i] * pull;
        if (isFinite(settled) && gradients(settled, picture, byWorld)) {
            m_places[i] = settled;
            m_offsets[i] = {dot(byWorld[0], measured - settled), dot(byWorld[1], measured - settled)};
        }
    }
    setView(m_view);
}

void PictureModel::write(const double* step, ChannelValues& values) const {
    const PictureView view = viewAt(step);
    if (m_held.solved.orientation) {
        values.orientation = anglesOf(view.world_from_projector, values.orientation);
    }
    if (m_held.solved.position) {
        values.position = view.position;
    }
    if (values.lens) {
        LensNumbers& lens = *values.lens;
        if (m_held.solved.frustum) {
            lens.fx = view.factor[0] * lens.imageWidth;
            lens.fy = view.factor[1] * lens.imageHeight;
            lens.cx = view.shift[0] * lens.imageWidth - 0.5;
            lens.cy = (1 - view.shift[1]) * lens.imageHeight - 0.5;
        }
        // Coefficients that the formula was made without are zero.
        const std::size_t solved = std::min(lens.distortion.size(), LensFormula::MOST_COEFFICIENTS);
        for (std::size_t i = 0; m_held.solved.distortion && i < solved; ++i) {
            lens.distortion[i] = view.lens.coefficient(i);
        }
    } else if (m_held.solved.frustum) {
        const auto angle = [&view](double edge) {
            return view.lens.kind() == LensFormula::Kind::EQUIDISTANT ? edge : std::atan(edge);
        };
        values.frustum = {angle(-view.shift[0] / view.factor[0]), angle((1 - view.shift[0]) / view.factor[0]),
                          angle(-view.shift[1] / view.factor[1]), angle((1 - view.shift[1]) / view.factor[1])};
    }
}

bool PictureModel::missInPicture(std::size_t point, Point<double, 2>& pixels) const {
    const Vector ray = transpose(m_view.world_from_projector) * (m_points.world[point] - m_view.position);
    LensFormula::Place place;
    if (!m_view.lens.place(ray, place, false)) {
        return false;
    }
    const Point<double, 2> picture{m_view.factor[0] * place.a + m_view.shift[0],
                                   m_view.factor[1] * place.b + m_view.shift[1]};
    const Point<double, 2> miss = picture - m_points.picture[point];
    pixels = {miss[0] * m_view.pixels[0], miss[1] * m_view.pixels[1]};
    return true;
}

bool PictureModel::missOnScreen(std::size_t point, Vector& lengths) const {
    const Vector& measured = m_points.world[point];
    const ScreenPlane plane = ScreenPlane::at(measured, m_view.position);
    Point<double, 2> along;
    // The place on the plane that the picture shows where it states the point: by Newton's method from the point.
    for (int step = 0; step < 50; ++step) {
        Point<double, 2> picture;
        std::array<Vector, 2> byWorld;
        const Vector there = plane.at(along);
        if (!gradients(there, picture, byWorld)) {
            return false;
        }
        const Point<double, 2> miss{(m_points.picture[point][0] - picture[0]) * m_view.pixels[0],
                                    (m_points.picture[point][1] - picture[1]) * m_view.pixels[1]};
        if (norm(miss) <= leastDeviation() * 1e-2) {
            lengths = there - measured;
            return true;
        }
        along += plane.solve(byWorld, miss);
    }
    return false;
}

bool PictureModel::landing(std::size_t point, Vector& place) const {
    const auto screen = ScreenManager::getInstance()->getScreenGeometry();
    const Point<double, 2>& picture = m_points.picture[point];
    Point<double, 2> tangents;
    if (!screen || !m_view.lens.tangentsOf({(picture[0] - m_view.shift[0]) / m_view.factor[0],
                                            (picture[1] - m_view.shift[1]) / m_view.factor[1]},
                                           tangents)) {
        return false;
    }
    const Vector direction = m_view.world_from_projector * Vector{tangents[0], 1, tangents[1]};
    const IntersectionSet hits = screen->intersect(m_view.position, m_view.position + direction);
    if (hits.empty()) {
        return false;
    }
    place = hits.first().point;
    return true;
}

bool PictureModel::rowsAt(const Point<double, 2>& picture, double distance, double* rows) const {
    Point<double, 2> tangents;
    LensFormula::Place place;
    if (!m_view.lens.tangentsOf(
            {(picture[0] - m_view.shift[0]) / m_view.factor[0], (picture[1] - m_view.shift[1]) / m_view.factor[1]},
            tangents)) {
        return false;
    }
    const Vector ahead{tangents[0], 1, tangents[1]};
    const Vector ray = ahead * (distance / norm(ahead));
    if (!m_view.lens.place(ray, place)) {
        return false;
    }
    const Moved unmoved{
        m_view, {}, rotationOf({}), turnBefore({}), m_held.squarePixels ? heightOfStep(m_view.pixels[1]) : 0.0};
    fillRow(unmoved, ray, place, true, rows);
    fillRow(unmoved, ray, place, false, rows + m_unknowns.size());
    return true;
}

double PictureModel::distanceOf(std::size_t point) const {
    return norm(m_points.world[point] - m_view.position);
}

Point<int, 2> PictureModel::isReversed() const {
    return {static_cast<int>(m_view.factor[0] * m_givenFactor[0] < 0),
            static_cast<int>(m_view.factor[1] * m_givenFactor[1] < 0)};
}

}  // namespace Veltrani::DisplayFitDetail
