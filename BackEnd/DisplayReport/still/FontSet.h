#pragma once

#include <cairo.h>
#include <fontconfig/fontconfig.h>
#include <hb.h>

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

namespace Veltrani::DisplayReport {

/// Releases what a C library has made.
template <auto RELEASE>
struct Release {
    template <class T>
    void operator()(T* object) const {
        RELEASE(object);
    }
};

/// A file of letters, read when a text first needs it. Belongs to the module of stills.
class Font {
public:
    /// @param description with the name of the file and its characters; must outlive the font
    explicit Font(FcPattern* description);

    [[nodiscard]] bool has(char32_t character) const;
    [[nodiscard]] bool hasAll(std::span<const char32_t> characters) const;

    /// The outlines and rules that texts are set by, in units of the font. Throws `std::runtime_error` when the file
    /// cannot be read.
    [[nodiscard]] hb_font_t* shapes() const;
    /// Height of a line of letters in units of the font.
    [[nodiscard]] double unitsPerSize() const;
    /// The same file for drawing. Throws as `shapes`.
    [[nodiscard]] cairo_font_face_t* face() const;

private:
    FcPattern* m_description;
    const FcCharSet* m_characters = nullptr;
    mutable std::unique_ptr<hb_font_t, Release<hb_font_destroy>> m_shapes;
    mutable std::unique_ptr<cairo_font_face_t, Release<cairo_font_face_destroy>> m_face;
};

/// The fonts that are installed with the product, and no other: what a still looks like depends on nothing else. The
/// font configuration of the process and of the user is neither read nor changed.
class FontSet {
public:
    /// The font of everything that it has a character for; the others stand in for what it lacks.
    static constexpr const char* FAMILY = "DejaVu Sans";
    /// Height of a capital letter of that font as a share of its size.
    static constexpr double CAPITAL_SHARE = 0.729;

    /// Throws `std::runtime_error` when the font is not installed, `std::bad_alloc` when memory runs out.
    FontSet();

    /// The font for a character and the marks that belong to it: the usual one, else the one that is given, else the
    /// first that has them all, or the character at least. Null where none has it.
    [[nodiscard]] const Font* fontFor(std::span<const char32_t> characters, const Font* before) const;
    [[nodiscard]] const Font& usual() const { return m_fonts.front(); }

private:
    std::unique_ptr<FcConfig, Release<FcConfigDestroy>> m_config;
    std::vector<Font> m_fonts;  ///< the usual one, then by the names of their files
};

}  // namespace Veltrani::DisplayReport
