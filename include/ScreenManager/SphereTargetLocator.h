#pragma once

#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/TargetLocator.h"

#include <log4cxx/logger.h>

#pragma GCC diagnostic push
// No virtual destructor in this family: see TargetLocatorParams.
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// A channel described like a camera. Angles in radians, lengths in native units.
struct SphereTargetLocatorParams : TargetLocatorParams {
    /// (measured angle, corrected angle), both growing from entry to entry.
    using HeadingTable = std::vector<std::pair<double, double>>;

    /// All zero, tables empty.
    SphereTargetLocatorParams() = default;
    SphereTargetLocatorParams(const Point<double, 3>& eye, double left, double right, double bottom, double top,
                              double z, double x, double y, HeadingTable pitches, HeadingTable yaws);

    Point<double, 3> eyepoint;  ///< origin of every ray
    double angleLeft = 0.0;     ///< horizontal angle at the channel's u = 0
    double angleRight = 0.0;    ///< horizontal angle at u = 1
    double angleBottom = 0.0;   ///< vertical angle at v = 0
    double angleTop = 0.0;      ///< vertical angle at v = 1
    double rotationZ = 0.0;     ///< the three angles of `Veltrani::rotationZXY`
    double rotationX = 0.0;
    double rotationY = 0.0;
    HeadingTable pitchTable;  ///< bends the headings; empty leaves them
    HeadingTable yawTable;

protected:
    [[nodiscard]] bool equals(const TargetLocatorParams& other) const override;
};

#pragma GCC diagnostic pop

/// Targets where the rays of a camera meet the screen: a dome, or any other surface around an eye.
///
/// The camera looks along +y, x to the right and z up; (h, v) stands for the direction (h, 1, v), turned by
/// `Veltrani::rotationZXY`. h grows evenly between the tangents of the left and the right angle, v between those of the
/// bottom and the top angle. The two tables, when there are any, bend the headings before the rays are cast.
///
/// A faulty table throws `VeltraniException` when a lookup reaches the faulty pair, not earlier.
///
/// Classes derived from this one replace how a ray meets the surface (`intersectWithTargetLocationSurface`) and what
/// the outline is (`calculateBoundaryPoints`); grid and boundary are sampled here. A boundary query writes the memory
/// of the last outline: not safe from two threads at once on one locator.
class SphereTargetLocator : public TargetLocator {
public:
    explicit SphereTargetLocator(const SphereTargetLocatorParams& params);

    /// One ray per cell, v from 0 at the bottom edge of the picture to 1 at its top edge, the first row at vMax; cells
    /// whose ray misses the surface stay empty. Of the two sides of the surface the one that more rays reach gives the
    /// targets, the front on a tie; what the others reach is left out. Targets already in `grid` are kept. A single
    /// column or row is no grid: its step is 0 / 0, and nothing is found. This is intended: callers request two and
    /// more.
    void projectOnTargetLocationSurface(double uMin, double uMax, double vMin, double vMax, int columns, int rows,
                                        std::map<Point<int, 2>, Point<double, 3>>& grid) const override;

    [[nodiscard]] const TargetLocatorParams& getTargetLocatorParams() const override;

    /// Returns the outline from the left top corner clockwise; each edge gives its first corner and `samplesPerEdge` -
    /// 1 samples, evenly spread on the plane of the frustum. The last outline is remembered with its number of samples,
    /// the empty one of a missing screen too, and is not calculated again when the screen changes: a caller that
    /// changes the screen drops the locator.
    std::vector<Point<double, 3>> projectBoundaryOnTargetLocationSurface(int samplesPerEdge) const override;

    /// Returns the ray from the eye through a place of the picture, (0, 0) bottom left to (1, 1) top right, bent by the
    /// tables.
    [[nodiscard]] Ray rayOf(const Point<double, 2>& picture) const;

    /// Places one target, whichever side its ray comes from; returns what `intersectWithTargetLocationSurface` returns.
    /// @param direction from the eye, world frame, any length; the tables bend it here
    std::pair<bool, int> locate(const Point<double, 3>& direction, Point<double, 3>& target) const;

protected:
    /// Returns the outline a -> b -> d -> c -> a on the surface, given by the corners of the frustum (points, not
    /// directions).
    [[nodiscard]] virtual std::vector<Point<double, 3>> calculateBoundaryPoints(Point<double, 3> a, Point<double, 3> b,
                                                                                Point<double, 3> c, Point<double, 3> d,
                                                                                int samplesPerEdge) const;

    /// Appends the rays through the outline a -> b -> d -> c -> a, and the one through the middle of a and d. No
    /// outline when `samplesPerEdge` is zero or less.
    void CreateRays(std::vector<Ray>& boundary, std::vector<Ray>& centre, Point<double, 3> a, Point<double, 3> b,
                    Point<double, 3> c, Point<double, 3> d, int samplesPerEdge) const;

    /// Bends the heading of each ray by the tables; nothing when both are empty.
    void remapRays(std::vector<Ray>& rays) const;

private:
    friend struct ScreenManagerTestAccess;

    using HeadingTable = SphereTargetLocatorParams::HeadingTable;

    static log4cxx::LoggerPtr log;

    /// Returns the direction with its pitch and its yaw looked up; its length is kept. Logs each heading at info.
    static Point<double, 3> remapHeading(const Point<double, 3>& direction, const HeadingTable& pitchTable,
                                         const HeadingTable& yawTable);

    /// Linear between the entries. A value outside of them, the last one included, passes unchanged: it is not clamped.
    static double interpolate(double x, HeadingTable table);

    [[nodiscard]] bool remapsHeadings() const;

    SphereTargetLocatorParams m_params;
    /// The last outline under its samples per edge.
    mutable std::map<int, std::vector<Point<double, 3>>> m_boundaryCache;
};
