#pragma once

#include <string>

/// Numbers as findings name them.
namespace Veltrani::DisplayReport {

/// Degrees, rounded to a tenth: "41", "0.9".
[[nodiscard]] std::string degreesText(double radians);
/// "62 %", rounded to a whole number; a tenth below 10.
[[nodiscard]] std::string percentText(double part);
/// "1.5 m"; the number alone where the unit has no name.
[[nodiscard]] std::string lengthText(double length, const std::string& unit);
/// "41 degrees to the right"; "to the left" below zero.
[[nodiscard]] std::string sidewaysText(double radiansToTheRight);

}  // namespace Veltrani::DisplayReport
