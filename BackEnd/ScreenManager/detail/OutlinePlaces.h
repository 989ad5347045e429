#pragma once

#include "Common/Point.h"

#include <vector>

/// The places of a picture that outlines are sampled at, for the kinds of locators that step along their edges.
namespace Veltrani::ScreenManagerDetail {

/// Returns the places along v = 0, u = 1, v = 1 (backwards) and u = 0 (backwards) of a normalised picture, in steps of
/// 1 / `samplesPerEdge` that are added up, so that rounding may give an edge one sample more. None for less than one
/// sample.
[[nodiscard]] std::vector<Point<double, 2>> borderOfPicture(int samplesPerEdge);

/// Returns the border of a pixel space, edge by edge, in whole steps of its size divided by `samplesPerEdge` - 1. None
/// for fewer than two samples, and where an edge has no whole step.
[[nodiscard]] std::vector<Point<double, 2>> borderOfPixels(const Point<int, 2>& resolution, int samplesPerEdge);

}  // namespace Veltrani::ScreenManagerDetail
