#include "KelvoScreen/detail/ScreenSampling.h"

#include "KelvoScreen/detail/Rounding.h"

namespace Veltrani::KelvoScreenDetail {

namespace {

/// How many of a group of rays hit the screen along its normal, and how many otherwise.
struct SideCount {
    int front = 0;
    int other = 0;
};

SideCount countSides(const ScreenGeometry& screen, const std::vector<Ray>& rays) {
    SideCount count;
    for (const auto& [from, to] : rays) {
        const IntersectionSet hits = screen.intersect(from, to);
        if (!hits.empty()) {
            const int side = sideOfSurface(to - from, screen.getScreenNormal(hits.first().point));
            ++(side == 1 ? count.front : count.other);
        }
    }
    return count;
}

}  // namespace

void sampleRow(const IScreenGeometry& screen, double y, double xMin, double xMax, int columns, int row,
               ScreenGeometry::Grid& grid, bool extrapolate) {
    for (int i = 0; i < columns; ++i) {
        const double x = columns == 1 ? xMin : ((xMax - xMin) * i) / (columns - 1) + xMin;
        Point<double, 3> sample;
        if (screen.mapInto3D({x, y}, sample, extrapolate)) {
            grid[Point<int, 2>{i, row}] = sample;
        }
    }
}

std::vector<Point<double, 3>> channelBoundary(const ScreenGeometry& screen, const std::vector<Ray>& boundary,
                                              const std::vector<Ray>& centre) {
    SideCount count = countSides(screen, centre);
    if (count.front + count.other == 0) {
        count = countSides(screen, boundary);
    }
    if (count.front + count.other == 0) {
        return {};
    }
    const int sign = count.front > count.other ? 1 : -1;
    std::vector<Point<double, 3>> outline;
    for (const auto& [from, to] : boundary) {
        const IntersectionSet hits = screen.intersectExtrapolatedWithSpecifiedNormal(from, to, sign);
        if (!hits.empty()) {
            outline.push_back(hits.first().point);
        }
    }
    return outline;
}

double snapToEdge(double coordinate) {
    if (coordinate < 0 && coordinate >= -PARAMETER_TOLERANCE) {
        return 0;
    }
    return coordinate > 1 && coordinate <= 1 + PARAMETER_TOLERANCE ? 1 : coordinate;
}

bool storeIfFinite(const Point<double, 3>& point, Point<double, 3>& out) {
    if (!isFinite(point)) {
        return false;
    }
    out = point;
    return true;
}

IntersectionSet keepSide(const IScreenGeometry& screen, const IntersectionSet& hits, const Point<double, 3>& direction,
                         int sign) {
    IntersectionSet kept;
    for (std::size_t i = 0; i < hits.size(); ++i) {
        if (sideOfSurface(direction, screen.getScreenNormal(hits[i].point)) == sign) {
            kept.add(hits[i]);
        }
    }
    return kept;
}

}  // namespace Veltrani::KelvoScreenDetail
