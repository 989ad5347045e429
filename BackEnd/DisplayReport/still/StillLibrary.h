#pragma once

#include <iosfwd>
#include <string>

namespace Veltrani::DisplayReport {

struct PaintedDrawing;

/// What is done by the drawing libraries, opened with the first still: they bring other shared libraries into the
/// process, which no other command needs. The code that calls them is in a module of its own beside the libraries.
///
/// Texts are set in the fonts that the product names and in no other, without regard to the language and the font
/// configuration of the user, so that equal drawings give equal bytes. No thread is started, and the font configuration
/// of the process stays as it is.
///
/// Texts are UTF-8 without control characters (`onOneLine`).
class StillLibrary {
public:
    enum class Format { PNG, SVG, PDF };

    StillLibrary() = default;
    StillLibrary(const StillLibrary&) = delete;
    StillLibrary& operator=(const StillLibrary&) = delete;
    virtual ~StillLibrary() = default;

    /// Opens the module at the first call; it stays open. Throws `VeltraniException` when it cannot be opened,
    /// `std::runtime_error` when its fonts are not installed, `std::bad_alloc` when memory runs out; the next call
    /// tries again.
    [[nodiscard]] static const StillLibrary& get();

    /// Returns the width of a line of text. `size` is the height of a capital letter; both in pixels.
    [[nodiscard]] virtual double width(const std::string& utf8, double size) const = 0;
    /// Returns the text when it is no wider than `width`, else the longest beginning that is together with "...". Never
    /// cuts inside what a reader takes for one character; not below "...".
    [[nodiscard]] virtual std::string fitting(const std::string& utf8, double size, double width) const = 0;
    /// Writes a file of one format. Throws `std::runtime_error` when the drawing cannot be encoded, `std::bad_alloc`
    /// when memory runs out; a stream that takes no more goes bad.
    virtual void write(const PaintedDrawing& drawing, Format format, std::ostream& out) const = 0;
};

}  // namespace Veltrani::DisplayReport
