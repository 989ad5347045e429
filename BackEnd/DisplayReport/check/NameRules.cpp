#include "Common/Utf8.h"
#include "Configuration/ProjectorConfig.h"
#include "DisplayReport/check/Judgement.h"
#include "DisplayReport/check/RuleText.h"
#include "ScreenManager/DisplayKinds.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <optional>

namespace Veltrani::DisplayReport {

namespace {

/// A word that a name uses for a side.
enum class Side { LEFT, RIGHT, UP, DOWN };

constexpr std::array SIDE_WORDS{std::pair("left", Side::LEFT),  std::pair("right", Side::RIGHT),
                                std::pair("upper", Side::UP),   std::pair("top", Side::UP),
                                std::pair("lower", Side::DOWN), std::pair("bottom", Side::DOWN)};

/// The words of a name in small letters, at everything that is no ASCII letter.
std::vector<std::string> lettersOf(const std::string& name) {
    std::vector<std::string> words(1);
    for (const char letter : name) {
        const bool isBig = letter >= 'A' && letter <= 'Z';
        if (isBig || (letter >= 'a' && letter <= 'z')) {
            words.back() += static_cast<char>(isBig ? letter - 'A' + 'a' : letter);
        } else if (!words.back().empty()) {
            words.emplace_back();
        }
    }
    return words;
}

/// Whether a name uses a word for this side, and for no other on the same axis.
bool isNamed(const std::string& name, Side side, Side opposite) {
    bool isSide = false;
    for (const std::string& word : lettersOf(name)) {
        for (const auto& [text, meant] : SIDE_WORDS) {
            if (word == text && meant == opposite) {
                return false;
            }
            isSide = isSide || (word == text && meant == side);
        }
    }
    return isSide;
}

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

void reportName(const Seen& seen, FindingList& found, const std::string& lies, const char* check) {
    found.add(Rule::named("name-against-place"), seen.channel->where(), seen.channel->allowed(),
              "its picture lies " + lies +
                  " of the middle of all pictures, as the eye point sees them: exchange the "
                  "names, or check " +
                  check);
}

/// One axis of names: two opposite sides, and what puts a picture on them.
struct NamedAxis {
    Side more;  ///< to the right, or above
    Side less;
    double (*placeOf)(const Heading& heading, const Heading& middle);  ///< radians towards `more`
    std::string (*text)(double radians);
    const char* area;
    const char* view;
};

std::string aboveText(double radians) {
    return degreesText(std::abs(radians)) + " degrees " + (radians < 0 ? "below" : "above");
}

bool hasName(const std::vector<Seen>& seen, Side side, Side opposite) {
    return std::any_of(seen.begin(), seen.end(),
                       [&](const Seen& one) { return isNamed(one.channel->name(), side, opposite); });
}

void judgeAxis(const DisplayFacts& display, const std::vector<Seen>& seen, const NamedAxis& axis, FindingList& found) {
    // A name on one side alone may be that of a wall, of which the display is only one.
    if (!hasName(seen, axis.more, axis.less) || !hasName(seen, axis.less, axis.more)) {
        return;
    }
    const bool isPlanar = display.kind->addressedBy == DisplayKind::Addressing::SCREEN_PARAMETERS;
    const double most = Rule::named("name-against-place").most * std::numbers::pi / 180.0;
    const Heading middle = middleHeading(seen);
    for (const Seen& one : seen) {
        const double place = axis.placeOf(Heading::of(one.direction), middle);
        const std::string& name = one.channel->name();
        if ((place > most && isNamed(name, axis.less, axis.more)) ||
            (place < -most && isNamed(name, axis.more, axis.less))) {
            reportName(one, found, axis.text(place), isPlanar ? axis.area : axis.view);
        }
    }
}

double placeAside(const Heading& heading, const Heading& middle) {
    // Behind the eye, and above it, left and right meet.
    constexpr double BESIDE = 150.0 * std::numbers::pi / 180.0;
    const double right = heading.rightOf(middle);
    return std::abs(right) > BESIDE || std::abs(heading.elevation) > STEEP ? 0.0 : right;
}

double placeAbove(const Heading& heading, const Heading& middle) {
    return heading.elevation - middle.elevation;
}

}  // namespace

void judgeNamedSides(const DisplayFacts& display, FindingList& found) {
    if (display.kind == nullptr) {
        return;
    }
    const std::vector<Seen> seen = seenChannels(display);
    if (seen.size() < 2 || std::abs(middleHeading(seen).elevation) > STEEP) {
        return;
    }
    judgeAxis(
        display, seen,
        {Side::RIGHT, Side::LEFT, placeAside, sidewaysText, "left and right of its area", "the sign of Orientation z"},
        found);
    judgeAxis(display, seen,
              {Side::UP, Side::DOWN, placeAbove, aboveText, "bottom and top of its area", "the sign of Orientation x"},
              found);
}

}  // namespace Veltrani::DisplayReport
