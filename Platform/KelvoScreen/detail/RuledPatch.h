#pragma once

#include "Common/Point.h"
#include "KelvoScreen/detail/Rounding.h"

#include <array>
#include <cmath>
#include <cstddef>

namespace Veltrani::KelvoScreenDetail {

/// Parameters on a patch: u from the left to the right ruling, v from the lower to the upper edge, both [0, 1] on the
/// patch itself.
struct PatchPlace {
    double u = 0;
    double v = 0;

    [[nodiscard]] bool isAtEnd() const { return u <= 0 || u >= 1 || v <= 0 || v >= 1; }
};

/// The part of a patch, or of its continuation, that counts; ends included.
struct PatchRange {
    double uMin = 0;
    double uMax = 1;
    double vMin = 0;
    double vMax = 1;

    /// Moves a place into the range.
    [[nodiscard]] PatchPlace clamp(const PatchPlace& place) const;
};

/// A line through space.
struct Line {
    Point<double, 3> origin;
    Point<double, 3> direction;  ///< unit
};

/// A point where a line meets a patch.
struct PatchMeeting {
    PatchPlace place;
    Point<double, 3> point;
    double along = 0;  ///< position on the line, a length
};

/// The surface that straight rulings sweep between two straight edges: P(u, v) = (1 - v) lower(u) + v upper(u).
///
/// It is a plane, or a part of a hyperbolic paraboloid when its four corners are not in one plane. Two corners may
/// coincide: the patch is a triangle then. Coordinates are best near the origin: results are exact to rounding of the
/// corners' coordinates.
class RuledPatch {
public:
    RuledPatch(const Point<double, 3>& lowerLeft, const Point<double, 3>& lowerRight, const Point<double, 3>& upperLeft,
               const Point<double, 3>& upperRight);

    [[nodiscard]] Point<double, 3> pointAt(const PatchPlace& place) const;
    /// (d/dv) x (d/du), of unit length: upwards x to the right. At a corner where the patch shrinks to a point, the
    /// normal beside it; zero where there is none at all.
    [[nodiscard]] Point<double, 3> normalAt(const PatchPlace& place) const;
    /// Returns false when all of the patch is one line or one point, to rounding.
    [[nodiscard]] bool hasArea() const;

    /// Returns false when the line passes the patch (not its continuation) at more than `tolerance`.
    [[nodiscard]] bool mayMeet(const Line& line, double tolerance) const;
    /// Returns the places in the range that the line passes within `tolerance`, at most two, in no order; their number
    /// is returned. A line that lies in the patch, to rounding, does not meet it.
    [[nodiscard]] std::size_t meet(const Line& line, const PatchRange& range, double tolerance,
                                   std::array<PatchMeeting, 2>& meetings) const;

    /// Moves a meeting to the corner where the patch shrinks to a point when it is at most `reach` along the line from
    /// there and the line passes the corner within `tolerance`. All patches with that corner then have the same
    /// meeting.
    [[nodiscard]] bool moveToTip(const Line& line, double tolerance, double reach, PatchMeeting& meeting) const;

    /// Returns true when a patch beside this one, behind the right or else the left ruling, is further than `distance`
    /// from a point: all of its corners are, along a direction across that ruling.
    [[nodiscard]] bool isApart(const RuledPatch& other, bool right, const Point<double, 3>& point,
                               double distance) const {
        const Point<double, 3>& ruling = m_rulings[right ? 1 : 0];
        const Point<double, 3> width = (right ? 1.0 : -1.0) * (m_edges[0] + m_edges[1]);
        const Point<double, 3> away = width - (dot(ruling, width) / dot(ruling, ruling)) * ruling;
        const double away2 = dot(away, away);
        const double least = distance * std::sqrt(away2);
        const auto isBeyond = [&](const Point<double, 3>& corner) { return dot(corner - point, away) > least; };
        // Outside these bounds a square loses digits or leaves the range of a double.
        return away2 >= 1e-200 && away2 <= 1e200 && isBeyond(other.m_lower[0]) && isBeyond(other.m_lower[1]) &&
               isBeyond(other.m_upper[0]) && isBeyond(other.m_upper[1]);
    }
    /// Returns a lower bound of the distance from a point to the patch.
    [[nodiscard]] double distanceBound(const Point<double, 3>& point) const;
    /// Returns the place on the patch nearest to a point; the first one found when it is no further away than
    /// `touching`.
    [[nodiscard]] PatchPlace closest(const Point<double, 3>& point, double touching) const;
    /// Finds, from a place near the result, the place in the range where the distance to the point is smallest.
    [[nodiscard]] PatchPlace refineClosest(const Point<double, 3>& point, PatchPlace start,
                                           const PatchRange& range) const;

private:
    [[nodiscard]] Point<double, 3> lowerAt(double u) const;
    [[nodiscard]] Point<double, 3> rulingAt(double u) const;
    [[nodiscard]] Point<double, 3> alongEdge(double v) const;
    /// Completes a meeting at its place; false when the line passes it at more than the tolerance.
    [[nodiscard]] bool passes(const Line& line, double tolerance, PatchMeeting& meeting) const;
    /// Finds, from a root u, the place of the range that the line passes nearest; returns false when there is none
    /// near.
    [[nodiscard]] bool place(const Line& line, double root, const PatchRange& range, PatchPlace& out) const;
    [[nodiscard]] double improvedRoot(const Line& line, double root) const;
    /// Sets v to where the line passes the ruling of u; false when the two are parallel.
    [[nodiscard]] bool passRuling(const Line& line, PatchPlace& place) const;
    /// Used past the end of a ruling: sets u to where the line passes the edge of v.
    void passEdge(const Line& line, const PatchRange& range, PatchPlace& place) const;
    [[nodiscard]] double distance2(const Point<double, 3>& point, const PatchPlace& place) const;
    [[nodiscard]] double closestOnRuling(const Point<double, 3>& point, double u, const PatchRange& range) const;
    /// Sets the place of a point that is no further than `touching` from the patch; may fail to see that it is.
    [[nodiscard]] bool liesOn(const Point<double, 3>& point, double touching, PatchPlace& place) const;
    /// How the distance to the rulings changes at u, in parts of the distance.
    [[nodiscard]] double slopeAcross(const Point<double, 3>& point, double u, const PatchRange& range) const;
    /// Returns the ruling between two where that slope turns from falling to rising.
    [[nodiscard]] double turnOfSlope(const Point<double, 3>& point, double falling, double rising,
                                     const PatchRange& range) const;
    [[nodiscard]] double closestOnRow(const Point<double, 3>& point, double v, const PatchRange& range) const;
    /// Returns the next place in search of the nearest one; it may lie outside of the range.
    /// @param twistWeight 1 for Newton's step, 0 for one that leaves the twist out
    [[nodiscard]] PatchPlace newtonStep(const Point<double, 3>& point, const PatchPlace& at, const PatchRange& range,
                                        double twistWeight) const;
    /// Returns a place that is nearer than `from`, unless `from` is a minimum.
    [[nodiscard]] PatchPlace descend(const Point<double, 3>& point, const PatchPlace& from,
                                     const PatchRange& range) const;

    std::array<Point<double, 3>, 2> m_lower;  ///< left, right
    std::array<Point<double, 3>, 2> m_upper;
    std::array<Point<double, 3>, 2> m_rulings;  ///< left, right, from the lower to the upper edge
    std::array<Point<double, 3>, 2> m_edges;    ///< lower, upper, from left to right
    Point<double, 3> m_twist;                   ///< how the ruling changes from left to right; zero for a parallelogram
    Point<double, 3> m_centre;
    double m_radius = 0;  ///< of a ball around the centre that holds the patch
};

inline Point<double, 3> RuledPatch::pointAt(const PatchPlace& place) const {
    const Point<double, 3> upper = (1 - place.u) * m_upper[0] + place.u * m_upper[1];
    return (1 - place.v) * lowerAt(place.u) + place.v * upper;
}

inline double RuledPatch::distanceBound(const Point<double, 3>& point) const {
    return norm(point - m_centre) - m_radius;
}

inline bool RuledPatch::mayMeet(const Line& line, double tolerance) const {
    const Point<double, 3> offset = m_centre - line.origin;
    const Point<double, 3> across = offset - dot(offset, line.direction) * line.direction;
    const double reach = m_radius * (1 + ROUNDING) + tolerance;
    return dot(across, across) <= reach * reach;
}

inline Point<double, 3> RuledPatch::lowerAt(double u) const {
    // In this form the ends are the corners to the last bit, so that neighbours meet without a gap.
    return (1 - u) * m_lower[0] + u * m_lower[1];
}

inline Point<double, 3> RuledPatch::rulingAt(double u) const {
    return (1 - u) * m_rulings[0] + u * m_rulings[1];
}

inline Point<double, 3> RuledPatch::alongEdge(double v) const {
    return (1 - v) * m_edges[0] + v * m_edges[1];
}

}  // namespace Veltrani::KelvoScreenDetail
