#include "DisplayReport/coverage/LightCutter.h"

#include <algorithm>
#include <array>
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

/// The longest edge by the height over it. Halved again and again, a sliver falls into three per length of a step and
/// more, since each half keeps a long edge; cut across, into two.
constexpr double SLIVER = 8;
/// Pieces are cut a little shorter than a step, lest their diagonals be longer.
constexpr double SHORTER = 1.01;
/// A bound for steps that are none.
constexpr double MOST_ACROSS = 1 << 20;

/// The edges of a triangle that is turned so that the longest one comes first.
struct Edges {
    double ab = 0;
    double bc = 0;
    double ca = 0;

    /// Where on the longest edge the corner opposite stands, 0 to 1.
    [[nodiscard]] double foot() const { return std::clamp((ab * ab + ca * ca - bc * bc) / (2 * ab * ab), 0.0, 1.0); }
    [[nodiscard]] double height() const {
        const double along = foot() * ab;
        return std::sqrt(std::max(0.0, ca * ca - along * along));
    }
};

/// The corners turned so that the longest edge comes first.
std::pair<LitTriangle, Edges> byLongestEdge(const LitDomain& domain, const LitTriangle& triangle) {
    std::array<double, 3> edges{};
    for (std::size_t i = 0; i < 3; ++i) {
        edges[i] = domain.distance(triangle[i], triangle[(i + 1) % 3]);
    }
    const auto longest = static_cast<std::size_t>(std::max_element(edges.begin(), edges.end()) - edges.begin());
    const auto turned = [longest](std::size_t i) { return (longest + i) % 3; };
    return {{triangle[turned(0)], triangle[turned(1)], triangle[turned(2)]},
            {edges[turned(0)], edges[turned(1)], edges[turned(2)]}};
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
    const auto [turned, edges] = byLongestEdge(m_domain, triangle);
    const double length = edges.ab;
    if (!std::isfinite(edges.ab + edges.bc + edges.ca)) {
        return;
    }
    const auto& [a, b, c] = turned;
    const LightSteps steps = m_domain.stepsIn(turned);
    const bool isTooLong = length > steps.coarse;
    const bool isLit = isLitAlike(turned);
    if (isTooLong && SLIVER * edges.height() < length && depth < MOST_HALVINGS) {
        // No shorter than wide: as the others, these pieces are halved then.
        cutAcross(turned, edges.foot(), SHORTER * length / std::max(steps.coarse, edges.height()), depth);
        return;
    }
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

void LightCutter::cutAcross(const LitTriangle& triangle, double foot, double steps, int depth) const {
    const auto& [a, b, c] = triangle;
    // Towards the corner opposite, and from there on.
    for (const bool isFirst : {true, false}) {
        const LitPoint& tip = isFirst ? a : b;
        const double start = isFirst ? 0.0 : 1.0;
        // A foot that is no number cuts nothing.
        const auto count =
            static_cast<int>(std::ceil(std::fmin(std::fmax(std::abs(foot - start) * steps, 0), MOST_ACROSS)));
        LitPoint along = tip;
        LitPoint beside = tip;
        for (int i = 1; i <= count; ++i) {
            const double part = static_cast<double>(i) / count;
            const LitPoint nextBeside = i < count ? m_domain.between(tip, c, part, LitBy().set()) : c;
            const LitPoint nextAlong = m_domain.between(a, b, start + (foot - start) * part, LitBy().set());
            halve({along, nextAlong, nextBeside}, depth + 1);
            if (i > 1) {
                halve({along, nextBeside, beside}, depth + 1);
            }
            along = nextAlong;
            beside = nextBeside;
        }
    }
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
    // In one place, lest the gap between the two belong to neither: in that of the one with more light, which all of
    // its channels still reach.
    (inside.by.count() < outside.by.count() ? inside.on : outside.on) =
        inside.by.count() < outside.by.count() ? outside.on : inside.on;
    return {inside, outside};
}

}  // namespace Veltrani::DisplayReport
