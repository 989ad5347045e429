#include "DisplayReport/check/NameWords.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace Veltrani::DisplayReport {

namespace {

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

/// With these, left and right are not those of the picture: the stage's are an actor's, an eye sees both, and a rack
/// stands elsewhere.
constexpr std::array SIDES_OF_OTHERS{"stage", "eye", "eyes", "seat", "rack"};

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

}  // namespace

NameWords::NameWords(const std::vector<std::string>& names) {
    for (const WordPair& pair : WORD_PAIRS) {
        const auto isUsed = [&](const char* word) {
            return std::any_of(names.begin(), names.end(),
                               [word](const std::string& name) { return contains(lettersOf(name), word); });
        };
        if (isUsed(pair.left) && isUsed(pair.right)) {
            m_words.emplace_back(pair.left, Word::LEFT);
            m_words.emplace_back(pair.right, Word::RIGHT);
        }
    }
    m_words.insert(m_words.end(), SIDE_WORDS.begin(), SIDE_WORDS.end());
}

std::optional<Word> NameWords::meaningOf(const std::string& word) const {
    const auto found =
        std::find_if(m_words.begin(), m_words.end(), [&](const auto& known) { return known.first == word; });
    return found == m_words.end() ? std::nullopt : std::optional(found->second);
}

NamedPlace placeAsideOf(const NameWords& words, const std::string& name) {
    NamedPlace place;
    std::array<bool, 6> has{};
    for (const std::string& word : lettersOf(name)) {
        const auto meaning = words.meaningOf(word);
        if (std::find(SIDES_OF_OTHERS.begin(), SIDES_OF_OTHERS.end(), word) != SIDES_OF_OTHERS.end()) {
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

NamedPlace placeAboveOf(const NameWords& words, const std::string& name) {
    NamedPlace place;
    bool isUp = false;
    bool isDown = false;
    bool isMiddle = false;
    bool isAside = false;
    for (const std::string& word : lettersOf(name)) {
        const auto meaning = words.meaningOf(word);
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

}  // namespace Veltrani::DisplayReport
