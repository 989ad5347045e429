#pragma once

#include <functional>
#include <optional>
#include <string>

namespace Veltrani::ConfigurationDetail {

/// A number as the text of an attribute, in the unit that holds there.
struct StatedNumber {
    std::string text;
    double value = 0.0;  ///< what a reader makes of the text: native units or radians
};

/// Returns whether two numbers are equal to the last bit: a zero with a sign is another number to write.
[[nodiscard]] bool isSameNumber(double a, double b);

/// Returns, of all numbers that an attribute can state, the one that is read as nearest to `wanted`, with as few digits
/// as are read as the same. None when `wanted` is not finite, or lies beyond what can be read from any number.
///
/// @param read converts a stated number; it increases from number to number or stays, and is 0 at 0
[[nodiscard]] std::optional<StatedNumber> nearestStated(double wanted, const std::function<double(double)>& read);

}  // namespace Veltrani::ConfigurationDetail
