#include "DisplayReport/basics/PngPicture.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

#include <png.h>

#include <new>
#include <ostream>
#include <string>
#include <string_view>

namespace Veltrani::DisplayReport {

namespace {

/// The library reports lack of memory by the words of its message alone.
bool namesMemory(std::string_view reason) {
    return reason.find("memory") != std::string_view::npos;
}

[[noreturn]] void refuse(const std::string& reason) {
    throw VeltraniException(L"The picture cannot be encoded: " + fromUtf8OrBytes(reason));
}

}  // namespace

void PngPicture::write(std::ostream& out) const {
    constexpr std::size_t PARTS = 3;
    if (colours.empty() || colours.size() != PARTS * width * height) {
        refuse("it has no pixels");
    }
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(width);
    image.height = static_cast<png_uint_32>(height);
    image.format = PNG_FORMAT_RGB;
    constexpr int KEEP_8_BITS = 0;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    std::string bytes(size, '\0');
    if (png_image_write_to_memory(&image, bytes.data(), &size, KEEP_8_BITS, colours.data(), 0, nullptr) == 0) {
        if (namesMemory(image.message)) {
            throw std::bad_alloc();
        }
        refuse(image.message);
    }
    out.write(bytes.data(), static_cast<std::streamsize>(size));
}

}  // namespace Veltrani::DisplayReport
