#pragma once

#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/TriangleMesh.h"

#include <vector>

/// Outlines of projectors, and what is asked of them.
namespace outlines {

/// The boundary rays of a projector at `eye` that looks forward (+y): those of the rectangle around the mesh in its
/// picture, widened on every side by a part of its width. All of the mesh is in front of the eye.
[[nodiscard]] std::vector<Ray> pictureAround(const TriangleMesh& mesh, const Point<double, 3>& eye, double widening);

/// (azimuth, elevation) of points as seen from a centre.
[[nodiscard]] std::vector<Point<double, 2>> unrolled(const std::vector<Point<double, 3>>& points,
                                                     const Point<double, 3>& centre);

/// How many pairs of sides of a closed polygon cross.
[[nodiscard]] int crossings(const std::vector<Point<double, 2>>& polygon);

/// The longest, and the median, side of a closed polygon.
[[nodiscard]] double largestStep(const std::vector<Point<double, 3>>& polygon);
[[nodiscard]] double medianStep(const std::vector<Point<double, 3>>& polygon);

/// The distance of a point from the edges of a screen: from the nearest of many points on them.
[[nodiscard]] double distanceFromEdges(const ScreenGeometry& screen, const Point<double, 3>& point);

}  // namespace outlines
