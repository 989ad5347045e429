#include "DisplayReport/maps/WarpWriter.h"

#include "DisplayReport/basics/DeepPngPicture.h"
#include "DisplayReport/basics/FormatList.h"
#include "DisplayReport/basics/NumberText.h"
#include "DisplayReport/basics/PfmRows.h"
#include "DisplayReport/basics/PngPicture.h"
#include "DisplayReport/maps/WarpGrid.h"
#include "KelvoControl/WarpMeshLimits.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace Veltrani::DisplayReport {

namespace {

std::string lineOf(double x, double y, const WarpSample& sample) {
    return exactText(x) + ' ' + exactText(y) + ' ' + exactText(sample.input[0]) + ' ' + exactText(sample.input[1]) +
           ' ' + exactText(sample.isMapped ? sample.brightness : -1) + '\n';
}

/// A warp of nodes as a warp mesh:
///
///     2                      rectangular
///     nx ny                  nodes in a row, rows
///     x y u v i              nx * ny nodes, x fastest, from the bottom left one
///     pixels W H             size of the channel's picture
///
/// (x, y) is the node in the picture: y from -1 (bottom) to 1 (top), x from -aspect to aspect, which is width / height
/// of the picture. (u, v) is the place in the input, (0, 0) bottom left. i is the brightness, 0 to 1, or -1 where
/// nothing is mapped; every cell that touches such a node is unused. Numbers read back as exactly those that were
/// computed.
///
/// The files serve as maps of custom planar channels, too.
class WarpMeshWriter : public WarpWriter {
public:
    void write(const WarpGrid& warp, std::ostream& out) const override;
    [[nodiscard]] bool hasNodes() const override { return true; }
    [[nodiscard]] bool isText() const override { return true; }
};

void WarpMeshWriter::write(const WarpGrid& warp, std::ostream& out) const {
    const std::string width = std::to_string(warp.pixels()[0]);
    const std::string height = std::to_string(warp.pixels()[1]);
    const double aspect = WarpGrid::aspectOf(warp.pixels());
    out << "2\n" + std::to_string(warp.columns()) + ' ' + std::to_string(warp.rows()) + '\n';
    for (std::size_t row = 0; row < warp.rows(); ++row) {
        const double y = WarpGrid::fromMiddle(row, warp.rows());
        for (std::size_t column = 0; column < warp.columns(); ++column) {
            out << lineOf(aspect * WarpGrid::fromMiddle(column, warp.columns()), y, warp.at(column, row));
        }
    }
    out << "pixels " + width + ' ' + height + '\n';
}

/// A warp of pixels as a portable float map in colour ("PF", little-endian, 32-bit numbers, rows from the bottom up):
/// red is u, green is v, the place in the input that the middle of the pixel shows, (0, 0) bottom left. Blue is 1 where
/// there is one; where nothing is mapped blue is 0, red and green are -1.
class PfmWarpWriter : public WarpWriter {
public:
    void write(const WarpGrid& warp, std::ostream& out) const override;
};

void PfmWarpWriter::write(const WarpGrid& warp, std::ostream& out) const {
    PfmRows rows(out, warp.columns(), warp.rows());
    for (std::size_t row = 0; row < warp.rows(); ++row) {
        for (std::size_t column = 0; column < warp.columns(); ++column) {
            const WarpSample sample = warp.at(column, row);
            if (sample.isMapped) {
                rows.add(static_cast<float>(sample.input[0]), static_cast<float>(sample.input[1]), 1);
            } else {
                rows.add(-1, -1, 0);
            }
        }
    }
}

/// A warp of pixels as a picture of 16 bits per colour (PNG): red is u, green is v, as parts of 65535, blue is 65535.
/// Where nothing is mapped, all three are 0. The rows stand from the top, as in every PNG file. A place beyond the
/// edges of the input cannot be written: it counts as the edge.
class DeepPngWarpWriter : public WarpWriter {
public:
    /// Throws `VeltraniException` when the picture cannot be encoded.
    void write(const WarpGrid& warp, std::ostream& out) const override;
};

constexpr std::uint16_t WHOLE = 65535;

std::uint16_t partOfWhole(double part) {
    return static_cast<std::uint16_t>(std::lround(std::clamp(part, 0.0, 1.0) * WHOLE));
}

void DeepPngWarpWriter::write(const WarpGrid& warp, std::ostream& out) const {
    DeepPngPicture picture{warp.columns(), warp.rows(), {}};
    picture.colours.reserve(3 * warp.columns() * warp.rows());
    for (std::size_t row = warp.rows(); row-- > 0;) {
        for (std::size_t column = 0; column < warp.columns(); ++column) {
            const WarpSample sample = warp.at(column, row);
            picture.colours.push_back(sample.isMapped ? partOfWhole(sample.input[0]) : std::uint16_t{0});
            picture.colours.push_back(sample.isMapped ? partOfWhole(sample.input[1]) : std::uint16_t{0});
            picture.colours.push_back(sample.isMapped ? WHOLE : std::uint16_t{0});
        }
    }
    picture.write(out);
}

using Colour = std::array<unsigned char, 3>;

/// Lines of the grid per width or height of the input.
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
bool isOnLine(const WarpGrid& warp, std::size_t column, std::size_t row, double linesPerUnit) {
    const WarpSample sample = warp.at(column, row);
    return (column + 1 < warp.columns() && isCrossed(sample, warp.at(column + 1, row), linesPerUnit)) ||
           (row + 1 < warp.rows() && isCrossed(sample, warp.at(column, row + 1), linesPerUnit));
}

Colour colourAt(const WarpGrid& warp, std::size_t column, std::size_t row) {
    const WarpSample sample = warp.at(column, row);
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
std::vector<unsigned char> coloursOf(const WarpGrid& warp) {
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

/// A warp of pixels as a picture for people (PNG), upright as the channel shows it: red grows with u, green with v, the
/// place in the input; u = 0, v = 0 is black, u = 1, v = 1 yellow. Grey lines stand at every 0.05 of u and of v, white
/// ones at every quarter. Where nothing is mapped, the picture is a blue chequerboard.
class PngWarpWriter : public WarpWriter {
public:
    /// Throws `std::runtime_error` when the picture cannot be encoded.
    void write(const WarpGrid& warp, std::ostream& out) const override;
};

void PngWarpWriter::write(const WarpGrid& warp, std::ostream& out) const {
    PngPicture{warp.columns(), warp.rows(), coloursOf(warp)}.write(out);
}

constexpr FormatList<WarpWriter, 4> FORMATS{{{{"mesh", makeWriter<WarpWriter, WarpMeshWriter>},
                                              {"pfm", makeWriter<WarpWriter, PfmWarpWriter>},
                                              {"png16", makeWriter<WarpWriter, DeepPngWarpWriter>},
                                              {"png", makeWriter<WarpWriter, PngWarpWriter>}}}};

}  // namespace

std::size_t WarpMeshSize::count() const {
    return static_cast<std::size_t>(nodes[0]) * static_cast<std::size_t>(nodes[1]);
}

std::uintmax_t WarpMeshSize::mostBytes() const {
    // A place in the input has no sign. Four blanks, the brightness and the end of the line come to every node.
    constexpr std::uintmax_t INPUT_AND_REST = 2 * (std::string_view("4.9406564584124654e-324").size()) + 7;
    const auto columns = static_cast<std::size_t>(nodes[0]);
    const auto rows = static_cast<std::size_t>(nodes[1]);
    const double aspect = WarpGrid::aspectOf(pixels);
    std::uintmax_t bytes = count() * INPUT_AND_REST;
    for (std::size_t column = 0; column < columns; ++column) {
        bytes += rows * exactText(aspect * WarpGrid::fromMiddle(column, columns)).size();
    }
    for (std::size_t row = 0; row < rows; ++row) {
        bytes += columns * exactText(WarpGrid::fromMiddle(row, rows)).size();
    }
    constexpr std::uintmax_t HEAD_AND_TAIL = 100;
    return bytes + HEAD_AND_TAIL;
}

bool WarpMeshSize::isReadable() const {
    using namespace WarpMeshLimits;
    const double aspect = WarpGrid::aspectOf(pixels);
    return aspect >= SMALLEST_ASPECT && aspect <= LARGEST_COORDINATE &&
           std::max(nodes[0], nodes[1]) <= MOST_NODES_IN_ROW && count() <= MOST_NODES && mostBytes() <= MOST_BYTES;
}

std::optional<Point<int, 2>> WarpMeshSize::mostNodes(const Point<int, 2>& pixels) {
    const auto cells = [](int size, int side) { return (size + side - 1) / side; };
    for (int side = 1; side < 2 * std::max(pixels[0], pixels[1]); side += std::max(side / 8, 1)) {
        const Point<int, 2> nodes{cells(pixels[0], side) + 1, cells(pixels[1], side) + 1};
        if (WarpMeshSize{pixels, nodes}.isReadable()) {
            return nodes;
        }
    }
    return std::nullopt;
}

std::vector<std::string> WarpWriter::formats() {
    return FORMATS.names();
}

std::unique_ptr<WarpWriter> WarpWriter::ofFormat(const std::string& format) {
    return FORMATS.writerOf(format);
}

}  // namespace Veltrani::DisplayReport
