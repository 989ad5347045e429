#pragma once

#include "Configuration/detail/ValueText.h"

#include <string>
#include <string_view>

namespace Veltrani {

/// The kinds of value that an attribute of the configuration can have.
enum class ValueType {
    Text,            ///< anything, nothing included
    NonEmptyText,    ///< anything but nothing
    ModelName,       ///< text without a colon: the colon parts the name of a projection model from its file
    Number,          ///< finite
    PositiveNumber,  ///< finite, above zero
    Length,          ///< a number in the unit of `lengthUnit`
    PositiveLength,  ///< a length above zero
    Angle,           ///< a number in the unit of `angleUnit`
    PixelCount,      ///< a whole number above zero
    FourBytes,       ///< four whole numbers from 0 to 255
    Version,         ///< of the format
    NativeUnit,      ///< unit of the world: a length unit or "custom"
    FileUnit,        ///< unit of mesh and cloud files: the same names
    LengthUnit,      ///< unit of the lengths below: the same names
    AngleUnit,       ///< "deg" or "rad"
    Shape,           ///< `BaseConfig::SHAPE_*`
    TargetData,      ///< `BaseConfig::TARGET_DATA_*`
    Axis,            ///< X, -X, Y, -Y, Z or -Z
};

/// Whether a text has the form of the type. `NotANumber` stands for every wrong form, of words too; `OutOfRange` for a
/// number of the right form that the type cannot hold.
[[nodiscard]] NumberState checkValue(ValueType type, std::string_view text);

/// What a message says that was expected.
[[nodiscard]] std::string expectedValue(ValueType type);

[[nodiscard]] bool isLength(ValueType type);
[[nodiscard]] bool isPositive(ValueType type);

/// Degrees and radians.
inline constexpr std::string_view DEGREES = "deg";
inline constexpr std::string_view RADIANS = "rad";

}  // namespace Veltrani
