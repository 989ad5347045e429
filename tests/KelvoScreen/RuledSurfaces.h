#pragma once

#include "support/ScreenConfigDouble.h"

#include <string>
#include <utility>
#include <vector>

/// Ruled surfaces of every kind that a patch can be of.
namespace ruled {

/// A cockpit screen of seven twisted patches around the origin, its upper rail shifted and wider than the lower one.
[[nodiscard]] ScreenConfigDouble cockpit();
/// One twisted patch: z = x y / 2 over [-1, 1] x [-1, 1], as rails along y = -1 and y = 1.
[[nodiscard]] ScreenConfigDouble saddle();
/// One upright plane patch whose rulings are not parallel.
[[nodiscard]] ScreenConfigDouble trapezoid();
/// An upright rectangle, 4 by 2, centred on (0, 5, 1): what a flat screen would be.
[[nodiscard]] ScreenConfigDouble rectangle();
/// A cone: all points of the upper rail are one.
[[nodiscard]] ScreenConfigDouble cone();
/// Two patches that taper to a point at either end, where both rails meet.
[[nodiscard]] ScreenConfigDouble sail();
/// A closed ring of eight patches whose last ruling is the first one.
[[nodiscard]] ScreenConfigDouble ring();

[[nodiscard]] std::vector<std::pair<std::string, ScreenConfigDouble>> surfaces();
[[nodiscard]] ScreenConfigDouble scaled(ScreenConfigDouble config, double factor);
/// s at every ruling that joins two points of the rails: by the mean length of both rails up to there.
[[nodiscard]] std::vector<double> seams(const ScreenConfigDouble& config);

}  // namespace ruled
