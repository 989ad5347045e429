#include "DisplayReport/still/StrokeFont.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

/// From the blank on. A stroke is a row of corners, each two digits: 0 to 4 to the right, and upwards 0 to 9, where
/// letters stand at 2 and capitals reach 8. A blank starts the next stroke.
constexpr std::array<std::string_view, 95> GLYPHS{
    "", "2824 2222", "1816 3836", "1218 3238 0646 0444", "473818070615354443321203 2921", "0248 0818170708 3343423233",
    "4216172837360403122244", "2826", "38272332", "18272312", "2723 0644 0446", "2723 0545", "232211", "0545", "2222",
    "0248",
    // 0 to 9
    "120307183847433212 1337", "172822 1232", "07183847460242", "07183847463525 354443321203", "32380444",
    "480805354443321203", "4738180703123243443505", "084812", "15060718384746351504031232434435",
    "0312324347381807061545",
    // : ; < = > ? @
    "2323 2626", "2626 232211", "470543", "0646 0444", "074503", "07183847462524 2222", "4212030718384744242646",
    // A to Z
    "022842 1535", "02083847463505 3544433202", "4738180703123243", "02082846442202", "48080242 0535", "480802 0535",
    "47381807031232434525", "0208 4248 0545", "2822 1838 1232", "4843321203", "0208 4804 1542", "080242", "0208254842",
    "02084248", "120307183847433212", "02083847463505", "120307183847433212 2442", "02083847463505 2542",
    "473818070615354443321203", "0848 2822", "080312324348", "082248", "0812263248", "0248 0842", "082548 2522",
    "08480242",
    // [ \ ] ^ _ `
    "38181232", "0842", "18383212", "162836", "0141", "1827",
    // a to z
    "16364542 441403123243", "0802 0312324345361605", "4536160503123243", "4842 4332120305163645",
    "04444536160503123243", "38281712 0636", "4641301001 4536160503123243", "0802 0516364542", "2622 2828",
    "26211000 2828", "0802 3603 1432", "282332", "0602 05162522 25364542", "0602 0516364542", "120305163645433212",
    "0600 0516364543321203", "4640 4536160503123243", "0602 051636", "45361605143443321203", "18132232 0636",
    "0603123243 4642", "062246", "0612253246", "0246 0642", "0622 4610", "06460242",
    // { | } ~
    "38272615242332", "2921", "18272635242312", "05163445"};

constexpr std::string_view UNKNOWN = "0208484202";
constexpr char FIRST = ' ';
constexpr double BASELINE = 2;
constexpr double CAPITAL = 6;
/// Between letters, and of a blank; in the units of the digits.
constexpr double GAP = 2;
constexpr double BLANK = 2;

std::string_view glyphOf(char c) {
    const auto place = static_cast<std::size_t>(static_cast<unsigned char>(c)) - static_cast<std::size_t>(FIRST);
    return place < GLYPHS.size() ? GLYPHS[place] : UNKNOWN;
}

/// The second and later bytes of a character that takes several.
bool isContinuation(char c) {
    constexpr unsigned MARK = 0xC0;
    constexpr unsigned CONTINUATION = 0x80;
    return (static_cast<unsigned char>(c) & MARK) == CONTINUATION;
}

double digit(char c) {
    return c - '0';
}

/// From the leftmost to the rightmost corner.
std::pair<double, double> sides(std::string_view glyph) {
    double left = glyph.empty() ? 0 : digit('9');
    double right = glyph.empty() ? BLANK : 0;
    for (std::size_t i = 0; i < glyph.size();) {
        if (glyph[i] == ' ') {
            ++i;
            continue;
        }
        left = std::min(left, digit(glyph[i]));
        right = std::max(right, digit(glyph[i]));
        i += 2;
    }
    return {left, right};
}

/// Appends the strokes of a glyph whose left side stands at `at`.
void addGlyph(std::string_view glyph, double at, double scale, std::vector<StrokeFont::Stroke>& strokes) {
    const double left = sides(glyph).first;
    bool isNew = true;
    for (std::size_t i = 0; i < glyph.size();) {
        if (glyph[i] == ' ') {
            isNew = true;
            ++i;
            continue;
        }
        if (isNew) {
            strokes.emplace_back();
            isNew = false;
        }
        strokes.back().push_back({(at + digit(glyph[i]) - left) * scale, (digit(glyph[i + 1]) - BASELINE) * scale});
        i += 2;
    }
}

/// The strokes, and where the next letter would start.
double layOut(const std::string& utf8, double scale, std::vector<StrokeFont::Stroke>& strokes) {
    double at = 0;
    for (const char c : utf8) {
        if (isContinuation(c)) {
            continue;
        }
        const std::string_view glyph = glyphOf(c);
        addGlyph(glyph, at, scale, strokes);
        const auto [left, right] = sides(glyph);
        at += right - left + GAP;
    }
    return at;
}

}  // namespace

std::vector<StrokeFont::Stroke> StrokeFont::strokes(const std::string& utf8, double size) {
    std::vector<Stroke> strokes;
    layOut(utf8, size / CAPITAL, strokes);
    return strokes;
}

double StrokeFont::width(const std::string& utf8, double size) {
    std::vector<Stroke> ignored;
    const double scale = size / CAPITAL;
    return std::max(0.0, layOut(utf8, scale, ignored) - GAP) * scale;
}

}  // namespace Veltrani::DisplayReport
