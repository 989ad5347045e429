#pragma once

#include "Configuration/detail/ValueText.h"

#include <string>
#include <string_view>

namespace Veltrani::ConfigurationDetail {

/// The kinds of value that an attribute of the configuration can have.
enum class ValueType {
    TEXT,             ///< anything, nothing included
    NON_EMPTY_TEXT,   ///< anything but nothing
    MODEL_NAME,       ///< text without a colon: the colon parts the name of a projection model from its file
    NUMBER,           ///< finite
    POSITIVE_NUMBER,  ///< finite, above zero
    LENGTH,           ///< a number in the unit of `lengthUnit`
    POSITIVE_LENGTH,  ///< a length above zero
    ANGLE,            ///< a number in the unit of `angleUnit`
    PIXEL_COUNT,      ///< a whole number above zero
    FOUR_BYTES,       ///< four whole numbers from 0 to 255
    VERSION,          ///< of the format
    NATIVE_UNIT,      ///< unit of the world: a length unit or "custom"
    FILE_UNIT,        ///< unit of mesh and cloud files: the same names
    LENGTH_UNIT,      ///< unit of the lengths below: the same names
    ANGLE_UNIT,       ///< "deg" or "rad"
    SHAPE,            ///< `BaseConfig::SHAPE_*`
    TARGET_DATA,      ///< `BaseConfig::TARGET_DATA_*`
    AXIS,             ///< X, -X, Y, -Y, Z or -Z
};

/// Returns whether a text has the form of the type. `WRONG_FORM` is returned for words that are none of the choices,
/// too; `OUT_OF_RANGE` for a number of the right form that the type cannot hold.
[[nodiscard]] NumberState checkValue(ValueType type, std::string_view text);

/// What a message names as expected.
[[nodiscard]] std::string expectedValue(ValueType type);

[[nodiscard]] bool isLength(ValueType type);
[[nodiscard]] bool isPositive(ValueType type);

/// Whether limits of an azimuth are at most one turn apart, and whether an elevation lies between the poles; radians.
[[nodiscard]] bool isWithinOneTurn(double min, double max);
[[nodiscard]] bool isElevation(double angle);

/// Degrees and radians.
inline constexpr std::string_view DEGREES = "deg";
inline constexpr std::string_view RADIANS = "rad";

}  // namespace Veltrani::ConfigurationDetail
