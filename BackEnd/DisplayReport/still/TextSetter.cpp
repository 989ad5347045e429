#include "DisplayReport/still/TextSetter.h"

#include <pango/pangofc-fontmap.h>

#include <algorithm>
#include <new>
#include <stdexcept>
#include <string_view>

namespace Veltrani::DisplayReport {

namespace {

using FontConfig = std::unique_ptr<FcConfig, Release<FcConfigDestroy>>;

/// The fonts that are installed with the product, and no other: what a still looks like depends on nothing else.
FontConfig ownFonts() {
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
    const FcFontSet* const fonts = FcConfigGetFonts(config.get(), FcSetSystem);
    const bool isThere =
        fonts != nullptr && std::any_of(fonts->fonts, fonts->fonts + fonts->nfont, [](FcPattern* font) {
            FcChar8* family = nullptr;
            return FcPatternGetString(font, FC_FAMILY, 0, &family) == FcResultMatch &&
                   std::string_view(reinterpret_cast<const char*>(family)) == TextSetter::FAMILY;
        });
    if (!isThere) {
        throw std::runtime_error(std::string("Unable to set texts: the font ") + TextSetter::FAMILY +
                                 " is not there; install the package fonts-dejavu-core");
    }
    return config;
}

}  // namespace

TextSetter::TextSetter() : m_config(ownFonts()) {
    // A thread of Pango initialises the process's own configuration, which is this one then and not the user's.
    FcConfigSetCurrent(m_config.get());
    m_fonts.reset(pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT));
    if (!m_fonts) {
        throw std::runtime_error("Unable to set texts: Cairo has been built without fonts of files");
    }
    pango_fc_font_map_set_config(PANGO_FC_FONT_MAP(m_fonts.get()), m_config.get());
    m_context = contextFor(nullptr);
}

Object<PangoContext> TextSetter::contextFor(cairo_t* pen) const {
    Object<PangoContext> context(pango_font_map_create_context(m_fonts.get()));
    const std::unique_ptr<cairo_font_options_t, Release<cairo_font_options_destroy>> options(
        cairo_font_options_create());
    cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
    pango_cairo_context_set_font_options(context.get(), options.get());
    // Neither the language of the user nor the surface may change where letters stand.
    pango_context_set_language(context.get(), pango_language_from_string("en"));
    pango_context_set_base_dir(context.get(), PANGO_DIRECTION_WEAK_LTR);
    pango_context_set_round_glyph_positions(context.get(), FALSE);
    if (pen != nullptr) {
        pango_cairo_update_context(pen, context.get());
    }
    return context;
}

Object<PangoLayout> TextSetter::layout(PangoContext* context, const std::string& text, double size) {
    Object<PangoLayout> layout(pango_layout_new(context));
    const std::unique_ptr<PangoFontDescription, Release<pango_font_description_free>> font(
        pango_font_description_new());
    pango_font_description_set_family_static(font.get(), FAMILY);
    pango_font_description_set_absolute_size(font.get(), size / CAPITAL_SHARE * PANGO_SCALE);
    pango_layout_set_font_description(layout.get(), font.get());
    pango_layout_set_single_paragraph_mode(layout.get(), TRUE);
    const std::unique_ptr<PangoAttrList, Release<pango_attr_list_unref>> attributes(pango_attr_list_new());
    // The forms of letters that some languages prefer would follow the language of the user.
    pango_attr_list_insert(attributes.get(), pango_attr_font_features_new("locl=0"));
    pango_layout_set_attributes(layout.get(), attributes.get());
    pango_layout_set_text(layout.get(), text.data(), static_cast<int>(text.size()));
    return layout;
}

double TextSetter::widthOf(PangoLayout* layout) {
    PangoRectangle logical{};
    pango_layout_get_extents(layout, nullptr, &logical);
    return static_cast<double>(logical.width) / PANGO_SCALE;
}

double TextSetter::width(const std::string& text, double size) const {
    return widthOf(layout(m_context.get(), text, size).get());
}

std::vector<std::size_t> TextSetter::cuts(const std::string& text, double size) const {
    const auto whole = layout(m_context.get(), text, size);
    int count = 0;
    const PangoLogAttr* const attributes = pango_layout_get_log_attrs_readonly(whole.get(), &count);
    std::vector<std::size_t> places;
    const char* at = text.data();
    for (int i = 0; i < count; ++i) {
        if (attributes[i].is_cursor_position != 0) {
            places.push_back(static_cast<std::size_t>(at - text.data()));
        }
        at = i + 1 < count ? g_utf8_next_char(at) : at;
    }
    return places;
}

}  // namespace Veltrani::DisplayReport
