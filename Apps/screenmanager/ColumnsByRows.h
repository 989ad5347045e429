#pragma once

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
