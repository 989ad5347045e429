#include "ExportFiles/WarpedContent.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

namespace Veltrani::ExportFiles {

namespace {

using DisplayExport::ChannelWarp;
using DisplayExport::WarpNode;
using DisplayExport::WarpPiece;
using DisplayReport::PngPicture;
using P2 = Point<double, 2>;

constexpr std::size_t PARTS = 3;
constexpr double MIDDLE = 0.5;
/// Of a triangle: a pixel whose middle lies on the edge between two of them belongs to both.
constexpr double ON_EDGE = -1e-9;

/// Draws on the picture of one channel. Pixels are counted from the bottom left one.
class ContentPainter {
public:
    ContentPainter(const ChannelWarp& warp, const ContentStrip& strip, const ContentPicture& content)
        : m_strip(strip),
          m_content(content),
          m_picture{static_cast<std::size_t>(warp.pixels()[0]), static_cast<std::size_t>(warp.pixels()[1]), {}} {
        m_picture.colours.resize(PARTS * m_picture.width * m_picture.height);
    }

    void paintPixels(const ChannelWarp& warp) {
        for (std::size_t row = 0; row < warp.rows(); ++row) {
            for (std::size_t column = 0; column < warp.columns(); ++column) {
                const WarpNode& node = warp.at(column, row);
                if (node.isUsable()) {
                    paint(column, row, node.content, node.face);
                }
            }
        }
    }

    void paint(const WarpPiece& piece) {
        const std::array<P2, 3> corners{pixelOf(piece.corners[0].picture), pixelOf(piece.corners[1].picture),
                                        pixelOf(piece.corners[2].picture)};
        const double area = areaOf(corners[0], corners[1], corners[2]);
        if (!(area > 0)) {
            return;
        }
        const auto [left, right] = std::minmax({corners[0][0], corners[1][0], corners[2][0]});
        const auto [bottom, top] = std::minmax({corners[0][1], corners[1][1], corners[2][1]});
        const std::size_t lastRow = behind(top, m_picture.height);
        const std::size_t lastColumn = behind(right, m_picture.width);
        for (std::size_t row = firstOf(bottom); row < lastRow; ++row) {
            for (std::size_t column = firstOf(left); column < lastColumn; ++column) {
                const P2 middle{static_cast<double>(column) + MIDDLE, static_cast<double>(row) + MIDDLE};
                const double a = areaOf(middle, corners[1], corners[2]) / area;
                const double b = areaOf(corners[0], middle, corners[2]) / area;
                const double c = 1 - a - b;
                if (a >= ON_EDGE && b >= ON_EDGE && c >= ON_EDGE) {
                    paint(column, row,
                          a * piece.corners[0].content + b * piece.corners[1].content + c * piece.corners[2].content,
                          piece.face);
                }
            }
        }
    }

    [[nodiscard]] PngPicture take() { return std::move(m_picture); }

private:
    [[nodiscard]] P2 pixelOf(const P2& picture) const {
        return {picture[0] * static_cast<double>(m_picture.width), picture[1] * static_cast<double>(m_picture.height)};
    }

    /// Twice the area, above zero for corners that follow one another counter-clockwise.
    static double areaOf(const P2& a, const P2& b, const P2& c) {
        return (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]);
    }

    /// The first pixel whose middle may lie there or beyond.
    static std::size_t firstOf(double place) {
        return static_cast<std::size_t>(std::max(std::floor(place - MIDDLE), 0.0));
    }

    /// The one behind the last pixel whose middle may lie before that place.
    static std::size_t behind(double place, std::size_t count) {
        return static_cast<std::size_t>(std::clamp(std::ceil(place + MIDDLE), 0.0, static_cast<double>(count)));
    }

    void paint(std::size_t column, std::size_t row, const P2& content, std::uint8_t face) {
        const ContentPicture::Colour colour = m_content.at(m_strip.wrappedPlaceOf(content, face), m_strip.wrapsAround);
        const std::size_t down = m_picture.height - 1 - row;
        std::copy(colour.begin(), colour.end(),
                  m_picture.colours.begin() + static_cast<std::ptrdiff_t>(PARTS * (down * m_picture.width + column)));
    }

    const ContentStrip& m_strip;
    const ContentPicture& m_content;
    PngPicture m_picture;
};

}  // namespace

PngPicture warpedContent(const ChannelWarp& warp, const ContentStrip& strip, const ContentPicture& content) {
    ContentPainter painter(warp, strip, content);
    if (warp.reachesCorners()) {
        warp.forEachPiece([&painter](const WarpPiece& piece) { painter.paint(piece); });
    } else {
        painter.paintPixels(warp);
    }
    return painter.take();
}

}  // namespace Veltrani::ExportFiles
