#pragma once

#include "Common/Point.h"

#include <initializer_list>
#include <string>

/// Why the numbers of a shape describe no surface. Each function returns a text that names the number, what is expected
/// and the element to correct, and an empty one where the number is right.
namespace Veltrani::KelvoScreenDetail {

/// Returns the first text that is not empty; empty when all are.
[[nodiscard]] std::wstring firstFault(std::initializer_list<std::wstring> faults);

/// Centre and orientation must be finite.
[[nodiscard]] std::wstring faultOfPlace(const Point<double, 3>& centre, const Point<double, 3>& orientation);

/// A length must be finite and above zero.
/// @param name what the shape has, "height"
[[nodiscard]] std::wstring faultOfLength(const std::wstring& name, double value);

/// A size must be valid as a length; its square must be a normal number, too.
[[nodiscard]] std::wstring faultOfSize(const std::wstring& name, double value);

/// A radius must be valid as a size, and large enough beside the coordinates of the centre not to be lost in their
/// rounding.
[[nodiscard]] std::wstring faultOfRadius(double radius, const Point<double, 3>& centre);

/// Limits in radians: growing, by one turn at most.
[[nodiscard]] std::wstring faultOfAzimuths(double min, double max);

/// Limits in radians: growing, from pole to pole at most.
[[nodiscard]] std::wstring faultOfElevations(double min, double max);

}  // namespace Veltrani::KelvoScreenDetail
