#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

/// What the names of channels say about where their pictures are.
namespace Veltrani::DisplayReport {

/// A word that a name uses for a side, and what makes more or less of a side.
enum class Word { LEFT, RIGHT, UP, DOWN, MIDDLE, FAR };

/// What the words of all names of a display mean.
class NameWords {
public:
    explicit NameWords(const std::vector<std::string>& names);

    /// @param word in small letters
    [[nodiscard]] std::optional<Word> meaningOf(const std::string& word) const;

private:
    std::vector<std::pair<std::string, Word>> m_words;
};

/// What a name says of one axis.
struct NamedPlace {
    bool isNamed = false;
    double rank = 0;                ///< towards the right or upwards: -2 far left, -1 left, -0.5 centre left, 0 centre
    std::vector<std::string> rest;  ///< the words that are not about this axis, in their order
};

/// Between left and right.
[[nodiscard]] NamedPlace placeAsideOf(const NameWords& words, const std::string& name);
/// Between below and above. A name with a middle and no side has its place there, too.
[[nodiscard]] NamedPlace placeAboveOf(const NameWords& words, const std::string& name);

}  // namespace Veltrani::DisplayReport
