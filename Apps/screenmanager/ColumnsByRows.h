#pragma once

#include "OptionList.h"

#include <functional>
#include <optional>
#include <string_view>

/// The size of a grid, as it stands on the command line: "COLUMNSxROWS".
struct ColumnsByRows {
    int columns = 0;
    int rows = 0;

    /// Two whole numbers that fit an int; none for anything else.
    [[nodiscard]] static std::optional<ColumnsByRows> parse(std::string_view text);

    /// Both from `fewest` to `most`, and no more than `mostTogether` places in the grid.
    [[nodiscard]] bool isWithin(int fewest, int most, long long mostTogether) const;
};

/// An option whose value is such a size.
struct GridOption {
    const char* name = nullptr;
    const char* help = nullptr;
    const char* form = "COLUMNSxROWS";  ///< the name of the value
    const char* example = nullptr;
    const char* things = nullptr;  ///< of which there are at most so many together
    int fewest = 0;                ///< columns, and rows
    int most = 0;                  ///< columns, and rows
    long long mostTogether = 0;
};

/// Adds the option, which accepts nothing but sizes within its bounds.
/// @param take is given the value
Option addGridOption(OptionList& line, const GridOption& option, std::function<void(const ColumnsByRows&)> take);
