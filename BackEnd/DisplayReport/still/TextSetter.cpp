#include "DisplayReport/still/TextSetter.h"

#include <fribidi.h>

#include <algorithm>
#include <array>
#include <memory>
#include <new>
#include <span>

namespace Veltrani::DisplayReport {

namespace {

using Buffer = std::unique_ptr<hb_buffer_t, Release<hb_buffer_destroy>>;
using Run = SetLine::Run;

/// A text, character by character.
struct Characters {
    std::vector<char32_t> codes;
    std::vector<std::size_t> bytes;  ///< where each begins, and where the last one ends
    std::vector<hb_script_t> scripts;
    std::vector<FriBidiLevel> levels;  ///< odd: read from right to left
    std::vector<const Font*> fonts;    ///< null where none has the character

    [[nodiscard]] std::size_t size() const { return codes.size(); }
};

/// Characters of one font, script and direction.
struct Item {
    std::size_t begin = 0;
    std::size_t end = 0;
    FriBidiLevel level = 0;
};

void require(const Buffer& buffer) {
    if (hb_buffer_allocation_successful(buffer.get()) == 0) {
        throw std::bad_alloc();
    }
}

std::span<const hb_glyph_info_t> infosOf(const Buffer& buffer) {
    unsigned int count = 0;
    const hb_glyph_info_t* const infos = hb_buffer_get_glyph_infos(buffer.get(), &count);
    return {infos, count};
}

/// What is not UTF-8 becomes U+FFFD.
Characters charactersOf(const std::string& text) {
    const Buffer buffer(hb_buffer_create());
    hb_buffer_add_utf8(buffer.get(), text.data(), static_cast<int>(text.size()), 0, -1);
    require(buffer);
    Characters characters;
    for (const hb_glyph_info_t& info : infosOf(buffer)) {
        characters.codes.push_back(info.codepoint);
        characters.bytes.push_back(info.cluster);
    }
    characters.bytes.push_back(text.size());
    return characters;
}

/// Characters that several scripts share are of the script before them; at the beginning, of the one behind them.
void findScripts(Characters& characters) {
    hb_unicode_funcs_t* const unicode = hb_unicode_funcs_get_default();
    hb_script_t last = HB_SCRIPT_COMMON;
    std::size_t undecided = 0;
    for (const char32_t code : characters.codes) {
        const hb_script_t script = hb_unicode_script(unicode, code);
        const bool isShared =
            script == HB_SCRIPT_COMMON || script == HB_SCRIPT_INHERITED || script == HB_SCRIPT_UNKNOWN;
        if (!isShared && last == HB_SCRIPT_COMMON) {
            std::fill_n(characters.scripts.begin(), undecided, script);
        }
        last = isShared ? last : script;
        characters.scripts.push_back(last);
        undecided += last == HB_SCRIPT_COMMON ? 1 : 0;
    }
}

FriBidiParType directionOf(std::span<const FriBidiCharType> types) {
    const auto first = std::find_if(types.begin(), types.end(), [](FriBidiCharType type) {
        return FRIBIDI_IS_LETTER(type) || type == FRIBIDI_TYPE_EN || type == FRIBIDI_TYPE_AN;
    });
    const bool isRightToLeft = first != types.end() && FRIBIDI_IS_LETTER(*first) && FRIBIDI_IS_RTL(*first);
    return isRightToLeft ? FRIBIDI_PAR_RTL : FRIBIDI_PAR_LTR;
}

void findLevels(Characters& characters) {
    if (characters.codes.empty()) {
        return;
    }
    const std::vector<FriBidiChar> codes(characters.codes.begin(), characters.codes.end());
    const auto count = static_cast<FriBidiStrIndex>(codes.size());
    std::vector<FriBidiCharType> types(codes.size());
    std::vector<FriBidiBracketType> brackets(codes.size());
    characters.levels.resize(codes.size());
    fribidi_get_bidi_types(codes.data(), count, types.data());
    fribidi_get_bracket_types(codes.data(), count, types.data(), brackets.data());
    FriBidiParType direction = directionOf(types);
    const FriBidiLevel most =
        fribidi_get_par_embedding_levels_ex(types.data(), brackets.data(), count, &direction, characters.levels.data());
    if (most == 0) {
        throw std::bad_alloc();
    }
}

/// True for marks above and below letters, and for what has no letter of its own but changes those beside it.
bool belongsToTheOneBefore(char32_t code) {
    constexpr std::array KINDS{HB_UNICODE_GENERAL_CATEGORY_NON_SPACING_MARK, HB_UNICODE_GENERAL_CATEGORY_SPACING_MARK,
                               HB_UNICODE_GENERAL_CATEGORY_ENCLOSING_MARK, HB_UNICODE_GENERAL_CATEGORY_FORMAT};
    const auto kind = hb_unicode_general_category(hb_unicode_funcs_get_default(), code);
    return std::find(KINDS.begin(), KINDS.end(), kind) != KINDS.end();
}

/// True for marks that are not drawn themselves: no font needs to have them.
bool isUnseen(char32_t code) {
    constexpr char32_t FIRST_SELECTOR = 0xFE00;
    constexpr char32_t LAST_SELECTOR = 0xFE0F;
    return (code >= FIRST_SELECTOR && code <= LAST_SELECTOR) ||
           hb_unicode_general_category(hb_unicode_funcs_get_default(), code) == HB_UNICODE_GENERAL_CATEGORY_FORMAT;
}

void findFonts(Characters& characters, const FontSet& fonts) {
    const Font* before = nullptr;
    for (std::size_t begin = 0; begin < characters.size();) {
        std::size_t end = begin + 1;
        std::vector<char32_t> seen{characters.codes[begin]};
        for (; end < characters.size() && belongsToTheOneBefore(characters.codes[end]); ++end) {
            if (!isUnseen(characters.codes[end])) {
                seen.push_back(characters.codes[end]);
            }
        }
        const bool isSeen = seen.size() > 1 || !isUnseen(seen.front());
        before = isSeen ? fonts.fontFor(seen, before) : &fonts.usual();
        characters.fonts.insert(characters.fonts.end(), end - begin, before);
        begin = end;
    }
}

std::vector<Item> itemsOf(const Characters& characters) {
    std::vector<Item> items;
    const auto isAlike = [&](std::size_t a, std::size_t b) {
        return characters.fonts[a] == characters.fonts[b] && characters.scripts[a] == characters.scripts[b] &&
               characters.levels[a] == characters.levels[b];
    };
    for (std::size_t i = 0; i < characters.size(); ++i) {
        if (items.empty() || !isAlike(items.back().begin, i)) {
            items.push_back({i, i, characters.levels[i]});
        }
        items.back().end = i + 1;
    }
    return items;
}

/// From the order of reading to that from left to right: from the innermost level on, what stands together at a level
/// or above it is turned around.
void orderFromTheLeft(std::vector<Item>& items) {
    FriBidiLevel most = 0;
    for (const Item& item : items) {
        most = std::max(most, item.level);
    }
    for (FriBidiLevel level = most; level > 0; --level) {
        const auto isInside = [level](const Item& item) { return item.level >= level; };
        for (auto begin = items.begin(); begin != items.end();) {
            begin = std::find_if(begin, items.end(), isInside);
            const auto end = std::find_if_not(begin, items.end(), isInside);
            std::reverse(begin, end);
            begin = end;
        }
    }
}

/// The letters of an item. The text around it counts too: some letters join those beside them.
Buffer shaped(const std::string& text, const Characters& characters, const Item& item, hb_font_t* font) {
    Buffer buffer(hb_buffer_create());
    hb_buffer_set_cluster_level(buffer.get(), HB_BUFFER_CLUSTER_LEVEL_MONOTONE_GRAPHEMES);
    const std::size_t begin = characters.bytes[item.begin];
    hb_buffer_add_utf8(buffer.get(), text.data(), static_cast<int>(text.size()), static_cast<unsigned int>(begin),
                       static_cast<int>(characters.bytes[item.end] - begin));
    hb_buffer_set_direction(buffer.get(), item.level % 2 == 0 ? HB_DIRECTION_LTR : HB_DIRECTION_RTL);
    hb_buffer_set_script(buffer.get(), characters.scripts[item.begin]);
    // The language of the user may not change letters, nor may the forms that some languages prefer.
    hb_buffer_set_language(buffer.get(), hb_language_from_string("en", -1));
    const hb_feature_t common{HB_TAG('l', 'o', 'c', 'l'), 0, HB_FEATURE_GLOBAL_START, HB_FEATURE_GLOBAL_END};
    hb_shape(font, buffer.get(), &common, 1);
    require(buffer);
    return buffer;
}

/// Which letters stand for which bytes, in the order of the text. Adds where the text may be cut.
void addClusters(Run& run, std::span<const hb_glyph_info_t> infos, std::vector<std::size_t>& cuts) {
    std::vector<hb_glyph_info_t> inOrder(infos.begin(), infos.end());
    if (run.isReadBackwards) {
        std::reverse(inOrder.begin(), inOrder.end());
    }
    std::size_t begin = run.begin;
    for (std::size_t i = 0; i < inOrder.size();) {
        std::size_t next = i;
        while (next < inOrder.size() && inOrder[next].cluster == inOrder[i].cluster) {
            ++next;
        }
        const std::size_t end = next < inOrder.size() ? inOrder[next].cluster : run.end;
        run.clusters.push_back({static_cast<int>(end - begin), static_cast<int>(next - i)});
        cuts.push_back(begin);
        begin = end;
        i = next;
    }
}

void addRun(SetLine& line, const std::string& text, const Characters& characters, const Item& item,
            const FontSet& fonts) {
    const Font* const found = characters.fonts[item.begin];
    const Font& font = found == nullptr ? fonts.usual() : *found;
    const Buffer buffer = shaped(text, characters, item, font.shapes());
    Run run{&font, item.level % 2 != 0, found != nullptr, characters.bytes[item.begin], characters.bytes[item.end], {},
            {}};
    const double unit = 1 / (FontSet::CAPITAL_SHARE * font.unitsPerSize());
    const hb_glyph_position_t* place = hb_buffer_get_glyph_positions(buffer.get(), nullptr);
    for (const hb_glyph_info_t& info : infosOf(buffer)) {
        run.letters.push_back(
            {info.codepoint, line.width + unit * place->x_offset, -unit * static_cast<double>(place->y_offset)});
        line.width += unit * place->x_advance;
        ++place;
    }
    addClusters(run, infosOf(buffer), line.cuts);
    line.runs.push_back(std::move(run));
}

/// Makes the pen ready for a run and returns its letters where they are drawn.
std::vector<cairo_glyph_t> takeUp(cairo_t* pen, const Run& run, double right, double down, double size) {
    cairo_set_font_face(pen, run.font->face());
    cairo_set_font_size(pen, size / FontSet::CAPITAL_SHARE);
    std::vector<cairo_glyph_t> letters = run.letters;
    for (cairo_glyph_t& letter : letters) {
        letter.x = right + size * letter.x;
        letter.y = down + size * letter.y;
    }
    return letters;
}

}  // namespace

SetLine TextSetter::set(const std::string& text) const {
    Characters characters = charactersOf(text);
    findScripts(characters);
    findLevels(characters);
    findFonts(characters, m_fonts);
    std::vector<Item> items = itemsOf(characters);
    orderFromTheLeft(items);
    SetLine line;
    for (const Item& item : items) {
        addRun(line, text, characters, item, m_fonts);
    }
    line.cuts.push_back(text.size());
    std::sort(line.cuts.begin(), line.cuts.end());
    return line;
}

void TextSetter::show(cairo_t* pen, const SetLine& line, const std::string& text, double right, double down,
                      double size) {
    for (const Run& run : line.runs) {
        if (run.letters.empty()) {
            continue;
        }
        const std::vector<cairo_glyph_t> letters = takeUp(pen, run, right, down, size);
        const auto count = static_cast<int>(letters.size());
        if (run.isText) {
            cairo_show_text_glyphs(
                pen, text.data() + run.begin, static_cast<int>(run.end - run.begin), letters.data(), count,
                run.clusters.data(), static_cast<int>(run.clusters.size()),
                run.isReadBackwards ? CAIRO_TEXT_CLUSTER_FLAG_BACKWARD : static_cast<cairo_text_cluster_flags_t>(0));
        } else {
            cairo_show_glyphs(pen, letters.data(), count);
        }
    }
}

void TextSetter::addOutlines(cairo_t* pen, const SetLine& line, double right, double down, double size) {
    for (const Run& run : line.runs) {
        const std::vector<cairo_glyph_t> letters = takeUp(pen, run, right, down, size);
        cairo_glyph_path(pen, letters.data(), static_cast<int>(letters.size()));
    }
}

}  // namespace Veltrani::DisplayReport
