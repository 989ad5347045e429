#pragma once

#include <fontconfig/fontconfig.h>
#include <pango/pangocairo.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace Veltrani::DisplayReport {

/// Frees what a C library has made.
template <auto FREE>
struct Release {
    template <class T>
    void operator()(T* object) const {
        FREE(object);
    }
};
template <class T>
using Object = std::unique_ptr<T, Release<g_object_unref>>;

/// Texts of one line each, in the fonts that are installed with the product and in no other. Belongs to the module of
/// stills.
class TextSetter {
public:
    /// The font of everything that it has a character for; the others stand in for what it lacks.
    static constexpr const char* FAMILY = "DejaVu Sans";
    /// Height of a capital letter of that font as a share of its size.
    static constexpr double CAPITAL_SHARE = 0.729;

    /// Throws `std::runtime_error` when the font is not installed, `std::bad_alloc` when memory runs out.
    TextSetter();

    /// @param pen of the surface that texts are drawn on; null for measuring
    [[nodiscard]] Object<PangoContext> contextFor(cairo_t* pen) const;
    [[nodiscard]] static Object<PangoLayout> layout(PangoContext* context, const std::string& text, double size);
    [[nodiscard]] static double widthOf(PangoLayout* layout);
    [[nodiscard]] double width(const std::string& text, double size) const;
    /// The numbers of bytes after which a text may be cut, ascending.
    [[nodiscard]] std::vector<std::size_t> cuts(const std::string& text, double size) const;

private:
    std::unique_ptr<FcConfig, Release<FcConfigDestroy>> m_config;
    Object<PangoFontMap> m_fonts;
    Object<PangoContext> m_context;
};

}  // namespace Veltrani::DisplayReport
