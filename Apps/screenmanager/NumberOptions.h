#pragma once

#include "Common/Point.h"
#include "OptionList.h"

#include <cstddef>
#include <functional>
#include <string>

/// What a number of an option may be: both bounds included, unless `isAbove`.
struct NumberBounds {
    double least = 0;
    double most = 0;
    bool isAbove = false;  ///< the least one is not included
};

/// The value; refuses the command line for one that lies outside.
double requireWithin(const std::string& option, double value, const NumberBounds& bounds);

/// Adds an option whose value is a number within bounds.
/// @param form name of the value
/// @param take is given the value
Option addBoundedNumber(OptionList& line, const char* name, const NumberBounds& bounds, const char* help,
                        const char* form, std::function<void(double)> take);

/// The numbers of a text with commas between them: of two or of three. Refuses the command line for anything else.
/// @param form that the message names, with an example
template <std::size_t N>
[[nodiscard]] Point<double, N> requireNumbers(const std::string& option, const std::string& text,
                                              const std::string& form);
