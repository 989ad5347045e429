#pragma once

#include "Common/Point.h"
#include "Configuration/UnitConversionTable.h"

#include <libxml/tree.h>

#include <optional>
#include <string>
#include <string_view>

namespace Veltrani::ConfigurationDetail {

/// Reads the values of elements: lengths come out in native units, angles in radians.
///
/// The unit of a value is that of the nearest element around it, itself first, that states one. A value that is not
/// there, is ill-formed, has no unit or leaves the range of a double is no value; a null element has none at all.
class ElementReader {
public:
    explicit ElementReader(UnitConversionTable::UnitSubType native) : m_native(native) {}

    /// Makes a reader with the native unit that a display states; without one when it states none.
    [[nodiscard]] static ElementReader ofDisplay(const xmlNode* root);

    [[nodiscard]] UnitConversionTable::UnitSubType native() const { return m_native; }

    [[nodiscard]] std::optional<std::string> text(const xmlNode* element, const char* attribute) const;
    [[nodiscard]] std::optional<double> number(const xmlNode* element, const char* attribute) const;
    [[nodiscard]] std::optional<double> length(const xmlNode* element, const char* attribute) const;
    [[nodiscard]] std::optional<double> angle(const xmlNode* element, const char* attribute) const;
    [[nodiscard]] std::optional<int> pixels(const xmlNode* element, const char* attribute) const;

    /// Lengths x, y, z; zero where there is none.
    [[nodiscard]] Point<double, 3> position(const xmlNode* element) const;
    /// Angles z, x, y, in this order; zero where there is none.
    [[nodiscard]] Point<double, 3> orientation(const xmlNode* element) const;

    /// Returns a length that is stated in a unit in native units, and an angle in radians; not finite where that leaves
    /// the range of a double.
    [[nodiscard]] double lengthOf(double stated, UnitConversionTable::UnitSubType unit) const;
    [[nodiscard]] static double angleOf(double stated, std::string_view unit);

    /// What the nearest element around states, the element itself first.
    [[nodiscard]] static std::optional<std::string> unitInScope(const xmlNode* element, const char* unitAttribute);

private:
    UnitConversionTable::UnitSubType m_native;
};

}  // namespace Veltrani::ConfigurationDetail
