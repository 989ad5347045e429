#include "ExportFiles/ContentPicture.h"

#include "Common/RegularFile.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "ExportFiles/PngReader.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Veltrani::ExportFiles {

namespace {

constexpr std::size_t PARTS = 3;
/// No PNG file of `MOST_PIXELS` is larger, unless it has more than pictures in it.
constexpr std::size_t MOST_BYTES = std::size_t{1} << 30U;

[[noreturn]] void refusePicture(const std::string& name, const std::string& what) {
    throw VeltraniParseException(fromUtf8OrBytes(name + ": " + what));
}

/// Between 0 and `count` - 1.
std::size_t inside(double pixel, std::size_t count) {
    return static_cast<std::size_t>(std::clamp(pixel, 0.0, static_cast<double>(count - 1)));
}

}  // namespace

ContentPicture ContentPicture::read(const std::string& utf8Path) {
    const std::string bytes = RegularFile(utf8Path).readAll(MOST_BYTES);
    if (bytes.size() > MOST_BYTES) {
        refusePicture(utf8Path, "is larger than " + std::to_string(MOST_BYTES) + " bytes: name a smaller picture");
    }
    return parse(bytes, utf8Path);
}

ContentPicture ContentPicture::parse(std::string_view bytes, const std::string& name, std::size_t mostPixels) {
    PngPixels pixels = pngPixels(bytes, name, PngParts::ANY_AS_RGB_8, mostPixels);
    return {pixels.width, pixels.height, std::move(pixels.codes8)};
}

ContentPicture::ContentPicture(std::size_t width, std::size_t height, std::vector<unsigned char> colours)
    : m_width(width), m_height(height), m_colours(std::move(colours)) {
    if (width == 0 || height == 0 || m_colours.size() != PARTS * width * height) {
        throw VeltraniException(L"A picture has three parts for each of its pixels, one pixel at least");
    }
}

ContentPicture::Colour ContentPicture::at(const Point<double, 2>& place, bool wrapsAround) const {
    double u = place[0];
    if (wrapsAround) {
        u -= std::floor(u);
    }
    const bool isInside = u >= 0 && u <= 1 && place[1] >= 0 && place[1] <= 1;
    if (!isInside) {
        return {};
    }
    constexpr double MIDDLE = 0.5;
    const double right = u * static_cast<double>(m_width) - MIDDLE;
    const double down = (1 - place[1]) * static_cast<double>(m_height) - MIDDLE;
    const double left = std::floor(right);
    const double top = std::floor(down);
    const auto column = [&](double pixel) {
        const auto width = static_cast<double>(m_width);
        return inside(!wrapsAround     ? pixel
                      : pixel < 0      ? pixel + width
                      : pixel >= width ? pixel - width
                                       : pixel,
                      m_width);
    };
    const std::size_t columns[] = {column(left), column(left + 1)};
    const std::size_t rows[] = {inside(top, m_height), inside(top + 1, m_height)};
    Colour colour{};
    for (std::size_t part = 0; part < PARTS; ++part) {
        const auto value = [&](std::size_t x, std::size_t y) -> double {
            return m_colours[PARTS * (rows[y] * m_width + columns[x]) + part];
        };
        const double upper = value(0, 0) + (right - left) * (value(1, 0) - value(0, 0));
        const double lower = value(0, 1) + (right - left) * (value(1, 1) - value(0, 1));
        colour[part] = static_cast<unsigned char>(std::lround(upper + (down - top) * (lower - upper)));
    }
    return colour;
}

}  // namespace Veltrani::ExportFiles
