#include "ExportFiles/PixelWarp.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "ExportFiles/ContentPicture.h"
#include "ExportFiles/PngReader.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace Veltrani::ExportFiles {

namespace {

using P2 = Point<double, 2>;

constexpr std::size_t PARTS = 3;
constexpr double WHITE = 65535;

[[noreturn]] void refusePfm(const std::string& path, const std::string& found, const std::string& expected) {
    throw VeltraniParseException(
        fromUtf8OrBytes(path + ": found " + found + ", expected " + expected + ": export the display again"));
}

/// What stands before the next line end, which is taken off as well.
std::string_view takeLine(std::string_view& bytes) {
    const std::size_t end = std::min(bytes.find('\n'), bytes.size());
    const std::string_view line = bytes.substr(0, end);
    bytes.remove_prefix(std::min(end + 1, bytes.size()));
    return line;
}

/// "W H"; zero where that is not there.
Point<int, 2> sizeOf(std::string_view line) {
    Point<int, 2> size{};
    const char* const end = line.data() + line.size();
    const auto width = std::from_chars(line.data(), end, size[0]);
    if (width.ec != std::errc() || width.ptr == end || *width.ptr != ' ') {
        return {};
    }
    const auto height = std::from_chars(width.ptr + 1, end, size[1]);
    return height.ec == std::errc() && height.ptr == end && size[0] > 0 && size[1] > 0 ? size : Point<int, 2>{};
}

float numberAt(std::string_view bytes, std::size_t i) {
    std::uint32_t bits = 0;
    for (std::size_t byte = sizeof bits; byte-- > 0;) {
        bits = bits << 8U | static_cast<unsigned char>(bytes[i * sizeof bits + byte]);
    }
    return std::bit_cast<float>(bits);
}

}  // namespace

PixelWarp::PixelWarp(const Point<int, 2>& pixels, bool wrapsAround) : m_pixels(pixels), m_wrapsAround(wrapsAround) {
    m_entries.resize(static_cast<std::size_t>(pixels[0]) * static_cast<std::size_t>(pixels[1]));
}

std::unique_ptr<const PixelWarp> PixelWarp::ofPfm(std::string_view bytes, const std::string& path, bool wrapsAround) {
    if (takeLine(bytes) != "PF") {
        refusePfm(path, "something else in line 1", "PF, a portable float map in colour");
    }
    const Point<int, 2> size = sizeOf(takeLine(bytes));
    const auto count = static_cast<std::size_t>(size[0]) * static_cast<std::size_t>(size[1]);
    if (count == 0 || count > ContentPicture::MOST_PIXELS) {
        refusePfm(path, "something else in line 2",
                  "width and height, at most " + std::to_string(ContentPicture::MOST_PIXELS) + " pixels together");
    }
    if (takeLine(bytes) != "-1.0") {
        refusePfm(path, "something else in line 3", "-1.0, for numbers whose first byte is the least one");
    }
    if (bytes.size() != count * PARTS * sizeof(float)) {
        refusePfm(path, std::to_string(bytes.size()) + " bytes of numbers",
                  std::to_string(count * PARTS * sizeof(float)));
    }
    std::unique_ptr<PixelWarp> warp(new PixelWarp(size, wrapsAround));
    for (std::size_t i = 0; i < count; ++i) {
        const P2 content{numberAt(bytes, PARTS * i), numberAt(bytes, PARTS * i + 1)};
        warp->m_entries[i] = {
            content, numberAt(bytes, PARTS * i + 2) > 0 && std::isfinite(content[0]) && std::isfinite(content[1])};
    }
    return warp;
}

std::unique_ptr<const PixelWarp> PixelWarp::ofPng(std::string_view bytes, const std::string& path, bool wrapsAround) {
    const PngPixels pixels = pngPixels(bytes, path, PngParts::RGB_16, ContentPicture::MOST_PIXELS);
    std::unique_ptr<PixelWarp> warp(
        new PixelWarp({static_cast<int>(pixels.width), static_cast<int>(pixels.height)}, wrapsAround));
    for (std::size_t row = 0; row < pixels.height; ++row) {
        const std::size_t down = pixels.height - 1 - row;
        for (std::size_t column = 0; column < pixels.width; ++column) {
            const std::uint16_t* const code = &pixels.codes16[PARTS * (down * pixels.width + column)];
            warp->m_entries[row * pixels.width + column] = {{code[0] / WHITE, code[1] / WHITE}, code[2] > 0};
        }
    }
    return warp;
}

std::optional<PlayerWarp::Shown> PixelWarp::shownAt(const P2& picture) const {
    constexpr double MIDDLE = 0.5;
    const auto first = [](double along, int count) {
        return std::clamp(static_cast<int>(std::floor(along)), 0, std::max(count - 2, 0));
    };
    const double right = picture[0] * m_pixels[0] - MIDDLE;
    const double up = picture[1] * m_pixels[1] - MIDDLE;
    const int column = first(right, m_pixels[0]);
    const int row = first(up, m_pixels[1]);
    std::array<P2, 4> corners;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const int x = std::min(column + static_cast<int>(i % 2), m_pixels[0] - 1);
        const int y = std::min(row + static_cast<int>(i / 2), m_pixels[1] - 1);
        const Entry& entry = m_entries[static_cast<std::size_t>(y) * static_cast<std::size_t>(m_pixels[0]) +
                                       static_cast<std::size_t>(x)];
        if (!entry.isMapped) {
            return std::nullopt;
        }
        corners[i] = entry.content;
        if (m_wrapsAround) {
            corners[i][0] -= std::round(corners[i][0] - corners[0][0]);
        }
    }
    const double across = right - column;
    const double along = up - row;
    const P2 bottom = corners[1] - corners[0];
    const P2 top = corners[3] - corners[2];
    const P2 below = corners[0] + across * bottom;
    const P2 above = corners[2] + across * top;
    return Shown{below + along * (above - below), (bottom + along * (top - bottom)) * static_cast<double>(m_pixels[0]),
                 (above - below) * static_cast<double>(m_pixels[1])};
}

}  // namespace Veltrani::ExportFiles
