#include "DisplayReport/PngWarpWriter.h"

#include "DisplayReport/PictureWarp.h"
#include "DisplayReport/PngPicture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace Veltrani::DisplayReport {

namespace {

using Colour = std::array<unsigned char, 3>;

/// Of the input, between lines.
constexpr double LINES_PER_UNIT = 20;
constexpr double STRONG_LINES_PER_UNIT = 4;
constexpr Colour LINE{150, 150, 150};
constexpr Colour STRONG_LINE{255, 255, 255};
constexpr Colour UNMAPPED_DARK{20, 20, 90};
constexpr Colour UNMAPPED_LIGHT{60, 60, 190};
/// Pixels along the side of a square.
constexpr std::size_t CHEQUER = 8;

unsigned char shade(double part) {
    constexpr double BRIGHTEST = 255;
    return static_cast<unsigned char>(std::lround(std::clamp(part, 0.0, 1.0) * BRIGHTEST));
}

/// Whether a line of so many per unit runs between two samples.
bool isCrossed(const WarpSample& a, const WarpSample& b, double linesPerUnit) {
    const auto cell = [linesPerUnit](double part) { return std::floor(part * linesPerUnit); };
    return a.isMapped && b.isMapped && (cell(a.input[0]) != cell(b.input[0]) || cell(a.input[1]) != cell(b.input[1]));
}

/// Whether a line runs between a sample and its neighbour to the right or above.
bool isOnLine(const PictureWarp& warp, std::size_t column, std::size_t row, double linesPerUnit) {
    const WarpSample& sample = warp.at(column, row);
    return (column + 1 < warp.columns() && isCrossed(sample, warp.at(column + 1, row), linesPerUnit)) ||
           (row + 1 < warp.rows() && isCrossed(sample, warp.at(column, row + 1), linesPerUnit));
}

Colour colourAt(const PictureWarp& warp, std::size_t column, std::size_t row) {
    const WarpSample& sample = warp.at(column, row);
    if (!sample.isMapped) {
        return (column / CHEQUER + row / CHEQUER) % 2 == 0 ? UNMAPPED_DARK : UNMAPPED_LIGHT;
    }
    if (isOnLine(warp, column, row, STRONG_LINES_PER_UNIT)) {
        return STRONG_LINE;
    }
    if (isOnLine(warp, column, row, LINES_PER_UNIT)) {
        return LINE;
    }
    return {shade(sample.input[0]), shade(sample.input[1]), 0};
}

/// Row by row from the top, three bytes a pixel.
std::vector<unsigned char> coloursOf(const PictureWarp& warp) {
    std::vector<unsigned char> bytes;
    bytes.reserve(warp.columns() * warp.rows() * Colour().size());
    for (std::size_t row = warp.rows(); row-- > 0;) {
        for (std::size_t column = 0; column < warp.columns(); ++column) {
            const Colour colour = colourAt(warp, column, row);
            bytes.insert(bytes.end(), colour.begin(), colour.end());
        }
    }
    return bytes;
}

}  // namespace

void PngWarpWriter::write(const PictureWarp& warp, std::ostream& out) const {
    PngPicture{warp.columns(), warp.rows(), coloursOf(warp)}.write(out);
}

}  // namespace Veltrani::DisplayReport
