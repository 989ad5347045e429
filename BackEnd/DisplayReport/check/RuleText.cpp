#include "DisplayReport/check/RuleText.h"

#include "DisplayReport/basics/NumberText.h"

#include <cmath>
#include <numbers>

namespace Veltrani::DisplayReport {

namespace {

constexpr double TENTHS = 10.0;

std::string inTenths(double value) {
    return roundedText(std::round(value * TENTHS) / TENTHS);
}

}  // namespace

std::string degreesText(double radians) {
    return inTenths(radians * 180.0 / std::numbers::pi);
}

std::string percentText(double part) {
    const double percent = part * 100.0;
    return (percent < TENTHS ? inTenths(percent) : roundedText(std::round(percent))) + " %";
}

std::string lengthText(double length, const std::string& unit) {
    // A millimetre is enough of a metre; of a millimetre and less, five digits are shown.
    return (std::abs(length) >= 1.0 ? roundedText(length) : significantText(length)) + (unit.empty() ? "" : " " + unit);
}

std::string sidewaysText(double radiansToTheRight) {
    return degreesText(std::abs(radiansToTheRight)) + " degrees to the " + (radiansToTheRight < 0 ? "left" : "right");
}

}  // namespace Veltrani::DisplayReport
