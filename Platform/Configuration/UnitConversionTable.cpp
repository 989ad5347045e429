#include "Configuration/UnitConversionTable.h"

#include <array>
#include <string_view>

namespace {

struct Unit {
    UnitConversionTable::UnitSubType type;
    std::wstring_view name;
    double metres;
};

// The inch is 25.4 mm exactly and the foot twelve of them (international yard and pound agreement, 1959).
constexpr std::array<Unit, 6> UNITS{{{UnitConversionTable::UNIT_MM, L"mm", 0.001},
                                     {UnitConversionTable::UNIT_CM, L"cm", 0.01},
                                     {UnitConversionTable::UNIT_M, L"m", 1.0},
                                     {UnitConversionTable::UNIT_INCH, L"in", 0.0254},
                                     {UnitConversionTable::UNIT_CUSTOM, L"custom", 0.0},
                                     {UnitConversionTable::UNIT_FOOT, L"ft", 0.3048}}};

}  // namespace

UnitConversionTable::UnitSubType UnitConversionTable::getUnitSubTypeFromName(const std::wstring& name) {
    for (const Unit& unit : UNITS) {
        if (unit.name == name) {
            return unit.type;
        }
    }
    return UNIT_NONE;
}

double UnitConversionTable::metresPer(UnitSubType unit) {
    for (const Unit& known : UNITS) {
        if (known.type == unit) {
            return known.metres;
        }
    }
    return 0.0;
}
