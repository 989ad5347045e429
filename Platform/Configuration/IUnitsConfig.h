#pragma once

#include <string>

/// The native length unit of the display: the unit of the world frame and of every length that the configuration
/// returns.
class IUnitsConfig {
public:
    virtual ~IUnitsConfig() = default;

    /// A name that `UnitConversionTable` knows, such as "m".
    [[nodiscard]] virtual std::wstring getUnitName() const = 0;
};
