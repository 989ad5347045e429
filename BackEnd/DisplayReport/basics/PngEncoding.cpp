#include "DisplayReport/basics/PngEncoding.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

#include <png.h>

#include <array>
#include <bit>
#include <csetjmp>
#include <cstring>
#include <new>
#include <ostream>
#include <string>
#include <string_view>

namespace Veltrani::DisplayReport {

namespace {

/// The picture is compressed piece by piece. Exports hardly shrink more at the slower levels, and at the next quicker
/// one they take as long and are a quarter larger.
constexpr int QUICK_COMPRESSION = 4;
/// Each row as its differences from the one above it. To choose a filter for each row takes as long again, and makes
/// the files of an export larger rather than smaller.
constexpr int FILTER = PNG_FILTER_UP;
constexpr int DEEP_BITS = 16;

/// What the library reports before it leaves by a jump: no object that would have to be destroyed.
struct EncodingFault {
    std::array<char, 128> text{};
};

extern "C" {

void noteFault(png_structp png, png_const_charp text) {
    auto& fault = *static_cast<EncodingFault*>(png_get_error_ptr(png));
    std::strncpy(fault.text.data(), text, fault.text.size() - 1);
    png_longjmp(png, 1);
}

void ignoreWarning(png_structp /*png*/, png_const_charp /*text*/) {}

void appendToStream(png_structp png, png_bytep bytes, std::size_t count) {
    auto& out = *static_cast<std::ostream*>(png_get_io_ptr(png));
    out.write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(count));
}

void flushNothing(png_structp /*png*/) {}
}

int colourTypeOf(PngForm::Parts parts) {
    switch (parts) {
        case PngForm::Parts::GREY:
            return PNG_COLOR_TYPE_GRAY;
        case PngForm::Parts::GREY_ALPHA:
            return PNG_COLOR_TYPE_GRAY_ALPHA;
        case PngForm::Parts::COLOUR:
            return PNG_COLOR_TYPE_RGB;
    }
    return PNG_COLOR_TYPE_RGB;
}

/// False when the library has left by a jump. Holds nothing that such a jump would have to destroy.
bool encode(png_structp png, png_infop info, const PngForm& form, const void* pixels, std::ostream& out) {
    if (setjmp(png_jmpbuf(png)) != 0) {
        return false;
    }
    png_set_write_fn(png, &out, appendToStream, flushNothing);
    png_set_compression_level(png, QUICK_COMPRESSION);
    png_set_filter(png, PNG_FILTER_TYPE_BASE, FILTER);
    png_set_IHDR(png, info, static_cast<png_uint_32>(form.width), static_cast<png_uint_32>(form.height), form.bits,
                 colourTypeOf(form.parts), PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (form.isSrgb) {
        png_set_sRGB(png, info, PNG_sRGB_INTENT_PERCEPTUAL);
    }
    png_write_info(png, info);
    if (std::endian::native == std::endian::little && form.bits == DEEP_BITS) {
        png_set_swap(png);
    }
    const auto* row = static_cast<png_const_bytep>(pixels);
    for (std::size_t i = 0; i < form.height; ++i, row += form.bytes() * form.width) {
        png_write_row(png, row);
    }
    png_write_end(png, info);
    return true;
}

[[noreturn]] void refuseEncoding(std::string_view reason) {
    // The library reports lack of memory by the words of its message alone.
    if (reason.find("memory") != std::string_view::npos) {
        throw std::bad_alloc();
    }
    throw VeltraniException(L"The picture cannot be encoded: " + fromUtf8OrBytes(std::string(reason)));
}

}  // namespace

void encodePng(const PngForm& form, const void* pixels, std::ostream& out) {
    if (form.width == 0 || form.height == 0) {
        refuseEncoding("it has no pixels");
    }
    EncodingFault fault;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &fault, noteFault, ignoreWarning);
    png_infop info = png == nullptr ? nullptr : png_create_info_struct(png);
    const bool isWritten = info != nullptr && encode(png, info, form, pixels, out);
    png_destroy_write_struct(&png, &info);
    if (!isWritten) {
        refuseEncoding(fault.text.front() == '\0' ? "out of memory" : fault.text.data());
    }
}

}  // namespace Veltrani::DisplayReport
