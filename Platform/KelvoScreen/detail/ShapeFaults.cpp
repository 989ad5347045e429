#include "KelvoScreen/detail/ShapeFaults.h"

#include "KelvoScreen/detail/Rounding.h"
#include "KelvoScreen/detail/SurfaceLimits.h"

#include <charconv>
#include <cmath>
#include <iterator>
#include <numbers>

namespace Veltrani::KelvoScreenDetail {

namespace {

constexpr double POLE = std::numbers::pi / 2;

/// Six significant digits, in every locale.
std::wstring text(double value) {
    constexpr int DIGITS = 6;
    char buffer[32];
    const auto end = std::to_chars(std::begin(buffer), std::end(buffer), value, std::chars_format::general, DIGITS).ptr;
    return {std::begin(buffer), end};
}

std::wstring degrees(double radians) {
    return text(radians * 180 / std::numbers::pi);
}

std::wstring range(double min, double max) {
    return L" run from " + degrees(min) + L" to " + degrees(max) + L" deg, expected ";
}

}  // namespace

std::wstring firstFault(std::initializer_list<std::wstring> faults) {
    for (const std::wstring& fault : faults) {
        if (!fault.empty()) {
            return fault;
        }
    }
    return {};
}

std::wstring faultOfPlace(const Point<double, 3>& centre, const Point<double, 3>& orientation) {
    if (!isFinite(centre)) {
        return L"a coordinate of its centre is not finite: correct its Centre";
    }
    return isFinite(orientation) ? L"" : L"an angle of its orientation is not finite: correct its Orientation";
}

std::wstring faultOfLength(const std::wstring& name, double value) {
    return value > 0 && std::isfinite(value)
               ? L""
               : L"its " + name + L" is " + text(value) + L", expected a length above 0: correct its " + name;
}

std::wstring faultOfSize(const std::wstring& name, double value) {
    const std::wstring fault = faultOfLength(name, value);
    return !fault.empty() || std::isnormal(value * value)
               ? fault
               : L"its " + name + L" of " + text(value) + L" has no square that a number can hold: correct its " +
                     name + L" or the unit";
}

std::wstring faultOfRadius(double radius, const Point<double, 3>& centre) {
    const std::wstring fault = faultOfSize(L"radius", radius);
    const double smallest = SMALLEST_IN_ROUNDINGS * ROUNDING * largestComponent(centre);
    return !fault.empty() || radius > smallest
               ? fault
               : L"its radius of " + text(radius) + L" is lost in the rounding of its centre, expected more than " +
                     text(smallest) + L": correct its radius or move the display to the origin";
}

std::wstring faultOfAzimuths(double min, double max) {
    return AzimuthSector::isRange(min, max)
               ? L""
               : L"its azimuths" + range(min, max) + L"growing ones, one turn at most: correct its Azimuth";
}

std::wstring faultOfElevations(double min, double max) {
    const bool isRange = min >= -POLE - ANGLE_TOLERANCE && max <= POLE + ANGLE_TOLERANCE && min < max;
    return isRange
               ? L""
               : L"its elevations" + range(min, max) + L"growing ones from -90 to 90 at most: correct its Elevation";
}

}  // namespace Veltrani::KelvoScreenDetail
