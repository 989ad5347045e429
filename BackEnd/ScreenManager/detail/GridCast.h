#pragma once

#include "Common/Matrix.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/SphereTargetLocator.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <utility>
#include <vector>

/// The grid of targets of a locator whose rays start at an eye point.
namespace Veltrani::ScreenManagerDetail {

using Vector = Point<double, 3>;
using Grid = std::map<Point<int, 2>, Vector>;

inline Matrix<double, 3> orientationOf(const SphereTargetLocatorParams& params) {
    return Veltrani::rotationZXY(params.rotationZ, params.rotationX, params.rotationY);
}

/// The directions (world frame) through the cells of a grid, which covers a part of the frustum.
class CellDirections {
public:
    CellDirections(const SphereTargetLocatorParams& params, double uMin, double uMax, double vMin, double vMax,
                   int columns, int rows)
        : m_orientation(orientationOf(params)) {
        const double left = std::tan(params.angleLeft);
        const double right = std::tan(params.angleRight);
        const double bottom = std::tan(params.angleBottom);
        const double top = std::tan(params.angleTop);
        // Evaluated in this order, so that results match to the last bit.
        m_hStart = left + (right - left) * uMin;
        const double hEnd = right - (1 - uMax) * (right - left);
        const double vLow = bottom + (top - bottom) * vMin;
        m_vHigh = top - (1 - vMax) * (top - bottom);
        m_hStep = (hEnd - m_hStart) / (columns - 1.0);
        m_vStep = (m_vHigh - vLow) / (rows - 1.0);
    }

    /// Each calculated anew: steps that are added up would drift.
    [[nodiscard]] Vector at(int column, int row) const {
        return m_orientation * Vector{m_hStart + column * m_hStep, 1.0, m_vHigh - row * m_vStep};
    }

private:
    Matrix<double, 3> m_orientation;
    double m_hStart = 0;
    double m_hStep = 0;
    double m_vHigh = 0;
    double m_vStep = 0;
};

/// Casts the rays of a grid at a surface column by column, in the order of the map: a map that is filled in another
/// order would leave its memory scattered.
class ColumnwiseCast {
public:
    ColumnwiseCast(const ScreenGeometry& screen, const Vector& eyepoint, const CellDirections& directions)
        : m_screen(screen), m_eyepoint(eyepoint), m_directions(directions) {}

    void cast(int columns, int rows) {
        // Surfaces that gain nothing from more have less to write one by one.
        const std::size_t most = std::min(m_screen.raysAtOnce(), MOST_AT_ONCE);
        if (most > 1) {
            castAtOnce(columns, rows, static_cast<int>(most));
        } else {
            castOneByOne(columns, rows);
        }
    }

    Grid front;
    Grid back;

private:
    /// Bounds the memory for rays and hits, 120 bytes each: they stay in the processor's cache.
    static constexpr std::size_t MOST_AT_ONCE = 8192;
    /// Rays of this many columns have more of a surface in common than as many of one.
    static constexpr int MOST_COLUMNS = 4;
    /// The number of rays, and then of normals, that are calculated before their targets are stored: the processor
    /// works at several together.
    static constexpr int FEW_AT_ONCE = 128;

    struct Answer {
        Vector point;
        Vector direction;
        int row = 0;
        int side = 1;
    };

    void castOneByOne(int columns, int rows) {
        for (int column = 0; column < columns; ++column) {
            for (int row = 0; row < rows;) {
                const int end = row + std::min(FEW_AT_ONCE, rows - row);
                askForPart(column, row, end);
                for (const Answer& answer : m_answers) {
                    add(column, answer.row, answer.point, answer.side);
                }
                row = end;
            }
        }
    }

    void askForPart(int column, int firstRow, int endRow) {
        m_answers.clear();
        for (int row = firstRow; row < endRow; ++row) {
            const Vector to = pointOnRay(column, row);
            const IntersectionSet intersections = m_screen.intersect(m_eyepoint, to);
            if (!intersections.empty()) {
                m_answers.push_back({intersections.first().point, to - m_eyepoint, row});
            }
        }
        for (Answer& answer : m_answers) {
            answer.side = sideOfSurface(answer.direction, m_screen.getScreenNormal(answer.point));
        }
    }

    /// A part of the grid, ends excluded.
    struct Part {
        int firstColumn, endColumn;
        int firstRow, endRow;
    };

    void castAtOnce(int columns, int rows, int most) {
        const int columnsAtOnce = std::clamp(most / rows, 1, MOST_COLUMNS);
        for (int column = 0; column < columns;) {
            const int endColumn = column + std::min(columnsAtOnce, columns - column);
            for (int row = 0; row < rows;) {
                const int endRow = row + std::min(most, rows - row);
                castPart({column, endColumn, row, endRow});
                row = endRow;
            }
            column = endColumn;
        }
        // A mesh remembers its last hit, which is to be that of the last cell in reading order.
        if (m_last.first >= 0) {
            const auto [row, column] = m_last;
            (void)m_screen.intersect(m_eyepoint, pointOnRay(column, row));
        }
    }

    void castPart(const Part& part) {
        m_rays.clear();
        forEachCell(part, [&](int column, int row) { m_rays.emplace_back(m_eyepoint, pointOnRay(column, row)); });
        m_hits.resize(m_rays.size());
        m_screen.intersectRays(m_rays, m_hits);
        auto hit = m_hits.begin();
        forEachCell(part, [&](int column, int row) {
            if (hit->hit) {
                add(column, row, hit->point, hit->side);
                m_last = std::max(m_last, {row, column});
            }
            ++hit;
        });
    }

    template <class Action>
    static void forEachCell(const Part& part, const Action& action) {
        for (int column = part.firstColumn; column < part.endColumn; ++column) {
            for (int row = part.firstRow; row < part.endRow; ++row) {
                action(column, row);
            }
        }
    }

    [[nodiscard]] Vector pointOnRay(int column, int row) const { return m_eyepoint + m_directions.at(column, row); }

    void add(int column, int row, const Vector& target, int side) {
        Grid& grid = side < 0 ? back : front;
        grid.emplace_hint(grid.end(), Point<int, 2>{column, row}, target);
    }

    const ScreenGeometry& m_screen;
    const Vector& m_eyepoint;
    const CellDirections& m_directions;
    std::vector<Ray> m_rays;
    std::vector<SurfaceHit> m_hits;
    std::vector<Answer> m_answers;
    std::pair<int, int> m_last{-1, -1};  ///< row and column of the last hit in reading order; negative: none so far
};

}  // namespace Veltrani::ScreenManagerDetail
