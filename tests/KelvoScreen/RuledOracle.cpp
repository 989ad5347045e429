#include "KelvoScreen/RuledOracle.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <sstream>
#include <utility>

namespace oracle {

namespace {

constexpr long double ACCURACY = 1e-12L;
/// Below this cosine Newton's method on a nearly singular system is no judge.
constexpr long double GRAZING = 1e-5L;
constexpr int STARTS = 4;
constexpr int STEPS = 40;
constexpr int DESCENTS = 400;
constexpr long double DIVERGED = 100;

long double determinant(const Exact& a, const Exact& b, const Exact& c) {
    return dot(a, cross(b, c));
}

}  // namespace

RuledOracle::RuledOracle(ScreenConfigDouble config) : m_config(std::move(config)) {}

std::size_t RuledOracle::patchCount() const {
    return m_config.lowerRail.size() - 1;
}

Exact RuledOracle::at(std::size_t patch, long double u, long double v) const {
    const Exact a = exact(m_config.lowerRail[patch]);
    const Exact b = exact(m_config.lowerRail[patch + 1]);
    const Exact c = exact(m_config.upperRail[patch]);
    const Exact d = exact(m_config.upperRail[patch + 1]);
    return (1 - u) * (1 - v) * a + u * (1 - v) * b + (1 - u) * v * c + u * v * d;
}

Exact RuledOracle::normal(std::size_t patch, long double u, long double v) const {
    const Exact up = at(patch, u, 1) - at(patch, u, 0);
    const Exact right = at(patch, 1, v) - at(patch, 0, v);
    const Exact n = cross(up, right);
    return n * (1 / norm(n));
}

long double RuledOracle::radius(std::size_t patch) const {
    const Exact middle = at(patch, 0.5L, 0.5L);
    return std::max({norm(at(patch, 0, 0) - middle), norm(at(patch, 0, 1) - middle), norm(at(patch, 1, 0) - middle),
                     norm(at(patch, 1, 1) - middle)});
}

long double RuledOracle::distance(const Point<double, 3>& point) const {
    const Exact p = exact(point);
    long double nearest = std::numeric_limits<long double>::infinity();
    for (std::size_t patch = 0; patch < patchCount(); ++patch) {
        if (norm(at(patch, 0.5L, 0.5L) - p) > radius(patch) + nearest) {
            continue;
        }
        for (int start = 0; start <= STARTS; ++start) {
            long double u = static_cast<long double>(start) / STARTS;
            // Along u and along v in turn; each line of the patch has its nearest point in closed form.
            long double before = -1;
            for (int step = 0; step < DESCENTS && std::abs(u - before) > 1e-17L; ++step) {
                before = u;
                const Exact low = at(patch, u, 0);
                const Exact up = at(patch, u, 1) - low;
                const long double v = dot(up, up) > 0 ? std::clamp(dot(p - low, up) / dot(up, up), 0.0L, 1.0L) : 0.0L;
                const Exact left = at(patch, 0, v);
                const Exact right = at(patch, 1, v) - left;
                u = dot(right, right) > 0 ? std::clamp(dot(p - left, right) / dot(right, right), 0.0L, 1.0L) : 0.0L;
                nearest = std::min(nearest, norm(at(patch, u, v) - p));
            }
        }
    }
    return nearest;
}

std::vector<ExpectedHit> RuledOracle::meetings(const Point<double, 3>& from, const Point<double, 3>& to) const {
    const Exact origin = exact(from);
    Exact direction = exact(to) - origin;
    direction *= 1 / norm(direction);
    const long double size = scale(from, to);
    std::vector<ExpectedHit> found;
    for (std::size_t patch = 0; patch < patchCount(); ++patch) {
        if (norm(cross(at(patch, 0.5L, 0.5L) - origin, direction)) > 1.1L * radius(patch)) {
            continue;
        }
        for (int start = 0; start < STARTS * STARTS; ++start) {
            long double u = static_cast<long double>(start % STARTS) / (STARTS - 1);
            long double v = static_cast<long double>(start / STARTS) / (STARTS - 1);
            long double k = dot(at(patch, u, v) - origin, direction);
            Exact rest;
            for (int step = 0; step < STEPS; ++step) {
                rest = at(patch, u, v) - origin - k * direction;
                if (norm(rest) <= 1e-17L * size || !(std::abs(u) + std::abs(v) <= DIVERGED)) {
                    break;
                }
                const Exact byU = at(patch, 1, v) - at(patch, 0, v);
                const Exact byV = at(patch, u, 1) - at(patch, u, 0);
                const long double volume = determinant(byU, byV, -direction);
                u -= determinant(rest, byV, -direction) / volume;
                v -= determinant(byU, rest, -direction) / volume;
                k -= determinant(byU, byV, rest) / volume;
            }
            const long double slack = std::min({u, v, 1 - u, 1 - v}) * norm(at(patch, 1, 1) - at(patch, 0, 0));
            const bool isSolved = norm(rest) <= 1e-15L * size && slack > -1e-6L * size;
            const bool isNew = std::none_of(found.begin(), found.end(), [&](const ExpectedHit& other) {
                return std::abs(other.along - k) <= 1e-13L * size;
            });
            if (isSolved && isNew) {
                found.push_back({k, dot(normal(patch, u, v), direction), slack});
            }
        }
    }
    std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.along < b.along; });
    return found;
}

double RuledOracle::scale(const Point<double, 3>& from, const Point<double, 3>& to) const {
    double largest = std::max(norm(from), norm(to));
    for (const auto* rail : {&m_config.lowerRail, &m_config.upperRail}) {
        for (const Point<double, 3>& point : *rail) {
            largest = std::max(largest, norm(point));
        }
    }
    return largest;
}

std::string RuledOracle::faultOfPlaces(const IntersectionSet& hits, const Point<double, 3>& from,
                                       const Point<double, 3>& to) const {
    std::ostringstream fault;
    const Exact direction = exact(to) - exact(from);
    const long double allowed = ACCURACY * scale(from, to);
    for (std::size_t i = 0; i < hits.size(); ++i) {
        const auto& [point, t] = hits[i];
        const bool isInOrder = t >= 0 && (i == 0 || t >= hits[i - 1].t);
        const long double offSurface = distance(point);
        if (!isInOrder || !(offSurface <= allowed) || !(lineDistance(from, to, point) <= allowed) ||
            !(norm(exact(from) + t * direction - exact(point)) <= 2 * allowed)) {
            fault << "hit " << i << " at t = " << t << " is off the surface by " << offSurface << ", off the ray by "
                  << lineDistance(from, to, point) << "; ";
        }
    }
    return fault.str();
}

std::string RuledOracle::faultOf(const IntersectionSet& hits, const Point<double, 3>& from,
                                 const Point<double, 3>& to) const {
    std::ostringstream fault;
    fault << faultOfPlaces(hits, from, to);
    const long double length = norm(exact(to) - exact(from));
    const long double allowed = ACCURACY * scale(from, to);
    const std::vector<ExpectedHit> expected = meetings(from, to);
    const bool isGrazing = std::any_of(expected.begin(), expected.end(),
                                       [](const ExpectedHit& one) { return std::abs(one.cosine) < GRAZING; });
    for (std::size_t i = 0; i < hits.size() && !isGrazing; ++i) {
        const long double here = hits[i].t * length;
        if (std::none_of(expected.begin(), expected.end(), [&](const ExpectedHit& one) {
                const long double along = allowed / std::abs(one.cosine);
                return std::abs(here - one.along) <= along && one.limitSlack >= -along;
            })) {
            fault << "hit " << i << " at " << here << " is not expected; ";
        }
    }
    for (const ExpectedHit& one : expected) {
        const long double along = allowed / std::abs(one.cosine);
        int found = 0;
        for (std::size_t i = 0; i < hits.size(); ++i) {
            found += std::abs(hits[i].t * length - one.along) <= along ? 1 : 0;
        }
        if (one.along > along && one.limitSlack > along && std::abs(one.cosine) >= GRAZING && found != 1) {
            fault << found << " hits at " << one.along << " (cosine " << one.cosine << "); ";
        }
    }
    return fault.str();
}

}  // namespace oracle
