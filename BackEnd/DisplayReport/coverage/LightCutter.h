#pragma once

#include "DisplayReport/coverage/SurfacePoint.h"

#include <functional>
#include <utility>

namespace Veltrani::DisplayReport {

/// How closely the light is looked at, in the distances of a domain.
struct LightSteps {
    double coarse = 0;  ///< edges are halved until they are no longer than this
    double fine = 0;    ///< the same where light ends
};

/// What a `LightCutter` cuts.
class LitDomain {
public:
    virtual ~LitDomain() = default;

    /// The steps for a triangle and everything in it; they are requested again for its halves.
    [[nodiscard]] virtual LightSteps stepsIn(const LitTriangle& triangle) const = 0;

    /// The point at a part (0 to 1) of the way from one point to another, and the light on it of those channels that
    /// are requested.
    [[nodiscard]] virtual LitPoint between(const LitPoint& from, const LitPoint& to, double part,
                                           const LitBy& among) const = 0;
    /// The distance that the steps are measured in.
    [[nodiscard]] virtual double distance(const LitPoint& a, const LitPoint& b) const = 0;
};

/// Cuts triangles into pieces that are lit by the same channels all over, for areas that are exact where the light is
/// bounded by straight lines and right to second order where it is bounded by curves.
///
/// A triangle is halved, a long sliver cut across, until its edges are short enough to see the light, then, where light
/// ends in it, until they are short enough to take the border for straight; there the border is searched on the edges
/// by bisection and the triangle is cut along it. What is smaller than a coarse step may be overlooked. Triangles
/// without a finite extent yield no pieces.
class LightCutter {
public:
    /// Receives a piece and the channels that light it. Its corners may be marked otherwise: they stand on the border.
    using Take = std::function<void(const LitTriangle& piece, const LitBy& by)>;

    /// @param domain must outlive the cutter
    LightCutter(const LitDomain& domain, Take take);

    void cut(const LitTriangle& triangle) const;

private:
    void halve(const LitTriangle& triangle, int depth) const;
    /// The pieces of a triangle whose longest edge comes first, cut across into so many steps and one more at most.
    /// @param foot where on that edge the corner opposite stands, 0 to 1
    void cutAcross(const LitTriangle& triangle, double foot, double steps, int depth) const;
    void slice(const LitTriangle& triangle, int depth) const;
    /// The border on the way from a point to another, once with the light as at `from`, once with that behind it. Only
    /// the channels of the two ends are examined: another one that lights less than a fine step is none of both.
    [[nodiscard]] std::pair<LitPoint, LitPoint> border(const LitPoint& from, const LitPoint& to) const;

    const LitDomain& m_domain;
    Take m_take;
};

}  // namespace Veltrani::DisplayReport
