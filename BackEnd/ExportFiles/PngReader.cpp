#include "ExportFiles/PngReader.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

#include <png.h>

#include <new>

namespace Veltrani::ExportFiles {

namespace {

/// How the library names what is wanted, and what the head of a file states.
struct PngLayout {
    png_uint_32 format;
    int bits;    ///< 0: whatever the file has
    int colour;  ///< PNG_COLOR_TYPE_...
    const char* words;
};

/// A file that states no gamma is taken as sRGB with 8 bits and as linear with 16, which is how its numbers are handed
/// on as they are. Opacities never have a gamma.
PngLayout layoutOf(PngParts parts) {
    switch (parts) {
        case PngParts::GREY_8:
            return {PNG_FORMAT_GRAY, 8, PNG_COLOR_TYPE_GRAY, "8 bits of grey"};
        case PngParts::GREY_ALPHA_8:
            return {PNG_FORMAT_GA, 8, PNG_COLOR_TYPE_GRAY_ALPHA, "8 bits of grey and of alpha"};
        case PngParts::GREY_16:
            return {PNG_FORMAT_LINEAR_Y, 16, PNG_COLOR_TYPE_GRAY, "16 bits of grey"};
        case PngParts::GREY_ALPHA_16:
            return {PNG_FORMAT_LINEAR_Y_ALPHA, 16, PNG_COLOR_TYPE_GRAY_ALPHA, "16 bits of grey and of alpha"};
        case PngParts::RGB_16:
            return {PNG_FORMAT_LINEAR_RGB, 16, PNG_COLOR_TYPE_RGB, "16 bits of each colour"};
        case PngParts::ANY_AS_RGB_8:
            break;
    }
    return {PNG_FORMAT_RGB, 0, 0, ""};
}

[[noreturn]] void refusePng(const std::string& name, const std::string& what) {
    throw VeltraniParseException(fromUtf8OrBytes(name + ": " + what));
}

/// The library reports lack of memory by the words of its message alone.
[[noreturn]] void refuseReading(const std::string& name, const char* reason) {
    const std::string text = reason;
    if (text.find("ut of memory") != std::string::npos || text.find("nsufficient memory") != std::string::npos) {
        throw std::bad_alloc();
    }
    refusePng(name, "is no picture that can be shown (" + text + "): name a whole PNG file");
}

/// Releases what the library keeps of a file that was begun.
class PngImage {
public:
    PngImage(std::string_view bytes, const std::string& name) {
        m_image.version = PNG_IMAGE_VERSION;
        if (png_image_begin_read_from_memory(&m_image, bytes.data(), bytes.size()) == 0) {
            refuseReading(name, m_image.message);
        }
    }
    ~PngImage() { png_image_free(&m_image); }
    PngImage(const PngImage&) = delete;
    PngImage& operator=(const PngImage&) = delete;

    [[nodiscard]] std::size_t width() const { return m_image.width; }
    [[nodiscard]] std::size_t height() const { return m_image.height; }

    void read(const std::string& name, png_uint_32 format, void* pixels) {
        m_image.format = format;
        const png_color black{0, 0, 0};
        if (png_image_finish_read(&m_image, &black, pixels, 0, nullptr) == 0) {
            refuseReading(name, m_image.message);
        }
    }

private:
    png_image m_image{};
};

/// The head of a file that the library has accepted stands at its beginning.
void requireLayout(std::string_view bytes, const std::string& name, const PngLayout& layout) {
    constexpr std::size_t BITS = 24;
    constexpr std::size_t COLOUR = 25;
    if (layout.bits != 0 && (bytes.size() <= COLOUR || static_cast<unsigned char>(bytes[BITS]) != layout.bits ||
                             static_cast<unsigned char>(bytes[COLOUR]) != layout.colour)) {
        refusePng(name, "is no PNG file of " + std::string(layout.words) + ", which it has to be: export it again");
    }
}

}  // namespace

PngPixels pngPixels(std::string_view bytes, const std::string& name, PngParts parts, std::size_t mostPixels) {
    PngImage image(bytes, name);
    const PngLayout layout = layoutOf(parts);
    requireLayout(bytes, name, layout);
    PngPixels pixels{image.width(), image.height(), {}, {}};
    const std::size_t count = pixels.width * pixels.height;
    const std::size_t numbers = count * PNG_IMAGE_SAMPLE_CHANNELS(layout.format);
    if (count > mostPixels) {
        refusePng(name, "has " + std::to_string(pixels.width) + " x " + std::to_string(pixels.height) +
                            " pixels: at most " + std::to_string(mostPixels) + " can be shown");
    }
    constexpr int DEEP = 16;
    if (layout.bits == DEEP) {
        pixels.codes16.resize(numbers);
        image.read(name, layout.format, pixels.codes16.data());
    } else {
        pixels.codes8.resize(numbers);
        image.read(name, layout.format, pixels.codes8.data());
    }
    return pixels;
}

}  // namespace Veltrani::ExportFiles
