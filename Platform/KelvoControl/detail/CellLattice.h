#pragma once

#include "Common/Point.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace Veltrani::KelvoControlDetail {

/// Returns a part of an edge or of a cell, brought into 0 to 1. NaN becomes 0: where a row of the cell is one point,
/// any place in the row is that point.
[[nodiscard]] inline double toPart(double value) {
    return value > 0 ? std::min(value, 1.0) : 0.0;
}

/// A cell between four nodes, bilinear inside: (a, b) = (0, 0), (1, 0), (0, 1), (1, 1) at the nodes. Along an edge only
/// its two nodes matter, so that neighbours meet without a gap.
struct QuadCell {
    Point<double, 2> origin;
    Point<double, 2> alongA;  ///< the node at (1, 0)
    Point<double, 2> alongB;  ///< the node at (0, 1)
    Point<double, 2> across;  ///< the node at (1, 1)

    [[nodiscard]] Point<double, 2> at(double a, double b) const {
        const double restA = 1 - a;
        const double restB = 1 - b;
        return {restB * (restA * origin[0] + a * alongA[0]) + b * (restA * alongB[0] + a * across[0]),
                restB * (restA * origin[1] + a * alongA[1]) + b * (restA * alongB[1] + a * across[1])};
    }

    /// Returns true for a point in the box around the cell, grown by `margin` on every side. False for NaN.
    [[nodiscard]] bool boxHolds(const Point<double, 2>& point, const Point<double, 2>& margin) const {
        return boxHolds(point, margin, 0) && boxHolds(point, margin, 1);
    }

    /// Calls `accept` with the place that is nearest to a point on each of the four edges, in turn.
    /// @param unit by axis, above zero: what distances are measured in
    /// @param accept Point<double, 2> -> bool; true ends the search
    /// @return true when a place was accepted
    template <class Accept>
    bool anyEdgePlaceOf(const Point<double, 2>& point, const Point<double, 2>& unit, const Accept& accept) const {
        const auto part = [&](const Point<double, 2>& from, const Point<double, 2>& to) {
            const Point<double, 2> edge{(to[0] - from[0]) / unit[0], (to[1] - from[1]) / unit[1]};
            const Point<double, 2> way{(point[0] - from[0]) / unit[0], (point[1] - from[1]) / unit[1]};
            return toPart(dot(way, edge) / dot(edge, edge));
        };
        return accept(Point<double, 2>{part(origin, alongA), 0.0}) ||
               accept(Point<double, 2>{part(alongB, across), 1.0}) ||
               accept(Point<double, 2>{0.0, part(origin, alongB)}) ||
               accept(Point<double, 2>{1.0, part(alongA, across)});
    }

private:
    [[nodiscard]] bool boxHolds(const Point<double, 2>& point, const Point<double, 2>& margin, std::size_t i) const {
        const double low = std::min(std::min(origin[i], alongA[i]), std::min(alongB[i], across[i]));
        const double high = std::max(std::max(origin[i], alongA[i]), std::max(alongB[i], across[i]));
        return point[i] >= low - margin[i] && point[i] <= high + margin[i];
    }
};

/// The way back from a point to the places in a cell. What depends on the cell alone is calculated once.
class QuadInverse {
public:
    explicit QuadInverse(const QuadCell& cell)
        : m_origin(cell.origin),
          m_e(cell.alongA - cell.origin),
          m_f(cell.alongB - cell.origin),
          m_g(cell.origin - cell.alongA - cell.alongB + cell.across),
          m_area(turn(m_e, m_f)),
          m_k2(turn(m_g, m_f)) {}

    /// Calls `accept` with the places (a, b) where the bilinear formula, continued beyond the cell, takes a value: at
    /// most two, the one that belongs to a cell without folds first, and none for a point beyond the fold of another. A
    /// place may be NaN, where a whole row of the cell is one point or the cell is flat.
    /// @param accept Point<double, 2> -> bool; true ends the search
    /// @return true when a place was accepted
    template <class Accept>
    bool anyPlaceOf(const Point<double, 2>& point, const Accept& accept) const {
        return anyPlaceOf(point, accept, Beyond::NOTHING);
    }

    /// As `anyPlaceOf`, and beyond a fold also with a place on it, whose value is not the point: rounding alone may
    /// have carried the point there. `accept` has to judge how far away it is.
    template <class Accept>
    bool anyPlaceUpToFold(const Point<double, 2>& point, const Accept& accept) const {
        return anyPlaceOf(point, accept, Beyond::FOLD);
    }

private:
    /// What is done where the formula takes no value: whether the place on the fold is tried.
    enum class Beyond { NOTHING, FOLD };

    template <class Accept>
    bool anyPlaceOf(const Point<double, 2>& point, const Accept& accept, Beyond beyond) const {
        const Point<double, 2> h = point - m_origin;
        // b solves (e + g b) x (h - f b) = 0 and a likewise (f + g a) x (h - e a) = 0: quadratic equations with one
        // discriminant, written so that nothing cancels.
        const double twist = turn(h, m_g);
        const double k1 = twist + m_area;
        const double k0 = turn(h, m_e);
        const double discriminant = k1 * k1 - 4 * k0 * m_k2;
        if (discriminant < 0 && beyond == Beyond::NOTHING) {
            return false;
        }
        const double root = std::copysign(std::sqrt(std::max(discriminant, 0.0)), k1);
        const double q = -0.5 * (k1 + root);
        const double first = k0 / q;
        // Where the twist outweighs the area, the direct formula for a would cancel.
        const bool isCalm = std::abs(twist) < std::abs(m_area);
        if (accept(isCalm ? Point<double, 2>{turn(h, m_f) / (-0.5 * (twist - m_area - root)), first}
                          : inRow(h, first))) {
            return true;
        }
        return m_k2 != 0 && accept(inRow(h, q / m_k2));
    }

    /// Returns the place in the row at b that is nearest to the point.
    [[nodiscard]] Point<double, 2> inRow(const Point<double, 2>& h, double b) const {
        const Point<double, 2> row = m_e + m_g * b;
        return {dot(h - m_f * b, row) / dot(row, row), b};
    }

    [[nodiscard]] static double turn(const Point<double, 2>& p, const Point<double, 2>& q) {
        return p[0] * q[1] - p[1] * q[0];
    }

    Point<double, 2> m_origin;
    Point<double, 2> m_e;
    Point<double, 2> m_f;
    Point<double, 2> m_g;
    double m_area;
    double m_k2;
};

/// Returns true for a place (a, b) in the cell or on its edge; false for NaN.
[[nodiscard]] inline bool isInCell(const Point<double, 2>& place) {
    return place[0] >= 0 && place[0] <= 1 && place[1] >= 0 && place[1] <= 1;
}

/// Nodes in rows and columns, column fastest, and the cells between them. Every node has a place in two planes: the
/// picture and the screen.
struct CellLattice {
    std::size_t columns = 0;                ///< nodes in a row, at least 2
    std::size_t rows = 0;                   ///< at least 2
    std::vector<Point<double, 2>> picture;  ///< columns * rows, pixels
    std::vector<Point<double, 2>> screen;   ///< columns * rows, (s, t)
    std::vector<bool> unused;               ///< columns * rows; cells at such a node map nothing

    /// Returns true when none of the four nodes of a cell is unused; 0 <= column < columns - 1, the row likewise.
    [[nodiscard]] bool isMapped(std::size_t column, std::size_t row) const {
        const std::size_t node = row * columns + column;
        return !(unused[node] || unused[node + 1] || unused[node + columns] || unused[node + columns + 1]);
    }

    /// Returns the cell whose first node this is, in one of the two planes.
    [[nodiscard]] QuadCell cell(const std::vector<Point<double, 2>>& plane, std::size_t node) const {
        return {plane[node], plane[node + 1], plane[node + columns], plane[node + columns + 1]};
    }
};

/// A place in a lattice: a cell and where in it.
struct CellPlace {
    std::size_t node = 0;  ///< the cell's first node
    double a = 0;          ///< across the cell, 0 to 1
    double b = 0;          ///< along the cell, 0 to 1
};

}  // namespace Veltrani::KelvoControlDetail
