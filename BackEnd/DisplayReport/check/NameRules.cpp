#include "Common/Utf8.h"
#include "Configuration/ProjectorConfig.h"
#include "DisplayReport/check/Judgement.h"
#include "DisplayReport/check/NameWords.h"
#include "DisplayReport/check/RuleText.h"
#include "ScreenManager/DisplayKinds.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <optional>

namespace Veltrani::DisplayReport {

namespace {

/// Where a channel's picture is seen from the eye.
std::optional<Point<double, 3>> seenDirection(const DisplayFacts& display, const ChannelFacts& channel) {
    if (display.kind->addressedBy == DisplayKind::Addressing::EYE && channel.view() != nullptr) {
        return channel.view()->middle;
    }
    if (channel.landings().empty()) {
        return std::nullopt;
    }
    const Point<double, 3> sight = channel.middleOfLight() - display.eye;
    // From the surface itself nothing is to one side.
    constexpr double NEAR = 0.05;
    return norm(sight) > NEAR * display.size ? std::optional(sight * (1.0 / norm(sight))) : std::nullopt;
}

/// Above a table or below a floor, left and up are matters of taste.
constexpr double STEEP = 60.0 * std::numbers::pi / 180.0;

struct Seen {
    const ChannelFacts* channel;
    Point<double, 3> direction;
};

std::vector<Seen> seenChannels(const DisplayFacts& display) {
    std::vector<Seen> seen;
    for (const ChannelFacts& channel : display.channels) {
        if (const auto direction = seenDirection(display, channel)) {
            seen.push_back({&channel, *direction});
        }
    }
    return seen;
}

/// The middle of all directions, or forward where they surround the eye.
Heading middleHeading(const std::vector<Seen>& seen) {
    Point<double, 3> sum;
    for (const Seen& one : seen) {
        sum += one.direction;
    }
    constexpr double AROUND = 0.3;
    return std::hypot(sum[0], sum[1]) < AROUND * static_cast<double>(seen.size()) ? Heading{0, 0} : Heading::of(sum);
}

/// One axis of names, and what puts a picture on it.
struct NamedAxis {
    NamedPlace (*namedPlace)(const NameWords& words, const std::string& name);
    /// Radians to the right or upwards; nothing where the axis has no meaning.
    std::optional<double> (*placeOf)(const Heading& heading, const Heading& middle);
    std::string (*text)(double radians);
    const char* area;
    const char* view;
};

std::string aboveText(double radians) {
    return degreesText(std::abs(radians)) + " degrees " + (radians < 0 ? "below" : "above");
}

std::optional<double> placeAside(const Heading& heading, const Heading& middle) {
    // Behind the eye, and above it, left and right meet.
    constexpr double BESIDE = 150.0 * std::numbers::pi / 180.0;
    const double right = heading.rightOf(middle);
    const bool isBeside = std::abs(right) > BESIDE || std::abs(heading.elevation) > STEEP;
    return isBeside ? std::nullopt : std::optional(right);
}

std::optional<double> placeAbove(const Heading& heading, const Heading& middle) {
    return heading.elevation - middle.elevation;
}

/// A channel with what its name says and where it is seen.
struct NamedChannel {
    const ChannelFacts* channel;
    Heading heading;
    NamedPlace named;
    bool isReported = false;
};

/// The names of one axis against what is seen.
class AxisJudgement {
public:
    AxisJudgement(const DisplayFacts& display, const NamedAxis& axis, const std::vector<Seen>& seen,
                  const NameWords& words, FindingList& found)
        : m_axis(&axis), m_middle(middleHeading(seen)), m_found(&found) {
        const bool isPlanar = display.kind->addressedBy == DisplayKind::Addressing::SCREEN_PARAMETERS;
        m_check = isPlanar ? axis.area : axis.view;
        for (const Seen& one : seen) {
            m_channels.push_back(
                {one.channel, Heading::of(one.direction), axis.namedPlace(words, one.channel->name())});
        }
    }

    void run() {
        // A name on one side alone may be that of a wall, of which the display is only one: then the eye's own forward
        // direction counts as well.
        const bool isLone = !hasSide(1) || !hasSide(-1);
        for (NamedChannel& one : m_channels) {
            isLone ? judgeLone(one) : judgeSide(one);
        }
        for (std::size_t second = 1; second < m_channels.size(); ++second) {
            for (std::size_t first = 0; first < second; ++first) {
                judgeOrder(m_channels[first], m_channels[second]);
            }
        }
    }

private:
    static constexpr double DEGREE = std::numbers::pi / 180.0;

    [[nodiscard]] bool hasSide(int sign) const {
        return std::any_of(m_channels.begin(), m_channels.end(),
                           [sign](const NamedChannel& one) { return one.named.isNamed && one.named.rank * sign > 0; });
    }

    /// How far a channel lies against its name from a direction; 0 where it does not.
    [[nodiscard]] double against(const NamedChannel& one, const Heading& middle) const {
        const std::optional<double> place = m_axis->placeOf(one.heading, middle);
        return one.named.isNamed && place && *place * one.named.rank < 0 ? std::abs(*place) : 0.0;
    }

    void judgeSide(NamedChannel& one) {
        if (against(one, m_middle) > Rule::named("name-against-place").most * DEGREE) {
            report(one, one.channel->allowed(), m_axis->placeOf(one.heading, m_middle).value_or(0),
                   "the middle of all pictures");
        }
    }

    void judgeLone(NamedChannel& one) {
        constexpr double LONE = 10.0 * DEGREE;
        if (std::min(against(one, m_middle), against(one, Heading{})) > LONE) {
            report(one, one.channel->allowed(), m_axis->placeOf(one.heading, m_middle).value_or(0),
                   "the middle of all pictures");
        }
    }

    /// "Left" lies to the left of "Centre", and "Upper far left" to the left of "Upper left".
    void judgeOrder(NamedChannel& first, NamedChannel& second) {
        const std::optional<double> one = m_axis->placeOf(first.heading, m_middle);
        const std::optional<double> other = m_axis->placeOf(second.heading, m_middle);
        const bool isComparable = first.named.isNamed && second.named.isNamed && one && other &&
                                  first.named.rest == second.named.rest && !first.isReported && !second.isReported;
        if (!isComparable) {
            return;
        }
        const double apart = *other - *one;
        const double most = Rule::named("name-against-place").most * DEGREE;
        if (apart * (second.named.rank - first.named.rank) < 0 && std::abs(apart) > most) {
            report(second, first.channel->allowed() + " " + second.channel->allowed(), apart,
                   "the picture of " + first.channel->where());
            first.isReported = true;
        }
    }

    void report(NamedChannel& one, const std::string& allowed, double place, const std::string& from) {
        m_found->add(Rule::named("name-against-place"), one.channel->where(), allowed,
                     "its picture lies " + m_axis->text(place) + (m_axis->text == aboveText ? " " : " of ") + from +
                         ", as the eye point sees them: exchange the names, or check " + m_check);
        one.isReported = true;
    }

    const NamedAxis* m_axis;
    Heading m_middle;
    FindingList* m_found;
    const char* m_check = "";
    std::vector<NamedChannel> m_channels;
};

/// A channel with a number in its name, and where it is seen.
struct NumberedChannel {
    const ChannelFacts* channel;
    int number;
    double azimuth;
};

/// The number in a name of which nothing else differs from `pattern`; nothing in any other name.
std::optional<int> numberIn(const std::string& name, std::string& pattern) {
    constexpr std::size_t MOST_DIGITS = 6;
    const char* const digits = "0123456789";
    const std::size_t from = name.find_first_of(digits);
    const std::size_t to =
        from == std::string::npos ? from : std::min(name.find_first_not_of(digits, from), name.size());
    if (from == std::string::npos || to - from > MOST_DIGITS) {
        return std::nullopt;
    }
    pattern = name.substr(0, from) + "#" + name.substr(to);
    return std::stoi(name.substr(from, to - from));
}

/// The channels whose names differ by a number alone, in its order; none where one differs otherwise.
std::vector<NumberedChannel> numberedChannels(const std::vector<Seen>& seen) {
    std::vector<NumberedChannel> channels;
    std::string first;
    for (const Seen& one : seen) {
        std::string pattern;
        const auto number = numberIn(one.channel->name(), pattern);
        if (!number || (!channels.empty() && pattern != first)) {
            return {};
        }
        first = pattern;
        channels.push_back({one.channel, *number, Heading::of(one.direction).azimuth});
    }
    std::sort(channels.begin(), channels.end(), [](const auto& a, const auto& b) { return a.number < b.number; });
    return channels;
}

/// Whether the numbers grow to one side, once around at most.
bool isInOrder(const std::vector<NumberedChannel>& channels) {
    double sum = 0;
    bool isToTheRight = true;
    bool isToTheLeft = true;
    for (std::size_t i = 1; i < channels.size(); ++i) {
        const double turn = std::remainder(channels[i].azimuth - channels[i - 1].azimuth, 2 * std::numbers::pi);
        sum += turn;
        isToTheRight = isToTheRight && turn > 0;
        isToTheLeft = isToTheLeft && turn < 0;
    }
    return (isToTheRight || isToTheLeft) && std::abs(sum) < 2 * std::numbers::pi;
}

/// Of five and more numbers in a row, two neighbours that are exchanged.
void judgeNumbers(const std::vector<Seen>& seen, FindingList& found) {
    constexpr std::size_t A_ROW = 5;
    std::vector<NumberedChannel> channels = numberedChannels(seen);
    if (channels.size() < A_ROW || isInOrder(channels)) {
        return;
    }
    for (std::size_t i = 1; i < channels.size(); ++i) {
        const NumberedChannel& one = channels[i - 1];
        const NumberedChannel& other = channels[i];
        std::swap(channels[i - 1].azimuth, channels[i].azimuth);
        const bool isExchanged = isInOrder(channels);
        std::swap(channels[i - 1].azimuth, channels[i].azimuth);
        if (isExchanged) {
            found.add(Rule::named("name-against-place"), other.channel->where(),
                      one.channel->allowed() + " " + other.channel->allowed(),
                      "its picture lies where that of " + one.channel->where() +
                          " belongs, as the numbers of all others grow to one side: exchange the names, or the "
                          "Orientations or areas of the two");
            return;
        }
    }
}

constexpr NamedAxis ASIDE{placeAsideOf, placeAside, sidewaysText, "left and right of its area",
                          "the sign of Orientation z"};
constexpr NamedAxis ABOVE{placeAboveOf, placeAbove, aboveText, "bottom and top of its area",
                          "the sign of Orientation x"};

}  // namespace

void judgeNamedSides(const DisplayFacts& display, FindingList& found) {
    if (display.kind == nullptr) {
        return;
    }
    const std::vector<Seen> seen = seenChannels(display);
    if (seen.size() < 2 || std::abs(middleHeading(seen).elevation) > STEEP) {
        return;
    }
    judgeNumbers(seen, found);
    std::vector<std::string> names;
    for (const ChannelFacts& channel : display.channels) {
        names.push_back(channel.name());
    }
    const NameWords words(names);
    for (const NamedAxis* const axis : {&ASIDE, &ABOVE}) {
        AxisJudgement(display, *axis, seen, words, found).run();
    }
}

}  // namespace Veltrani::DisplayReport
