#include "DisplayReport/basics/DeepPngPicture.h"

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

constexpr std::size_t PARTS_OF_PIXEL = 3;
/// The picture is compressed piece by piece, and smooth ones hardly shrink more at the slower levels.
constexpr int QUICK_COMPRESSION = 3;

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

/// False when the library has left by a jump. Holds nothing that such a jump would have to destroy.
bool encode(png_structp png, png_infop info, const DeepPngPicture& picture, std::ostream& out) {
    if (setjmp(png_jmpbuf(png)) != 0) {
        return false;
    }
    constexpr int BITS = 16;
    png_set_write_fn(png, &out, appendToStream, flushNothing);
    png_set_compression_level(png, QUICK_COMPRESSION);
    png_set_IHDR(png, info, static_cast<png_uint_32>(picture.width), static_cast<png_uint_32>(picture.height), BITS,
                 PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    if constexpr (std::endian::native == std::endian::little) {
        png_set_swap(png);
    }
    const std::uint16_t* row = picture.colours.data();
    for (std::size_t i = 0; i < picture.height; ++i, row += PARTS_OF_PIXEL * picture.width) {
        png_write_row(png, reinterpret_cast<png_const_bytep>(row));
    }
    png_write_end(png, info);
    return true;
}

[[noreturn]] void refuseDeep(std::string_view reason) {
    // The library reports lack of memory by the words of its message alone.
    if (reason.find("memory") != std::string_view::npos) {
        throw std::bad_alloc();
    }
    throw VeltraniException(L"The picture cannot be encoded: " + fromUtf8OrBytes(std::string(reason)));
}

}  // namespace

void DeepPngPicture::write(std::ostream& out) const {
    if (colours.empty() || colours.size() != PARTS_OF_PIXEL * width * height) {
        refuseDeep("it has no pixels");
    }
    EncodingFault fault;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &fault, noteFault, ignoreWarning);
    png_infop info = png == nullptr ? nullptr : png_create_info_struct(png);
    const bool isWritten = info != nullptr && encode(png, info, *this, out);
    png_destroy_write_struct(&png, &info);
    if (!isWritten) {
        refuseDeep(fault.text.front() == '\0' ? "out of memory" : fault.text.data());
    }
}

}  // namespace Veltrani::DisplayReport
