#include "ScreenManager/SphereTargetLocator.h"

#include "Common/Matrix.h"
#include "Common/VeltraniException.h"
#include "Common/VeltraniLogging.h"
#include "ScreenManager/DisplayKinds.h"
#include "ScreenManager/FrustumRays.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/detail/GridCast.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <locale>
#include <memory>
#include <sstream>

log4cxx::LoggerPtr SphereTargetLocator::log = log4cxx::Logger::getLogger(L"Dravix.ScreenManager.SphereTargetLocator");

namespace {

using Veltrani::ScreenManagerDetail::CellDirections;
using Veltrani::ScreenManagerDetail::ColumnwiseCast;
using Veltrani::ScreenManagerDetail::Grid;
using Veltrani::ScreenManagerDetail::orientationOf;
using Veltrani::ScreenManagerDetail::Vector;
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
