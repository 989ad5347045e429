#include "NumberOptions.h"

#include "Common/DecimalText.h"

#include <optional>
#include <string_view>
#include <utility>

namespace {

template <std::size_t N>
std::optional<Point<double, N>> numbersOf(std::string_view text) {
    Point<double, N> numbers;
    for (std::size_t i = 0; i < N; ++i) {
        const auto comma = text.find(',');
        const bool isLast = i + 1 == N;
        if ((comma == std::string_view::npos) != isLast) {
            return std::nullopt;
        }
        const auto number = Veltrani::parseFinite(text.substr(0, comma));
        if (!number) {
            return std::nullopt;
        }
        numbers[i] = *number;
        text.remove_prefix(isLast ? text.size() : comma + 1);
    }
    return numbers;
}

}  // namespace

template <std::size_t N>
Point<double, N> requireNumbers(const std::string& option, const std::string& text, const std::string& form) {
    const auto numbers = numbersOf<N>(text);
    if (!numbers) {
        OptionList::refuse(option, "\"" + text + "\" is not " + form);
    }
    return *numbers;
}
template Point<double, 2> requireNumbers(const std::string& option, const std::string& text, const std::string& form);
template Point<double, 3> requireNumbers(const std::string& option, const std::string& text, const std::string& form);

double requireWithin(const std::string& option, double value, const NumberBounds& bounds) {
    const bool isHigh = bounds.isAbove ? value > bounds.least : value >= bounds.least;
    if (!isHigh || !(value <= bounds.most)) {
        OptionList::refuse(option, std::string("is not ") + (bounds.isAbove ? "above " : "from ") +
                                       std::to_string(static_cast<long long>(bounds.least)) + " to " +
                                       std::to_string(static_cast<long long>(bounds.most)));
    }
    return value;
}

Option addBoundedNumber(OptionList& line, const char* name, const NumberBounds& bounds, const char* help,
                        const char* form, std::function<void(double)> take) {
    return line
        .addNumber(
            name, [name, bounds, take = std::move(take)](double value) { take(requireWithin(name, value, bounds)); },
            help)
        .typeName(form);
}
