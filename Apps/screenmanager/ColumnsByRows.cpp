#include "ColumnsByRows.h"

#include <charconv>
#include <string>
#include <system_error>
#include <utility>

namespace {

/// The whole of `text` as a number.
std::optional<int> numberOf(std::string_view text) {
    int number = 0;
    const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), number);
    return fault == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

/// Refuses the command line for what is no size within the bounds.
ColumnsByRows read(const GridOption& option, const std::string& text) {
    const auto size = ColumnsByRows::parse(text);
    if (!size || !size->isWithin(option.fewest, option.most, option.mostTogether)) {
        OptionList::refuse(option.name, "\"" + text + "\" is not " + option.form + ", such as " + option.example +
                                            ", with " + std::to_string(option.fewest) + " to " +
                                            std::to_string(option.most) + " each and at most " +
                                            std::to_string(option.mostTogether) + " " + option.things);
    }
    return *size;
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

Option addGridOption(OptionList& line, const GridOption& option, std::function<void(const ColumnsByRows&)> take) {
    return line
        .addRead(
            option.name, [option, take = std::move(take)](const std::string& text) { take(read(option, text)); },
            option.help)
        .typeName(option.form);
}
