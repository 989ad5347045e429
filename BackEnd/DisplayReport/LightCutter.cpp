#include "DisplayReport/LightCutter.h"

#include <cmath>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

/// A border is found to 1/65536 of an edge, which is short already.
constexpr int BISECTIONS = 16;
/// Borders that meet in one triangle of the shortest edges; what is left then is too small to matter.
constexpr int MOST_SLICES = 8;
/// Halves of halves: lengths of one to a million, twice over for the two directions.
constexpr int MOST_HALVINGS = 44;

/// The corners turned so that the longest edge comes first, and its length. NaN when any edge is none.
std::pair<LitTriangle, double> byLongestEdge(const LitDomain& domain, const LitTriangle& triangle) {
    std::size_t longest = 0;
    double length = 0;
    double sum = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        const double edge = domain.distance(triangle[i], triangle[(i + 1) % 3]);
        sum += edge;
        if (edge > length) {
            length = edge;
            longest = i;
        }
    }
    return {{triangle[longest], triangle[(longest + 1) % 3], triangle[(longest + 2) % 3]},
            std::isfinite(sum) ? length : std::nan("")};
}

bool isLitAlike(const LitTriangle& triangle) {
    return triangle[0].by == triangle[1].by && triangle[1].by == triangle[2].by;
}

/// The corner that is lit unlike the other two first; any one when all three differ.
LitTriangle byOddCorner(const LitTriangle& triangle) {
    const auto& [a, b, c] = triangle;
    if (a.by == b.by) {
        return {c, a, b};
    }
    return a.by == c.by ? LitTriangle{b, c, a} : triangle;
}

}  // namespace

LightCutter::LightCutter(const LitDomain& domain, Take take) : m_domain(domain), m_take(std::move(take)) {}

void LightCutter::cut(const LitTriangle& triangle) const {
    halve(triangle, 0);
}

void LightCutter::halve(const LitTriangle& triangle, int depth) const {
    const auto [turned, length] = byLongestEdge(m_domain, triangle);
    if (std::isnan(length)) {
        return;
    }
    const auto& [a, b, c] = turned;
    const LightSteps steps = m_domain.stepsIn(turned);
    const bool isTooLong = length > steps.coarse;
    const bool isLit = isLitAlike(turned);
    if (!isTooLong && !isLit && length <= steps.fine) {
        slice(turned, 0);
        return;
    }
    const LitPoint middle = m_domain.between(a, b, 0.5, LitBy().set());
    const bool isWhole = !isTooLong && isLit && middle.by == a.by;
    if (isWhole || depth >= MOST_HALVINGS) {
        m_take(turned, a.by);
        return;
    }
    if (!isTooLong && length <= steps.fine) {
        slice({a, middle, c}, 0);
        slice({middle, b, c}, 0);
        return;
    }
    halve({a, middle, c}, depth + 1);
    halve({middle, b, c}, depth + 1);
}

void LightCutter::slice(const LitTriangle& triangle, int depth) const {
    if (isLitAlike(triangle) || depth >= MOST_SLICES) {
        m_take(triangle, triangle[0].by);
        return;
    }
    const auto [odd, b, c] = byOddCorner(triangle);
    const auto [insideB, outsideB] = border(odd, b);
    const auto [insideC, outsideC] = border(odd, c);
    m_take({odd, insideB, insideC}, odd.by);
    slice({outsideB, b, c}, depth + 1);
    slice({outsideB, c, outsideC}, depth + 1);
}

std::pair<LitPoint, LitPoint> LightCutter::border(const LitPoint& from, const LitPoint& to) const {
    LitPoint inside = from;
    LitPoint outside = to;
    const LitBy among = from.by | to.by;
    double near = 0;
    double far = 1;
    for (int i = 0; i < BISECTIONS; ++i) {
        const double part = (near + far) / 2;
        const LitPoint middle = m_domain.between(from, to, part, among);
        (middle.by == from.by ? near : far) = part;
        (middle.by == from.by ? inside : outside) = middle;
    }
    // In one place, lest the gap between the two be nobody's: that of the one with more light, which all of its
    // channels still reach.
    (inside.by.count() < outside.by.count() ? inside.on : outside.on) =
        inside.by.count() < outside.by.count() ? outside.on : inside.on;
    return {inside, outside};
}

}  // namespace Veltrani::DisplayReport
