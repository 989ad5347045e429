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

/// A word that a name uses for a side, and what makes more or less of a side.
enum class Word { LEFT, RIGHT, UP, DOWN, MIDDLE, FAR };

constexpr std::array SIDE_WORDS{
    std::pair("left", Word::LEFT),     std::pair("links", Word::LEFT),    std::pair("linke", Word::LEFT),
    std::pair("linker", Word::LEFT),   std::pair("linkes", Word::LEFT),   std::pair("right", Word::RIGHT),
    std::pair("rechts", Word::RIGHT),  std::pair("rechte", Word::RIGHT),  std::pair("rechter", Word::RIGHT),
    std::pair("rechtes", Word::RIGHT), std::pair("upper", Word::UP),      std::pair("top", Word::UP),
    std::pair("oben", Word::UP),       std::pair("obere", Word::UP),      std::pair("oberer", Word::UP),
    std::pair("oberes", Word::UP),     std::pair("lower", Word::DOWN),    std::pair("bottom", Word::DOWN),
    std::pair("unten", Word::DOWN),    std::pair("untere", Word::DOWN),   std::pair("unterer", Word::DOWN),
    std::pair("unteres", Word::DOWN),  std::pair("centre", Word::MIDDLE), std::pair("center", Word::MIDDLE),
    std::pair("middle", Word::MIDDLE), std::pair("mid", Word::MIDDLE),    std::pair("mitte", Word::MIDDLE),
    std::pair("far", Word::FAR),       std::pair("outer", Word::FAR),     std::pair("outermost", Word::FAR)};

/// Words that mean a side only beside their opposite: R may be the rear, and a port has a number.
struct WordPair {
    const char* left;
    const char* right;
};
constexpr std::array WORD_PAIRS{WordPair{"l", "r"}, WordPair{"port", "starboard"}};

/// With these, left and right are not those of the picture: the stage's are an actor's, an eye sees both.
constexpr std::array OTHER_LANGUAGES{"stage", "eye", "eyes"};

/// The words of a name in small letters: at everything that is no ASCII letter, and at big letters behind small ones.
std::vector<std::string> lettersOf(const std::string& name) {
    std::vector<std::string> words(1);
    bool isBehindSmall = false;
    for (const char letter : name) {
        const bool isBig = letter >= 'A' && letter <= 'Z';
        const bool isSmall = letter >= 'a' && letter <= 'z';
        if ((isBig && isBehindSmall) || (!isBig && !isSmall && !words.back().empty())) {
            words.emplace_back();
        }
        if (isBig || isSmall) {
            words.back() += static_cast<char>(isBig ? letter - 'A' + 'a' : letter);
        }
        isBehindSmall = isSmall;
    }
    if (words.back().empty()) {
        words.pop_back();
    }
    return words;
}

bool contains(const std::vector<std::string>& words, const char* word) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

/// What the words of all names mean.
class Vocabulary {
public:
    explicit Vocabulary(const std::vector<ChannelFacts>& channels) {
        for (const WordPair& pair : WORD_PAIRS) {
            const auto isUsed = [&](const char* word) {
                return std::any_of(channels.begin(), channels.end(), [word](const ChannelFacts& channel) {
                    return contains(lettersOf(channel.name()), word);
                });
            };
            if (isUsed(pair.left) && isUsed(pair.right)) {
                m_words.emplace_back(pair.left, Word::LEFT);
                m_words.emplace_back(pair.right, Word::RIGHT);
            }
        }
        m_words.insert(m_words.end(), SIDE_WORDS.begin(), SIDE_WORDS.end());
    }

    [[nodiscard]] std::optional<Word> meaningOf(const std::string& word) const {
        const auto found =
            std::find_if(m_words.begin(), m_words.end(), [&](const auto& known) { return known.first == word; });
        return found == m_words.end() ? std::nullopt : std::optional(found->second);
    }

private:
    std::vector<std::pair<std::string, Word>> m_words;
};

/// What a name says of one axis.
struct NamedPlace {
    bool isNamed = false;
    double rank = 0;                ///< towards the right or upwards: -2 far left, -1 left, -0.5 centre left, 0 centre
    std::vector<std::string> rest;  ///< the words that are not about this axis, in their order
};

NamedPlace placeAsideOf(const Vocabulary& vocabulary, const std::string& name) {
    NamedPlace place;
    std::array<bool, 6> has{};
    for (const std::string& word : lettersOf(name)) {
        const auto meaning = vocabulary.meaningOf(word);
        if (std::find(OTHER_LANGUAGES.begin(), OTHER_LANGUAGES.end(), word) != OTHER_LANGUAGES.end()) {
            return {};
        }
        if (!meaning || *meaning == Word::UP || *meaning == Word::DOWN) {
            place.rest.push_back(word);
        } else {
            has.at(static_cast<std::size_t>(*meaning)) = true;
        }
    }
    const bool isLeft = has[static_cast<std::size_t>(Word::LEFT)];
    const bool isRight = has[static_cast<std::size_t>(Word::RIGHT)];
    const bool isMiddle = has[static_cast<std::size_t>(Word::MIDDLE)];
    const bool isFar = has[static_cast<std::size_t>(Word::FAR)];
    place.isNamed = isLeft != isRight || (isMiddle && !isLeft);
    place.rank = (isRight ? 1.0 : 0.0) - (isLeft ? 1.0 : 0.0);
    place.rank *= isFar ? 2.0 : (isMiddle ? 0.5 : 1.0);
    return place;
}

/// A name with a middle and no side has its place between above and below, too.
NamedPlace placeAboveOf(const Vocabulary& vocabulary, const std::string& name) {
    NamedPlace place;
    bool isUp = false;
    bool isDown = false;
    bool isMiddle = false;
    bool isAside = false;
    for (const std::string& word : lettersOf(name)) {
        const auto meaning = vocabulary.meaningOf(word);
        isUp = isUp || meaning == Word::UP;
        isDown = isDown || meaning == Word::DOWN;
        isMiddle = isMiddle || meaning == Word::MIDDLE;
        isAside = isAside || meaning == Word::LEFT || meaning == Word::RIGHT;
        if (meaning != Word::UP && meaning != Word::DOWN && meaning != Word::MIDDLE) {
            place.rest.push_back(word);
        }
    }
    place.isNamed = isUp != isDown || (isMiddle && !isAside && !isUp);
    place.rank = (isUp ? 1.0 : 0.0) - (isDown ? 1.0 : 0.0);
    return place;
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

/// One axis of names, and what puts a picture on it.
struct NamedAxis {
    NamedPlace (*namedPlace)(const Vocabulary& vocabulary, const std::string& name);
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
                  const Vocabulary& vocabulary, FindingList& found)
        : m_axis(&axis), m_middle(middleHeading(seen)), m_found(&found) {
        const bool isPlanar = display.kind->addressedBy == DisplayKind::Addressing::SCREEN_PARAMETERS;
        m_check = isPlanar ? axis.area : axis.view;
        for (const Seen& one : seen) {
            m_channels.push_back(
                {one.channel, Heading::of(one.direction), axis.namedPlace(vocabulary, one.channel->name())});
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
    const Vocabulary vocabulary(display.channels);
    for (const NamedAxis* const axis : {&ASIDE, &ABOVE}) {
        AxisJudgement(display, *axis, seen, vocabulary, found).run();
    }
}

}  // namespace Veltrani::DisplayReport
