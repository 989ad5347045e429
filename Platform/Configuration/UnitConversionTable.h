#pragma once

#include <string>

/// The length units that a configuration can name.
class UnitConversionTable {
public:
    UnitConversionTable() = delete;

    enum UnitSubType : int {
        UNIT_NONE = 0,  ///< none, or a name that is not known
        UNIT_MM = 1,
        UNIT_CM = 2,
        UNIT_M = 3,
        UNIT_INCH = 4,    ///< "in"
        UNIT_CUSTOM = 5,  ///< "custom": the screen states its own scale
        UNIT_FOOT = 6,    ///< "ft"
    };

    /// Returns the unit of a name, compared exactly; `UNIT_NONE` for an unknown one.
    [[nodiscard]] static UnitSubType getUnitSubTypeFromName(const std::wstring& name);

    /// Metres per unit; 0.0 for `UNIT_NONE`, `UNIT_CUSTOM` and values outside the table, which have no length of their
    /// own.
    [[nodiscard]] static double metresPer(UnitSubType unit);
};
