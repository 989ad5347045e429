#include "ScreenManager/SphereTargetLocator.h"

#include "Common/Matrix.h"
#include "Common/VeltraniException.h"
#include "Common/VeltraniLogging.h"
#include "ScreenManager/DisplayKinds.h"
#include "ScreenManager/FrustumRays.h"
#include "ScreenManager/ScreenManager.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <locale>
#include <memory>
#include <sstream>

log4cxx::LoggerPtr SphereTargetLocator::log = log4cxx::Logger::getLogger(L"Dravix.ScreenManager.SphereTargetLocator");

namespace {

using Vector = Point<double, 3>;
using Grid = std::map<Point<int, 2>, Vector>;
using HeadingTable = SphereTargetLocatorParams::HeadingTable;

/// Recorded with the faults of a table in place of their own lines: programs that read the logs know them by these.
constexpr int INPUT_FAULT_LINE = 68;
constexpr int OUTPUT_FAULT_LINE = 71;

/// Six significant digits, with a decimal point whatever the locale.
std::wstring text(double value) {
    std::wostringstream stream;
    stream.imbue(std::locale::classic());
    stream << value;
    return stream.str();
}

/// The text of both faults shows the same value, the input of the entry before, twice: intended, programs that compare
/// the texts with those of earlier releases rely on it.
[[noreturn]] void refuseTable(int line, const std::wstring& values, double input, std::size_t index) {
    throw VeltraniException(__FILE__, line,
                            L"Interpolation " + values + L" values must be monotonically increasing but value " +
                                text(input) + L" at index " + std::to_wstring(index) + L" is not greater than " +
                                text(input));
}

/// Checks the table only as far as it is read.
double lookUp(double x, const HeadingTable& table) {
    for (std::size_t i = 0; i + 1 < table.size(); ++i) {
        const auto& [x0, y0] = table[i];
        const auto& [x1, y1] = table[i + 1];
        if (x0 >= x1) {
            refuseTable(INPUT_FAULT_LINE, L"input", x0, i + 1);
        }
        if (y0 >= y1) {
            refuseTable(OUTPUT_FAULT_LINE, L"output", x0, i + 1);
        }
        if (x0 <= x && x < x1) {
            return y0 + (y1 - y0) * ((x - x0) / (x1 - x0));
        }
    }
    return x;
}

Matrix<double, 3> orientationOf(const SphereTargetLocatorParams& params) {
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

/// Moves the targets of the side that more rays reach into a grid; targets that the grid holds already stay.
void takeMajority(Grid& front, Grid& back, Grid& grid) {
    Grid& majority = back.size() > front.size() ? back : front;
    if (grid.empty()) {
        grid.swap(majority);
    } else {
        grid.merge(majority);
    }
}

/// A map that is filled row by row. It is ordered by columns, so that the place of a target is right behind the one
/// above it.
class RowwiseGrid {
public:
    void add(int column, int row, const Vector& target) {
        const auto index = static_cast<std::size_t>(column);
        if (index >= m_lowest.size()) {
            m_lowest.resize(index + 1, grid.end());
        }
        const bool isFirst = m_lowest[index] == grid.end();
        const auto place = isFirst ? grid.lower_bound({column, row}) : std::next(m_lowest[index]);
        m_lowest[index] = grid.emplace_hint(place, Point<int, 2>{column, row}, target);
    }

    Grid grid;

private:
    std::vector<Grid::iterator> m_lowest;  ///< the lowest target of each column; the end where there is none
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

/// One edge without its end.
void addEdge(std::vector<Ray>& rays, const Vector& eyepoint, const Vector& start, const Vector& end, int samples) {
    for (int i = 0; i < samples; ++i) {
        const double t = static_cast<double>(i) / static_cast<double>(samples);
        rays.emplace_back(eyepoint, (1 - t) * start + t * end);
    }
}

}  // namespace

SphereTargetLocatorParams::SphereTargetLocatorParams(const Point<double, 3>& eye, double left, double right,
                                                     double bottom, double top, double z, double x, double y,
                                                     HeadingTable pitches, HeadingTable yaws)
    : eyepoint(eye),
      angleLeft(left),
      angleRight(right),
      angleBottom(bottom),
      angleTop(top),
      rotationZ(z),
      rotationX(x),
      rotationY(y),
      pitchTable(std::move(pitches)),
      yawTable(std::move(yaws)) {}

bool SphereTargetLocatorParams::equals(const TargetLocatorParams& other) const {
    const auto& record = static_cast<const SphereTargetLocatorParams&>(other);
    return eyepoint == record.eyepoint && angleLeft == record.angleLeft && angleRight == record.angleRight &&
           angleBottom == record.angleBottom && angleTop == record.angleTop && rotationZ == record.rotationZ &&
           rotationX == record.rotationX && rotationY == record.rotationY && pitchTable == record.pitchTable &&
           yawTable == record.yawTable;
}

SphereTargetLocator::SphereTargetLocator(const SphereTargetLocatorParams& params) : m_params(params) {}

void SphereTargetLocator::projectOnTargetLocationSurface(double uMin, double uMax, double vMin, double vMax,
                                                         int columns, int rows,
                                                         std::map<Point<int, 2>, Point<double, 3>>& grid) const {
    if (columns <= 0 || rows <= 0) {
        return;
    }
    const CellDirections directions(m_params, uMin, uMax, vMin, vMax, columns, rows);
    // Done only where no caller can notice: for classes derived from this one the operation is called for every ray,
    // and headings are bent, logged and refused in reading order.
    if (LocatorKind::of(*this).rays == LocatorKind::Rays::STRAIGHT && !remapsHeadings()) {
        const std::shared_ptr<ScreenGeometry> screen = ScreenManager::getInstance()->getScreenGeometry();
        if (screen && screen->raysAtOnce() > 0) {
            ColumnwiseCast rays(*screen, m_params.eyepoint, directions);
            rays.cast(columns, rows);
            takeMajority(rays.front, rays.back, grid);
            return;
        }
    }
    RowwiseGrid front;
    RowwiseGrid back;
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            Vector hit;
            const auto [isHit, side] = locate(directions.at(column, row), hit);
            if (isHit) {
                (side < 0 ? back : front).add(column, row, hit);
            }
        }
    }
    takeMajority(front.grid, back.grid, grid);
}

Ray SphereTargetLocator::rayOf(const Point<double, 2>& picture) const {
    std::vector<Ray> rays{{m_params.eyepoint, m_params.eyepoint + FrustumRays(m_params).directionOf(picture)}};
    remapRays(rays);
    return rays.front();
}

std::pair<bool, int> SphereTargetLocator::locate(const Point<double, 3>& direction, Point<double, 3>& target) const {
    const Vector bent = remapsHeadings() ? remapHeading(direction, m_params.pitchTable, m_params.yawTable) : direction;
    return intersectWithTargetLocationSurface(m_params.eyepoint, m_params.eyepoint + bent, target);
}

const TargetLocatorParams& SphereTargetLocator::getTargetLocatorParams() const {
    return m_params;
}

std::vector<Point<double, 3>> SphereTargetLocator::projectBoundaryOnTargetLocationSurface(int samplesPerEdge) const {
    const auto known = m_boundaryCache.find(samplesPerEdge);
    if (known != m_boundaryCache.end()) {
        return known->second;
    }
    m_boundaryCache.clear();
    const Matrix<double, 3> orientation = orientationOf(m_params);
    const auto corner = [&](double horizontalAngle, double verticalAngle) {
        return m_params.eyepoint + orientation * Vector{std::tan(horizontalAngle), 1.0, std::tan(verticalAngle)};
    };
    std::vector<Vector> outline = calculateBoundaryPoints(
        corner(m_params.angleLeft, m_params.angleTop), corner(m_params.angleRight, m_params.angleTop),
        corner(m_params.angleLeft, m_params.angleBottom), corner(m_params.angleRight, m_params.angleBottom),
        samplesPerEdge);
    return m_boundaryCache[samplesPerEdge] = std::move(outline);
}

std::vector<Point<double, 3>> SphereTargetLocator::calculateBoundaryPoints(Point<double, 3> a, Point<double, 3> b,
                                                                           Point<double, 3> c, Point<double, 3> d,
                                                                           int samplesPerEdge) const {
    std::vector<Ray> boundary;
    std::vector<Ray> centre;
    CreateRays(boundary, centre, a, b, c, d, samplesPerEdge);
    remapRays(boundary);
    remapRays(centre);
    const std::shared_ptr<ScreenGeometry> screen = ScreenManager::getInstance()->getScreenGeometry();
    if (!screen) {
        return {};
    }
    return screen->intersectChannelBoundary(boundary, centre);
}

void SphereTargetLocator::CreateRays(std::vector<Ray>& boundary, std::vector<Ray>& centre, Point<double, 3> a,
                                     Point<double, 3> b, Point<double, 3> c, Point<double, 3> d,
                                     int samplesPerEdge) const {
    addEdge(boundary, m_params.eyepoint, a, b, samplesPerEdge);
    addEdge(boundary, m_params.eyepoint, b, d, samplesPerEdge);
    addEdge(boundary, m_params.eyepoint, d, c, samplesPerEdge);
    addEdge(boundary, m_params.eyepoint, c, a, samplesPerEdge);
    centre.emplace_back(m_params.eyepoint, 0.5 * a + 0.5 * d);
}

void SphereTargetLocator::remapRays(std::vector<Ray>& rays) const {
    if (!remapsHeadings()) {
        return;
    }
    for (auto& [origin, point] : rays) {
        point = origin + remapHeading(point - origin, m_params.pitchTable, m_params.yawTable);
    }
}

Point<double, 3> SphereTargetLocator::remapHeading(const Point<double, 3>& direction, const HeadingTable& pitchTable,
                                                   const HeadingTable& yawTable) {
    const double length = norm(direction);
    const double pitch = std::asin(direction[2] / length);
    const double yaw = std::atan2(direction[0] / length, direction[1] / length);
    const double newPitch = lookUp(pitch, pitchTable);
    const double newYaw = lookUp(yaw, yawTable);
    VELTRANI_LOG(log, Info,
                 L"Pitch,Yaw (" + text(pitch) + L"," + text(yaw) + L") mapped to (" + text(newPitch) + L"," +
                     text(newYaw) + L")");
    return {std::sin(newYaw) * std::cos(newPitch) * length, std::cos(newYaw) * std::cos(newPitch) * length,
            std::sin(newPitch) * length};
}

// Passed by value, as the interface has it; headings are looked up without the copy.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
double SphereTargetLocator::interpolate(double x, HeadingTable table) {
    return lookUp(x, table);
}

bool SphereTargetLocator::remapsHeadings() const {
    return !m_params.pitchTable.empty() || !m_params.yawTable.empty();
}
