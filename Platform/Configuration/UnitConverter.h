#pragma once

#include "Configuration/UnitConversionTable.h"

/// Converts lengths into the native unit of a display.
///
/// The first argument names the sub-type that carries no length of its own (5, "custom"), the other two are the
/// sub-types that stand for "none"; together they select the length conversion `UnitConverter<5, 0, 5>`, the only one
/// there is.
template <int CustomUnit, int NoUnit, int NativeCustomUnit>
class UnitConverter {
    static_assert(CustomUnit == UnitConversionTable::UNIT_CUSTOM && NoUnit == UnitConversionTable::UNIT_NONE &&
                      NativeCustomUnit == UnitConversionTable::UNIT_CUSTOM,
                  "lengths are the only quantity with a conversion");

public:
    using UnitSubType = UnitConversionTable::UnitSubType;

    /// @param native unit of the results
    /// @param power exponent of the length: 1 for lengths, 2 for areas, 3 for volumes
    explicit UnitConverter(const UnitSubType& native, int power = 1) : m_native(native), m_power(power) {}

    /// `value`, given in `target` units, in native units: value * (metres per target unit) / (metres per native unit).
    /// The factor is 1 when either unit has no length of its own (none, unknown or "custom").
    [[nodiscard]] double getNativeFromTarget(const double& value, const UnitSubType& target) const {
        const double metresPerTarget = UnitConversionTable::metresPer(target);
        const double metresPerNative = UnitConversionTable::metresPer(m_native);
        double converted = value;
        if (metresPerTarget > 0.0 && metresPerNative > 0.0) {
            for (int i = 0; i < m_power; ++i) {
                converted = converted * metresPerTarget / metresPerNative;
            }
        }
        return converted;
    }

private:
    UnitSubType m_native;
    int m_power;
};
