#include "ColumnsByRows.h"

#include <charconv>
#include <system_error>

namespace {

/// The whole of `text` as a number.
std::optional<int> numberOf(std::string_view text) {
    int number = 0;
    const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), number);
    return fault == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

}  // namespace

std::optional<ColumnsByRows> ColumnsByRows::parse(std::string_view text) {
    const auto cross = text.find('x');
    const auto columns = numberOf(text.substr(0, cross));
    const auto rows = cross == std::string_view::npos ? std::nullopt : numberOf(text.substr(cross + 1));
    return columns && rows ? std::optional(ColumnsByRows{*columns, *rows}) : std::nullopt;
}

bool ColumnsByRows::isWithin(int fewest, int most, long long mostTogether) const {
    const auto allowed = [fewest, most](int lines) { return lines >= fewest && lines <= most; };
    return allowed(columns) && allowed(rows) && 1LL * columns * rows <= mostTogether;
}
