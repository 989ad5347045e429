#include "DisplayReport/still/FontSet.h"

#include <cairo-ft.h>

#include <algorithm>
#include <cerrno>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>

namespace Veltrani::DisplayReport {

namespace {

using FontConfig = std::unique_ptr<FcConfig, Release<FcConfigDestroy>>;

std::string textOf(const FcPattern* description, const char* property) {
    FcChar8* text = nullptr;
    const bool isThere = FcPatternGetString(description, property, 0, &text) == FcResultMatch;
    return isThere ? reinterpret_cast<const char*>(text) : std::string();
}

int indexOf(const FcPattern* description) {
    int index = 0;
    return FcPatternGetInteger(description, FC_INDEX, 0, &index) == FcResultMatch ? index : 0;
}

[[noreturn]] void failToRead(const FcPattern* description, bool isShortOfMemory) {
    if (isShortOfMemory) {
        throw std::bad_alloc();
    }
    throw std::runtime_error("Unable to set texts: the font file " + textOf(description, FC_FILE) +
                             " cannot be read; install its package again");
}

FontConfig installedFonts() {
    FontConfig config(FcConfigCreate());
    if (!config) {
        throw std::bad_alloc();
    }
    constexpr std::string_view DESCRIPTION = SM_STILL_FONTS;
    const auto* const text = reinterpret_cast<const FcChar8*>(DESCRIPTION.data());
    if (FcConfigParseAndLoadFromMemory(config.get(), text, FcTrue) == FcFalse ||
        FcConfigBuildFonts(config.get()) == FcFalse) {
        throw std::bad_alloc();
    }
    return config;
}

/// The descriptions of the fonts, the usual one first.
std::vector<FcPattern*> inOrder(FcConfig* config) {
    std::vector<FcPattern*> fonts;
    if (const FcFontSet* const all = FcConfigGetFonts(config, FcSetSystem)) {
        fonts.assign(all->fonts, all->fonts + all->nfont);
    }
    std::sort(fonts.begin(), fonts.end(), [](const FcPattern* a, const FcPattern* b) {
        const auto key = [](const FcPattern* font) {
            return std::tuple(textOf(font, FC_FAMILY) != FontSet::FAMILY, textOf(font, FC_FILE), indexOf(font));
        };
        return key(a) < key(b);
    });
    if (fonts.empty() || textOf(fonts.front(), FC_FAMILY) != FontSet::FAMILY) {
        throw std::runtime_error(std::string("Unable to set texts: the font ") + FontSet::FAMILY +
                                 " is not there; install the package fonts-dejavu-core");
    }
    return fonts;
}

}  // namespace

Font::Font(FcPattern* description) : m_description(description) {
    FcCharSet* characters = nullptr;
    if (FcPatternGetCharSet(description, FC_CHARSET, 0, &characters) == FcResultMatch) {
        m_characters = characters;
    }
}

bool Font::has(char32_t character) const {
    return m_characters != nullptr && FcCharSetHasChar(m_characters, character) == FcTrue;
}

bool Font::hasAll(std::span<const char32_t> characters) const {
    return std::all_of(characters.begin(), characters.end(), [this](char32_t one) { return has(one); });
}

hb_font_t* Font::shapes() const {
    if (!m_shapes) {
        errno = 0;
        const std::unique_ptr<hb_blob_t, Release<hb_blob_destroy>> file(
            hb_blob_create_from_file_or_fail(textOf(m_description, FC_FILE).c_str()));
        if (!file) {
            failToRead(m_description, errno == ENOMEM);
        }
        const std::unique_ptr<hb_face_t, Release<hb_face_destroy>> face(
            hb_face_create(file.get(), static_cast<unsigned int>(indexOf(m_description))));
        if (hb_face_get_glyph_count(face.get()) == 0) {
            failToRead(m_description, face.get() == hb_face_get_empty());
        }
        m_shapes.reset(hb_font_create(face.get()));
    }
    return m_shapes.get();
}

double Font::unitsPerSize() const {
    return hb_face_get_upem(hb_font_get_face(shapes()));
}

cairo_font_face_t* Font::face() const {
    if (!m_face) {
        m_face.reset(cairo_ft_font_face_create_for_pattern(m_description));
        if (const cairo_status_t status = cairo_font_face_status(m_face.get()); status != CAIRO_STATUS_SUCCESS) {
            m_face.reset();
            failToRead(m_description, status == CAIRO_STATUS_NO_MEMORY);
        }
    }
    return m_face.get();
}

FontSet::FontSet() : m_config(installedFonts()) {
    for (FcPattern* const font : inOrder(m_config.get())) {
        m_fonts.emplace_back(font);
    }
}

const Font* FontSet::fontFor(std::span<const char32_t> characters, const Font* before) const {
    if (usual().hasAll(characters)) {
        return &usual();
    }
    if (before != nullptr && before->hasAll(characters)) {
        return before;
    }
    const auto all =
        std::find_if(m_fonts.begin(), m_fonts.end(), [&](const Font& font) { return font.hasAll(characters); });
    if (all != m_fonts.end()) {
        return &*all;
    }
    const auto first =
        std::find_if(m_fonts.begin(), m_fonts.end(), [&](const Font& font) { return font.has(characters.front()); });
    return first == m_fonts.end() ? nullptr : &*first;
}

}  // namespace Veltrani::DisplayReport
