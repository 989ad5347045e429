#include "KelvoScreen/detail/RuledPatch.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Veltrani::KelvoScreenDetail {

namespace {

/// How far from a corner that has shrunk to a point, in parts of the patch, its normal is taken.
constexpr double BESIDE_CORNER = 1e-6;
/// Sines below this are noise: the two directions are parallel.
constexpr double PARALLEL = 64 * ROUNDING;
/// Roots are improved on the surface itself until they stop getting better, usually once.
constexpr int ROOT_STEPS = 4;
/// Rulings tried before the nearest point is improved: more than the distance of a twisted patch has minima.
constexpr std::size_t CLOSEST_SAMPLES = 33;
/// Halvings of the distance between two rulings in search of the nearest one; Newton's method finishes it.
constexpr int TURN_STEPS = 24;
/// Newton's method doubles the digits per step; the bound is for the search far from the minimum.
constexpr int CLOSEST_STEPS = 32;
/// How often a step downhill is halved before it is given up.
constexpr int HALVINGS = 6;
/// A step of this size, in parts of the patch, is rounding.
constexpr double SETTLED = 1e-15;
/// A discriminant this little below zero, relative to its terms, may be a touching line: the tolerance decides.
constexpr double TOUCHING = 1e-6;

/// The real roots of c0 + c1 u + c2 u^2, and the place of the extremum where the roots have just vanished. Infinite
/// ones included: the caller discards what is out of its range.
struct Roots {
    Roots(double c0, double c1, double c2) {
        const double square = c1 * c1;
        const double product = 4 * c0 * c2;
        if (square < product) {
            if (product - square <= TOUCHING * (square + std::abs(product))) {
                values[count++] = -c1 / (2 * c2);
            }
            return;
        }
        // The sum of equal signs does not cancel; the other root follows from the product of both.
        const double sum = -(c1 + std::copysign(std::sqrt(square - product), c1)) / 2;
        if (sum != 0) {
            values[count++] = c0 / sum;
        } else if (c2 != 0) {
            values[count++] = 0;
        }
        if (c2 != 0 && square > product) {
            values[count++] = sum / c2;
        }
    }

    std::array<double, 2> values{};
    std::size_t count = 0;
};

/// How far beyond the range a root may lie that improvement brings back, or the tolerance: in parts of the patch.
/// @param slope of the volume at the root
/// @param bend half of how the slope changes
/// @param noise that the volume is uncertain by, in and near the patch
double uncertaintyOf(double root, double slope, double bend, double noise) {
    // Nothing less than a whole width at a touching line, or at one that nearly lies in the patch. Where the slope is
    // nearly that of the whole surroundings, it lets the noise move a root by far less than their size.
    constexpr double SURROUNDINGS = 1.0 / 64;
    constexpr double SAFETY = 64;
    const bool isSteep = std::abs(slope) * SURROUNDINGS > SAFETY * noise &&
                         std::abs(slope) > 8 * SURROUNDINGS * std::abs(bend) && std::abs(root) <= 2;
    return isSteep ? SURROUNDINGS : 1;
}

double sampledRuling(std::size_t i) {
    return static_cast<double>(i) / (CLOSEST_SAMPLES - 1);
}

}  // namespace

PatchPlace PatchRange::clamp(const PatchPlace& place) const {
    return {std::clamp(place.u, uMin, uMax), std::clamp(place.v, vMin, vMax)};
}

RuledPatch::RuledPatch(const Point<double, 3>& lowerLeft, const Point<double, 3>& lowerRight,
                       const Point<double, 3>& upperLeft, const Point<double, 3>& upperRight)
    : m_lower{lowerLeft, lowerRight},
      m_upper{upperLeft, upperRight},
      m_rulings{upperLeft - lowerLeft, upperRight - lowerRight},
      m_edges{lowerRight - lowerLeft, upperRight - upperLeft},
      m_twist(m_rulings[1] - m_rulings[0]),
      m_centre((lowerLeft + lowerRight + upperLeft + upperRight) * 0.25) {
    for (const Point<double, 3>& corner : {lowerLeft, lowerRight, upperLeft, upperRight}) {
        m_radius = std::max(m_radius, norm(corner - m_centre));
    }
}

Point<double, 3> RuledPatch::normalAt(const PatchPlace& place) const {
    PatchPlace beside = place;
    for (const double shift : {0.0, BESIDE_CORNER}) {
        beside.u += shift * (0.5 - place.u);
        beside.v += shift * (0.5 - place.v);
        const Point<double, 3> up = rulingAt(beside.u);
        const Point<double, 3> right = alongEdge(beside.v);
        const Point<double, 3> normal = cross(up, right);
        const double length = norm(normal);
        if (length > PARALLEL * norm(up) * norm(right) && length > 0) {
            return normal * (1 / length);
        }
    }
    return {};
}

bool RuledPatch::hasArea() const {
    return normalAt({0.5, 0.5}) != Point<double, 3>{} || normalAt({0.25, 0.25}) != Point<double, 3>{};
}

std::size_t RuledPatch::meet(const Line& line, const PatchRange& range, double tolerance,
                             std::array<PatchMeeting, 2>& meetings) const {
    // A ruling meets the line when the volume that both span with a connection of the two vanishes: a quadratic in u.
    const Point<double, 3> offset = m_lower[0] - line.origin;
    const Point<double, 3> byRuling = cross(line.direction, m_rulings[0]);
    const Point<double, 3> byTwist = cross(line.direction, m_twist);
    const double c0 = dot(offset, byRuling);
    const double c1 = dot(offset, byTwist) + dot(m_edges[0], byRuling);
    const double c2 = dot(m_edges[0], byTwist);
    const double noise = tolerance * m_radius;
    std::size_t count = 0;
    const auto keep = [&](const PatchPlace& at) {
        meetings[count].place = at;
        count += passes(line, tolerance, meetings[count]) ? 1 : 0;
    };
    if (std::abs(c0) <= noise && std::abs(c1) <= noise && std::abs(c2) <= noise) {
        // The line lies in the patch, or it passes the tip that all rulings have in common.
        for (const double v : {0.0, 1.0}) {
            const bool isTip = alongEdge(v) == Point<double, 3>{};
            if (isTip && std::abs(dot(normalAt({0.5, v}), line.direction)) > PARALLEL) {
                keep({0.5, v});
            }
        }
        return count;
    }
    const Roots roots(c0, c1, c2);
    for (std::size_t i = 0; i < roots.count; ++i) {
        const double root = roots.values[i];
        const double beyond = uncertaintyOf(root, c1 + 2 * c2 * root, c2, noise);
        PatchPlace at;
        if (root >= range.uMin - beyond && root <= range.uMax + beyond && place(line, root, range, at)) {
            keep(at);
        }
    }
    return count;
}

bool RuledPatch::passes(const Line& line, double tolerance, PatchMeeting& meeting) const {
    meeting.point = pointAt(meeting.place);
    const Point<double, 3> connection = meeting.point - line.origin;
    meeting.along = dot(connection, line.direction);
    const double allowed = tolerance + ROUNDING * largestComponent(meeting.point);
    return norm(connection - meeting.along * line.direction) <= allowed;
}

bool RuledPatch::moveToTip(const Line& line, double tolerance, double reach, PatchMeeting& meeting) const {
    for (const double v : {0.0, 1.0}) {
        if (alongEdge(v) != Point<double, 3>{}) {
            continue;
        }
        // The tip is not interpolated, which would round in another way in every patch.
        PatchMeeting tip{{meeting.place.u, v}, v == 0 ? m_lower[0] : m_upper[0], 0};
        const Point<double, 3> connection = tip.point - line.origin;
        tip.along = dot(connection, line.direction);
        if (std::abs(tip.along - meeting.along) <= reach &&
            norm(connection - tip.along * line.direction) <= tolerance) {
            meeting = tip;
            return true;
        }
    }
    return false;
}

bool RuledPatch::place(const Line& line, double root, const PatchRange& range, PatchPlace& out) const {
    out.u = std::clamp(improvedRoot(line, root), range.uMin, range.uMax);
    if (!passRuling(line, out)) {
        return false;
    }
    if (out.v < range.vMin || out.v > range.vMax) {
        out.v = std::clamp(out.v, range.vMin, range.vMax);
        passEdge(line, range, out);
    }
    return true;
}

double RuledPatch::improvedRoot(const Line& line, double root) const {
    const auto volume = [&](double u) { return dot(lowerAt(u) - line.origin, cross(line.direction, rulingAt(u))); };
    double error = volume(root);
    for (int step = 0; step < ROOT_STEPS && error != 0; ++step) {
        const double slope = dot(m_edges[0], cross(line.direction, rulingAt(root))) +
                             dot(lowerAt(root) - line.origin, cross(line.direction, m_twist));
        const double improved = root - error / slope;
        const double remaining = volume(improved);
        if (!(std::abs(remaining) < std::abs(error))) {
            break;
        }
        root = improved;
        error = remaining;
    }
    return root;
}

bool RuledPatch::passRuling(const Line& line, PatchPlace& place) const {
    const Point<double, 3> ruling = rulingAt(place.u);
    const double ruling2 = dot(ruling, ruling);
    if (!(ruling2 > 0)) {
        place.v = 0.5;
        return true;
    }
    const Point<double, 3> across = cross(ruling, line.direction);
    const double across2 = dot(across, across);
    place.v = dot(cross(line.origin - lowerAt(place.u), line.direction), across) / across2;
    return across2 > PARALLEL * PARALLEL * ruling2;
}

void RuledPatch::passEdge(const Line& line, const PatchRange& range, PatchPlace& place) const {
    const Point<double, 3> right = alongEdge(place.v);
    const Point<double, 3> across = cross(right, line.direction);
    const double across2 = dot(across, across);
    if (across2 > PARALLEL * PARALLEL * dot(right, right)) {
        const Point<double, 3> start = pointAt({0.0, place.v});
        const double onEdge = dot(cross(line.origin - start, line.direction), across) / across2;
        place.u = std::clamp(onEdge, range.uMin, range.uMax);
    }
}

double RuledPatch::distance2(const Point<double, 3>& point, const PatchPlace& place) const {
    const Point<double, 3> away = pointAt(place) - point;
    return dot(away, away);
}

PatchPlace RuledPatch::closest(const Point<double, 3>& point, double touching) const {
    const PatchRange range;
    PatchPlace best;
    if (liesOn(point, touching, best)) {
        return best;
    }
    // The distance to the rulings may have several minima on a twisted patch: between rulings that it falls and rises
    // at.
    std::array<double, CLOSEST_SAMPLES> slopes{};
    for (std::size_t i = 0; i < CLOSEST_SAMPLES; ++i) {
        slopes[i] = slopeAcross(point, sampledRuling(i), range);
    }
    double smallest = std::numeric_limits<double>::infinity();
    const auto consider = [&](double u) {
        const PatchPlace improved = refineClosest(point, {u, closestOnRuling(point, u, range)}, range);
        const double distance = distance2(point, improved);
        if (distance < smallest) {
            smallest = distance;
            best = improved;
        }
    };
    if (slopes.front() > 0) {
        consider(0);
    }
    if (slopes.back() < 0) {
        consider(1);
    }
    for (std::size_t i = 0; i + 1 < CLOSEST_SAMPLES; ++i) {
        if (slopes[i] <= 0 && slopes[i + 1] >= 0) {
            consider(turnOfSlope(point, sampledRuling(i), sampledRuling(i + 1), range));
        }
    }
    return best;
}

bool RuledPatch::liesOn(const Point<double, 3>& point, double touching, PatchPlace& place) const {
    // A line through the point meets the patch there and at one more place at most. When it is steep enough, it decides
    // exactly.
    for (const PatchPlace& about : {PatchPlace{0.5, 0.5}, PatchPlace{0.1, 0.1}, PatchPlace{0.9, 0.1}}) {
        std::array<PatchMeeting, 2> meetings;
        const std::size_t count = meet({point, normalAt(about)}, PatchRange{}, touching, meetings);
        for (std::size_t i = 0; i < count; ++i) {
            if (std::abs(meetings[i].along) <= touching) {
                place = refineClosest(point, meetings[i].place, PatchRange{});
                return true;
            }
        }
    }
    return false;
}

double RuledPatch::slopeAcross(const Point<double, 3>& point, double u, const PatchRange& range) const {
    const double v = closestOnRuling(point, u, range);
    return dot(pointAt({u, v}) - point, alongEdge(v));
}

double RuledPatch::turnOfSlope(const Point<double, 3>& point, double falling, double rising,
                               const PatchRange& range) const {
    for (int step = 0; step < TURN_STEPS; ++step) {
        const double middle = (falling + rising) / 2;
        (slopeAcross(point, middle, range) <= 0 ? falling : rising) = middle;
    }
    return (falling + rising) / 2;
}

double RuledPatch::closestOnRuling(const Point<double, 3>& point, double u, const PatchRange& range) const {
    const Point<double, 3> ruling = rulingAt(u);
    const double length2 = dot(ruling, ruling);
    const double v = length2 > 0 ? dot(point - lowerAt(u), ruling) / length2 : 0.5;
    return std::clamp(v, range.vMin, range.vMax);
}

double RuledPatch::closestOnRow(const Point<double, 3>& point, double v, const PatchRange& range) const {
    const Point<double, 3> row = alongEdge(v);
    const double length2 = dot(row, row);
    const double u = length2 > 0 ? dot(point - pointAt({0.0, v}), row) / length2 : 0.5;
    return std::clamp(u, range.uMin, range.uMax);
}

PatchPlace RuledPatch::descend(const Point<double, 3>& point, const PatchPlace& from, const PatchRange& range) const {
    // Far from the minimum Newton's step may lead away. Without the twist it points downhill, if not always so far.
    const double before = distance2(point, from);
    const PatchPlace target = newtonStep(point, from, range, 0.0);
    double part = 1;
    for (int halving = 0; halving <= HALVINGS; ++halving, part /= 2) {
        const PatchPlace next = range.clamp({from.u + part * (target.u - from.u), from.v + part * (target.v - from.v)});
        if (distance2(point, next) < before) {
            return next;
        }
    }
    // Held back by an end of the range: along the ruling, else across the rulings.
    const PatchPlace along{from.u, closestOnRuling(point, from.u, range)};
    return distance2(point, along) < before ? along : PatchPlace{closestOnRow(point, from.v, range), from.v};
}

PatchPlace RuledPatch::refineClosest(const Point<double, 3>& point, PatchPlace start, const PatchRange& range) const {
    PatchPlace best = range.clamp(start);
    double smallest = distance2(point, best);
    for (int step = 0; step < CLOSEST_STEPS; ++step) {
        // Near the minimum the distance hardly changes while the place still does: equal to rounding is good enough.
        const double allowed = smallest * (1 + ROUNDING);
        PatchPlace next = range.clamp(newtonStep(point, best, range, 1.0));
        if (!(distance2(point, next) <= allowed)) {
            next = descend(point, best, range);
        }
        const double distance = distance2(point, next);
        const double moved = std::abs(next.u - best.u) + std::abs(next.v - best.v);
        if (!(distance <= allowed) || moved == 0) {
            break;
        }
        smallest = std::min(smallest, distance);
        best = next;
        if (moved <= SETTLED) {
            break;
        }
    }
    return best;
}

PatchPlace RuledPatch::newtonStep(const Point<double, 3>& point, const PatchPlace& at, const PatchRange& range,
                                  double twistWeight) const {
    const Point<double, 3> away = pointAt(at) - point;
    const Point<double, 3> right = alongEdge(at.v);
    const Point<double, 3> up = rulingAt(at.u);
    const double slopeU = dot(away, right);
    const double slopeV = dot(away, up);
    const double bendU = dot(right, right);
    const double bendV = dot(up, up);
    const double mixed = dot(right, up) + twistWeight * dot(away, m_twist);
    // A parameter that its end of the range holds back takes no part; alone it may point past that end.
    const bool fixedU = (at.u <= range.uMin && slopeU > 0) || (at.u >= range.uMax && slopeU < 0);
    const bool fixedV = (at.v <= range.vMin && slopeV > 0) || (at.v >= range.vMax && slopeV < 0);
    const double determinant = bendU * bendV - mixed * mixed;
    if (!fixedU && !fixedV && determinant > 0) {
        return {at.u - (slopeU * bendV - slopeV * mixed) / determinant,
                at.v - (slopeV * bendU - slopeU * mixed) / determinant};
    }
    return {bendU > 0 ? at.u - slopeU / bendU : at.u, bendV > 0 ? at.v - slopeV / bendV : at.v};
}

}  // namespace Veltrani::KelvoScreenDetail
